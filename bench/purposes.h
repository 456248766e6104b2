// What round trips are for, and how many of each there are.
#pragma once

#include <map>
#include <string>

#include "bench/figure.h"

namespace torvik::bench {

using Purposes = std::map<std::string, double>;  // round trips a till, by purpose

inline double sum(const Purposes& trips) {
    double all = 0;
    for (const auto& [purpose, count] : trips) all += count;
    return all;
}

inline void tellPurposes(const std::string& side, const Purposes& trips) {
    for (const auto& [purpose, count] : trips) tell({side + ": " + purpose, count, "round trips a till", {}, {}});
}

}  // namespace torvik::bench
