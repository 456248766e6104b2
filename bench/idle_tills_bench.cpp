// What a till costs that has nothing to fetch: the time and the round trips of one, and of a walk over many, which must
// grow with their number and no faster. The round trips are told by side, together and one by one, and by purpose.
#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <string>

#include "bench/figure.h"
#include "bench/purposes.h"
#include "tests/support/chain_round_trips.h"
#include "tests/support/chain_run.h"

namespace {

using namespace torvik;

constexpr int kMany = 200;
constexpr int kFew = 50;
constexpr double kMostAtATill = 60;  // ms

constexpr double kMostToATill = 15;  // round trips
constexpr double kMostToTheBackOffice = 30;

// What a request is for, by a piece of its text: the first that it holds.
constexpr std::pair<const char*, const char*> kPurposes[] = {
    {test::RoundTrips::kLogin, "login"},
    {"Lest_5", "raw tables"},  // so many reads in one batch
    {"Temp_", "staging"},
    {"sys.columns", "staging"},
    {"INSERT BULK", "staging"},
    {"applock", "the till's lock"},
    {"in_dbversion", "version and tables"},
    {"IN_DBVERSION", "version and tables"},
    {"NOCOUNT", "version and tables"},
    {"sysprocesses", "is the till busy"},
    {"MIDLERTIDIG", "is the till busy"},
    {"sp_UTBETALINGIMPORT", "pay-outs"},
    {"TI_STATUS", "marks"},
    {"UPDATE Timer", "marks"},
    {"IN_KLAR_HENT_TIMER", "marks"},
    {"TRANSACTION", "transactions"},
    {"SELECT @@TRANCOUNT", "transactions"},
    {"ExecuteDtsFromPos", "posting"},
    {"dts_logg", "dts_logg"},
    {"Op_Tidspunkt", "what the till says of itself"},
    {"OP_TYPE='NORMAL'", "what the till says of itself"},
    {"InternKundeKasse SET", "what the till says of itself"},
    {"OP_ID DESC", "marks"},
    {"Internkunde", "questions to the back office"},
    {"InternkundeAnsatt", "questions to the back office"},
    {"internkundekasse", "questions to the back office"},
    {"POSOPPGJOR", "questions to the back office"},
    {"GETDATE()", "questions to the back office"},
};

std::string purposeOf(const std::string& trip) {
    for (const auto& [part, purpose] : kPurposes)
        if (trip.find(part) != std::string::npos) return purpose;
    return "raw tables";
}

// A walk over so many tills that have all been fetched.
bench::Walk idleWalk(int tills, bool together) {
    test::ChainRun run(
        {.departments = std::max(1, tills / 5), .tills = tills, .days = 1, .items = 10, .ordersADay = 3});
    run.engine.ReadsTogether = together;
    run.fetch();
    const QStringList errors = run.errors();
    bench::Walk walk{};
    walk.milliseconds = 1000 * bench::seconds([&] { run.fetch(); }) / tills;
    {
        const test::RoundTrips trips(run.chain);
        run.fetch();
        for (int till = 0; till < tills; ++till)
            for (const std::string& trip : trips.toTill(static_cast<std::size_t>(till)))
                walk.till[purposeOf(trip)] += 1.0 / tills;
        for (const auto& visit : trips.toBackOfficeByVisit())
            for (const std::string& trip : visit) walk.backOffice[purposeOf(trip)] += 1.0 / tills;
    }
    if (!run.errors().isEmpty() || !errors.isEmpty()) throw std::runtime_error(run.errors().join(u' ').toStdString());
    return walk;
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const bench::Walk one = idleWalk(1, true);
    const bench::Walk few = idleWalk(kFew, true);
    const bench::Walk many = idleWalk(kMany, true);
    const bench::Walk oneByOne = idleWalk(kFew, false);
    bench::tell("one till with nothing to fetch, run and all", one.milliseconds, "ms", "60 ms at most", kMostAtATill);
    bench::tell("walk over 200 tills with nothing to fetch", many.milliseconds, "ms a till", "60 ms at most",
                kMostAtATill);
    bench::tell("the same", many.milliseconds, "ms a till", "walk over 50 tills", few.milliseconds);
    bench::tellTrips(many, kMostToATill, kMostToTheBackOffice, oneByOne);
}
