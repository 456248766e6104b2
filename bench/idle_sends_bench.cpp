// What a till costs that is sent to with nothing changed: the time of one, and its round trips, by side and by purpose,
// together and one by one.
#include <QCoreApplication>

#include <string>

#include "bench/figure.h"
#include "bench/purposes.h"
#include "engine/roster/avdeling.h"
#include "outbound/run/send_run.h"
#include "tests/support/chain_round_trips.h"
#include "tests/support/chain_run.h"

namespace {

using namespace torvik;

constexpr int kTills = 20;

constexpr double kMostToATill = 50;  // round trips
constexpr double kMostToTheBackOffice = 30;

using Purpose = std::pair<const char*, const char*>;

// What a request is for, by a piece of its text: the first that it holds.
constexpr Purpose kAtTheTill[] = {
    {test::RoundTrips::kLogin, "login"},
    {"sysprocesses", "is the till busy"},
    {"@@VERSION", "version and tables"},
    {"where name='", "version and tables"},
    {"drop table", "work tables"},
    {" WHERE 1 = 0", "what tables look like"},
    {"sys.columns", "what tables look like"},
    {"BEGIN TRANSACTION IF @@TRANCOUNT > 0", "loads"},
    {"TRANSACTION", "loads"},
    {"@@TRANCOUNT", "loads"},
    {"INSERT BULK", "loads"},
    {"select * from", "rows that are edited"},
    {"procedure ", "procedures"},
    {"gavekortvare", "the gift-card item"},
};
constexpr Purpose kAtTheBackOffice[] = {
    {"applock", "locks"},
    {"dts_logg", "pairs that stand"},
    {"Lest_1", "registers that go together"},
    {"SELECT COUNT(*) FROM (", "registers by themselves"},
    {"GetPos", "gift cards and credit notes"},
    {"Overfort", "gift cards and credit notes"},
    {"as Svar", "gift cards and credit notes"},
    {"KasseVareAlle", "the choice of items"},
    {"Eksport", "the choice of items"},
    {"eksport", "the choice of items"},
    {"In_Gavekort_Va_ID", "the gift-card item"},
};

template <std::size_t N>
void add(bench::Purposes& trips, const std::vector<std::string>& requests, const Purpose (&purposes)[N],
         const char* other) {
    for (const std::string& request : requests) {
        const char* purpose = other;
        for (const auto& [part, name] : purposes)
            if (request.find(part) != std::string::npos) {
                purpose = name;
                break;
            }
        trips[purpose] += 1.0 / kTills;
    }
}

// A send of changes to tills that have been sent to, with prices and customers and nothing changed.
bench::Walk idleWalk(bool together) {
    test::ChainRun run({.departments = kTills / 5, .tills = kTills, .days = 1, .items = 10, .ordersADay = 3});
    joinSending(run.engine);
    run.engine.Tasks = TTasks{taSend};
    run.engine.ReadsTogether = together;
    run.engine.SendCustomerAndPrice = true;
    run.engine.DagerSidenEndring = 1;
    run.engine.Avdeling->SetKasseCollection(std::make_shared<TKasseCollection>());
    const auto send = [&](TVareOppdateringUtvalg items) {
        run.engine.VareOppdateringUtvalg = items;
        run.target.Open();
        run.engine.ExecuteDTSToPos();
        if (!run.errors().isEmpty()) throw std::runtime_error(run.errors().join(u' ').toStdString());
    };
    send(vopAlle);
    send(vopEndrede);
    bench::Walk walk{};
    walk.milliseconds = 1000 * bench::seconds([&] { send(vopEndrede); }) / kTills;
    const test::RoundTrips trips(run.chain);
    send(vopEndrede);
    for (int till = 0; till < kTills; ++till)
        add(walk.till, trips.toTill(static_cast<std::size_t>(till)), kAtTheTill, "merges");
    for (const auto& visit : trips.toBackOfficeByVisit())
        add(walk.backOffice, visit, kAtTheBackOffice, "registers by themselves");
    return walk;
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const bench::Walk together = idleWalk(true);
    const bench::Walk oneByOne = idleWalk(false);
    bench::tell({"a till that is sent to with nothing changed", together.milliseconds, "ms", {}, {}});
    bench::tell("the same", together.milliseconds, "ms", "each statement by itself", oneByOne.milliseconds);
    bench::tellTrips(together, kMostToATill, kMostToTheBackOffice, oneByOne);
    bench::tellPurposes("each by itself, at the till", oneByOne.till);
}
