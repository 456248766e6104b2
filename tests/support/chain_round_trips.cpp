// See chain_round_trips.h.
#include "tests/support/chain_round_trips.h"

namespace torvik::test {

namespace {

constexpr int kTripsOfALogin = 2;

// A send takes another lock as well, of its number.
bool isTillsLock(const std::string& trip) {
    return trip.find("sp_getapplock") != std::string::npos && trip.find("TorvikPosSync.Kasse.") != std::string::npos;
}

}  // namespace

RoundTrips::RoundTrips(sandbox::chain::DemoChain& chain) {
    watch(chain.backOffice().faults());
    for (std::size_t till = 0; till < chain.model().tills.size(); ++till) watch(chain.till(till).faults());
}

RoundTrips::~RoundTrips() {
    for (const auto& side : sides_) side->faults->forget(side->observer);
}

void RoundTrips::watch(sandbox::Faults& faults) {
    sides_.push_back(std::make_unique<Side>(Side{&faults, 0, faults.logins(), {}}));
    Side& side = *sides_.back();
    side.observer = faults.observe([this, &side](const sandbox::RequestInfo& request) {
        const std::lock_guard lock(mutex_);
        side.requests.push_back(request.text);
    });
}

std::vector<std::string> RoundTrips::of(const Side& side) const {
    const std::uint64_t logins = side.faults->logins() - side.loginsBefore;
    std::vector<std::string> trips(logins * kTripsOfALogin, kLogin);
    const std::lock_guard lock(mutex_);
    trips.insert(trips.end(), side.requests.begin(), side.requests.end());
    return trips;
}

std::vector<std::string> RoundTrips::toBackOffice() const {
    return of(*sides_.front());
}

std::vector<std::string> RoundTrips::toTill(std::size_t till) const {
    return of(*sides_.at(till + 1));
}

std::vector<std::vector<std::string>> RoundTrips::toBackOfficeByVisit() const {
    std::vector<std::vector<std::string>> visits;
    for (const std::string& trip : toBackOffice()) {
        if (isTillsLock(trip)) visits.emplace_back();
        if (!visits.empty()) visits.back().push_back(trip);
    }
    return visits;
}

}  // namespace torvik::test
