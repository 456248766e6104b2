// What a single back office, without a chain above it, takes from a till before the transfer: its staff, and a first
// settlement to count from. TOppgjor makes one where it is needed.
#pragma once

#include "engine/run/till_visit.h"

namespace torvik {

class SingleBackOffice {
public:
    explicit SingleBackOffice(const TillVisit& visit) : visit_(visit) {}

    // Raises what failed; what was written before stands. A cancel is heard behind each of the two.
    void takeFromTill();

private:
    void UpdateAnsatte();
    void SeedPosOppgjor();

    const TillVisit& visit_;
};

}  // namespace torvik
