// What a till costs that has nothing to fetch: the time and the round trips of one, and of a walk over many, which must
// grow with their number and no faster.
#include <QCoreApplication>
#include <QElapsedTimer>

#include "bench/figure.h"
#include "tests/support/chain_run.h"

namespace {

using namespace torvik;

constexpr int kMany = 200;
constexpr int kFew = 50;
constexpr double kMostAtATill = 60;  // ms

std::uint64_t requests(test::ChainRun& run) {
    std::uint64_t all = run.chain.backOffice().faults().requests();
    for (std::size_t i = 0; i < run.chain.model().tills.size(); ++i) all += run.chain.till(i).faults().requests();
    return all;
}

struct Walk {
    double milliseconds;  // a till
    double roundTrips;    // a till
};

// A walk over so many tills that have all been fetched.
Walk idleWalk(int tills) {
    test::ChainRun run(
        {.departments = std::max(1, tills / 5), .tills = tills, .days = 1, .items = 10, .ordersADay = 3});
    run.fetch();
    const QStringList errors = run.errors();
    const std::uint64_t before = requests(run);
    const double took = bench::seconds([&] { run.fetch(); });
    if (!run.errors().isEmpty() || !errors.isEmpty()) throw std::runtime_error(run.errors().join(u' ').toStdString());
    return {1000 * took / tills, static_cast<double>(requests(run) - before) / tills};
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const Walk one = idleWalk(1);
    const Walk few = idleWalk(kFew);
    const Walk many = idleWalk(kMany);
    bench::tell("one till with nothing to fetch, run and all", one.milliseconds, "ms", "60 ms at most", kMostAtATill);
    bench::tell({"the same, round trips", one.roundTrips, "requests", {}, {}});
    bench::tell("walk over 200 tills with nothing to fetch", many.milliseconds, "ms a till", "60 ms at most",
                kMostAtATill);
    bench::tell({"the same, round trips", many.roundTrips, "requests a till", {}, {}});
    bench::tell("the same", many.milliseconds, "ms a till", "walk over 50 tills", few.milliseconds);
}
