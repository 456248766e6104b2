// What a SQL script costs a till: the time and the round trips of a walk over many, which must grow with their number
// and no faster. And what a result of a million rows costs on its way to the window.
#include <QCoreApplication>

#include "bench/figure.h"
#include "engine/db/mem_table.h"
#include "engine/db/query.h"
#include "fleet/scripts/sql_script_run.h"
#include "tests/support/chain_run.h"

namespace {

using namespace torvik;

constexpr int kMany = 200;
constexpr int kFew = 50;
constexpr double kMostAtATill = 60;  // ms
constexpr int kRows = 1'000'000;

const QStringList kChanges{"UPDATE BETALINGFORM SET BF_SKUFF = 1", "GO", "UPDATE LOGGTYPE SET LT_NAVN = LT_NAVN"};
const QStringList kRowsOfATill{"SELECT * FROM BETALINGFORM"};

std::uint64_t requests(test::ChainRun& run) {
    std::uint64_t all = run.chain.backOffice().faults().requests();
    for (std::size_t i = 0; i < run.chain.model().tills.size(); ++i) all += run.chain.till(i).faults().requests();
    return all;
}

struct Walk {
    double milliseconds;  // a till
    double roundTrips;    // a till
    double withRows;      // milliseconds a till
};

void requireNoErrors(const test::ChainRun& run) {
    if (!run.errors().isEmpty()) throw std::runtime_error(run.errors().join(u' ').toStdString());
}

Walk scriptWalk(int tills) {
    test::ChainRun run(
        {.departments = std::max(1, tills / 5), .tills = tills, .days = 1, .items = 10, .ordersADay = 3});
    run.target.Open();
    run.engine.Avdeling->SetKasseCollection(std::make_shared<TKasseCollection>());
    qint64 rows = 0;
    run.engine.OnSqlScriptReturnDataEvent = [&rows](QObject*, db::Query& data, db::Query&) {
        rows += data.RecordCount();
    };
    const std::uint64_t before = requests(run);
    const double changes = bench::seconds([&] { ExecuteSQLScript(run.engine.Parts(), kChanges, false, false); });
    const std::uint64_t behind = requests(run);
    const double reads = bench::seconds([&] { ExecuteSQLScript(run.engine.Parts(), kRowsOfATill, true, false); });
    requireNoErrors(run);
    if (rows < tills) throw std::runtime_error("too few rows");
    return {1000 * changes / tills, static_cast<double>(behind - before) / tills, 1000 * reads / tills};
}

// From the server to the table that the grid shows.
double millionRows() {
    test::ChainRun run({.departments = 1, .tills = 1, .days = 1, .items = 10, .ordersADay = 3});
    run.target.Open();
    run.engine.Avdeling->SetKasseCollection(std::make_shared<TKasseCollection>());
    db::MemTable shown;
    run.engine.OnSqlScriptReturnDataEvent = [&shown](QObject*, db::Query& data, db::Query&) { shown.CopyFrom(data); };
    // 10 to the 6th, out of ten digits.
    const QStringList script{
        "SELECT d INTO #t FROM (SELECT 0 d UNION ALL SELECT 1 UNION ALL SELECT 2 UNION ALL SELECT 3 "
        "UNION ALL SELECT 4 UNION ALL SELECT 5 UNION ALL SELECT 6 UNION ALL SELECT 7 UNION ALL "
        "SELECT 8 UNION ALL SELECT 9) x",
        "SELECT a.d * 100000 + b.d * 10000 + c.d * 1000 + e.d * 100 + f.d * 10 + g.d AS nr, "
        "'Vare nummer' AS navn FROM #t a, #t b, #t c, #t e, #t f, #t g"};
    const double took = bench::seconds([&] { ExecuteSQLScript(run.engine.Parts(), script, true, false); });
    requireNoErrors(run);
    if (shown.RecordCount() != kRows) throw std::runtime_error("not a million rows");
    return took;
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const Walk few = scriptWalk(kFew);
    const Walk many = scriptWalk(kMany);
    bench::tell("a script of two batches over 200 tills", many.milliseconds, "ms a till", "60 ms at most",
                kMostAtATill);
    bench::tell({"the same, round trips", many.roundTrips, "requests a till", {}, {}});
    bench::tell("the same", many.milliseconds, "ms a till", "over 50 tills", few.milliseconds);
    bench::tell("a script with rows over 200 tills", many.withRows, "ms a till", "60 ms at most", kMostAtATill);
    bench::tell({"a million rows of a till, to the grid's table", millionRows(), "s", {}, {}});
}
