// The form in which a measurement tells a figure: one line of JSON on standard output, read by bench/run. Every program
// of this folder uses it; whatever else it writes is passed on to standard error.
#pragma once

#include <chrono>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace torvik::bench {

struct Figure {
    std::string name;
    double figure = 0;
    std::string unit;
    std::string comparedWith;     // empty: with nothing
    std::optional<double> ratio;  // of the figure to what it is compared with
};

inline void tell(const Figure& f) {
    nlohmann::ordered_json line;
    line["name"] = f.name;
    line["figure"] = f.figure;
    line["unit"] = f.unit;
    line["compared_with"] = f.comparedWith.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(f.comparedWith);
    line["ratio"] = f.ratio ? nlohmann::ordered_json(*f.ratio) : nlohmann::ordered_json();
    std::cout << line.dump() << std::endl;
}

// Compares with a figure that is known: a limit to keep, or another measurement in the same unit.
inline void tell(const std::string& name, double figure, const std::string& unit, const std::string& comparedWith,
                 double other) {
    tell({name, figure, unit, comparedWith, figure / other});
}

// Seconds that a call takes.
template <typename Call>
[[nodiscard]] double seconds(Call&& call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace torvik::bench
