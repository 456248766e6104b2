// The chance that a made-up chain comes from: a seeded engine, drawn with plain remainders, so that every platform
// makes the same chain. Also the small things that whoever makes up data needs.
#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>

#include "sandbox/chain/table_data.h"

namespace sandbox::chain {

inline constexpr std::int64_t kMinute = 60LL * 1000;
inline constexpr std::int64_t kHour = 60 * kMinute;
inline constexpr std::int64_t kDay = 24 * kHour;

// The first day of sales: 2 March 2026.
[[nodiscard]] inline std::int64_t firstDay() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(sys_days{2026y / March / 2}.time_since_epoch()).count();
}

class Chance {
public:
    explicit Chance(unsigned seed) : engine_(seed) {}
    int below(int n) { return static_cast<int>(engine_() % static_cast<unsigned>(n)); }
    bool oneIn(int n) { return below(n) == 0; }

private:
    std::mt19937 engine_;
};

[[nodiscard]] inline std::string padded(int number, std::size_t width) {
    const std::string digits = std::to_string(number);
    return std::string(width - std::min(width, digits.size()), '0') + digits;
}

[[nodiscard]] inline Blob bytes(Chance& chance, int size) {
    Blob blob;
    for (int i = 0; i < size; ++i) blob.bytes += static_cast<char>(chance.below(256));
    return blob;
}

[[nodiscard]] inline double rounded(double amount) {
    return std::round(amount * 100.0) / 100.0;
}

template <typename Range, typename Id>
[[nodiscard]] int nextId(const Range& range, Id id) {
    int last = 0;
    for (const auto& item : range) last = std::max(last, id(item));
    return last + 1;
}

}  // namespace sandbox::chain
