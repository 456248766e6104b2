// A walk over 100 tills with nothing to fetch, each behind a line of 30 ms there and back: with all that makes round
// trips cheaper switched on and off, and with five tills that cannot be reached.
#include <QCoreApplication>
#include <memory>
#include <vector>

#include "bench/chain_process.h"
#include "bench/figure.h"
#include "bench/slow_lines.h"
#include "tests/support/chain_program.h"

namespace {

using namespace torvik;
using namespace std::chrono_literals;

constexpr int kTills = 100;
constexpr auto kThere = 15ms;  // and as long back
constexpr double kDeadMayCost = 1.1;

// By their places in the walk. The two that take connections and never answer are given up after two attempts of 15
// seconds each; those of a till that comes sooner than half a minute after the walk's beginning are not over then, and
// the walk waits for what is left of them.
constexpr int kRefusing[] = {19, 39, 99};
constexpr int kSilent[] = {59, 79};

double walk(test::ChainProgram& program, bool withAllMeans, int unreachable) {
    program.engine.LogInAhead = program.engine.ReadsTogether = withAllMeans;
    const qsizetype errorsBefore = program.errors().size();
    const double took = bench::seconds([&] { program.fetch(); });
    const QStringList errors = program.errors().mid(errorsBefore);
    // A till that cannot be reached has two lines.
    if (errors.size() != 2 * unreachable) throw std::runtime_error(errors.join(u'\n').toStdString());
    return took;
}

}  // namespace

int main(int argc, char** argv) {
    const bench::ChainProcess chain(
        {.departments = kTills / 5, .tills = kTills, .days = 1, .items = 10, .ordersADay = 3});
    const QCoreApplication application(argc, argv);
    test::ChainProgram program(chain.dataLink());
    program.fetch();
    program.engine.RetryCount = 2;
    const auto lines = bench::linesTo(chain.dataLink(), kThere);

    const double off = walk(program, false, 0);
    bench::tell({"walk over 100 tills behind lines of 30 ms, nothing made cheaper", off, "s", {}, {}});
    const double on = walk(program, true, 0);
    bench::tell("the same, reads together and tills logged in to ahead", on, "s", "nothing made cheaper (0.25 wanted)",
                off);
    for (const int till : kRefusing) lines[till]->refuse();
    for (const int till : kSilent) lines[till]->fallSilent();
    const double dead = walk(program, true, std::size(kRefusing) + std::size(kSilent));
    bench::tell("the same with five tills that cannot be reached", dead, "s", "1.1 times that at most",
                on * kDeadMayCost);
    return 0;
}
