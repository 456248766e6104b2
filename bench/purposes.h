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

// A walk over tills.
struct Walk {
    double milliseconds;  // a till
    Purposes till;
    Purposes backOffice;  // without what a run asks once
};

inline void tellPurposes(const std::string& side, const Purposes& trips) {
    for (const auto& [purpose, count] : trips) tell({side + ": " + purpose, count, "round trips a till", {}, {}});
}

// The round trips of a walk on either side, against how many there may be and against those of each statement by
// itself.
inline void tellTrips(const Walk& walk, double mostToATill, double mostToTheBackOffice, const Walk& oneByOne) {
    const auto tellSide = [](const std::string& side, const Purposes& trips, double most,
                             const Purposes& byThemselves) {
        const std::string unit = "round trips a till";
        tell(side, sum(trips), unit, std::to_string(static_cast<int>(most)) + " at most", most);
        tell(side, sum(trips), unit, "each statement by itself", sum(byThemselves));
        tellPurposes(side, trips);
    };
    tellSide("at the till", walk.till, mostToATill, oneByOne.till);
    tellSide("at the back office", walk.backOffice, mostToTheBackOffice, oneByOne.backOffice);
}

}  // namespace torvik::bench
