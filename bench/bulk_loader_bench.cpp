// The bulk loader from one database to another, against freebcp out to a file and in from it: 200,000 rows of the
// items' work table. Also how much memory the load takes, and how often the caller is called meanwhile.
#include <QCoreApplication>
#include <QTemporaryDir>
#include <algorithm>

#include "bench/figure.h"
#include "bench/freebcp.h"
#include "bench/memory.h"
#include "bench/server_process.h"
#include "engine/db/bulk_loader.h"
#include "engine/db/table.h"

namespace {

using torvik::bench::scalar;
using torvik::bench::ServerProcess;
using namespace torvik;

constexpr int kRows = 200'000;
constexpr int kRounds = 3;
const QString kSum = QStringLiteral(
    "SELECT CAST(COUNT(*) AS varchar(20)) + ' ' + CAST(SUM(VAI_PRIS) AS varchar(40)) + ' ' "
    "+ RTRIM(MAX(VAI_NAVN)) FROM VAREIMPORT");

void fill(db::Session& session) {
    db::Table table(&session);
    table.SetTableName(QStringLiteral("VAREIMPORT"));
    table.Open();
    for (int row = 0; row < kRows; ++row) {
        table.Append();
        const std::vector<db::Value> values = bench::itemRow(row);
        for (size_t i = 0; i < values.size(); ++i) table.Fields(int(i)) = values[i];
        table.Post();
    }
    table.Close();
}

struct Load {
    double seconds;
    double memory;
    std::vector<double> gaps;  // milliseconds between two calls
};

Load load(db::Session& from, db::Session& to, bool fewRoundTrips) {
    db::Query source(&from);
    source.UniDirectional = true;
    source.CountRows = true;
    source.SQL = {QStringLiteral("SELECT * FROM VAREIMPORT")};
    db::BulkLoader loader(&to);
    loader.TableName = QStringLiteral("VAREIMPORT");
    loader.Options.FewRoundTrips = fewRoundTrips;
    Load result{};
    auto last = std::chrono::steady_clock::now();
    loader.OnProgress = [&](db::BulkLoader&, int) {
        const auto now = std::chrono::steady_clock::now();
        result.gaps.push_back(std::chrono::duration<double, std::milli>(now - last).count());
        last = now;
    };
    bench::forgetPeakOfMemory();
    const double before = bench::processMegabytes("VmRSS");
    result.seconds = bench::seconds([&] {
        source.Open();
        last = std::chrono::steady_clock::now();
        loader.LoadFromDataSet(source);
    });
    result.memory = bench::processMegabytes("VmHWM") - before;
    std::sort(result.gaps.begin(), result.gaps.end());
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    const ServerProcess server;
    const QCoreApplication app(argc, argv);
    const auto master = server.connect(QStringLiteral("master"));
    bench::execute(*master, QStringLiteral("CREATE DATABASE Kilde CREATE DATABASE Mal"));
    const auto from = server.connect(QStringLiteral("Kilde"));
    const auto to = server.connect(QStringLiteral("Mal"));
    bench::execute(*from, bench::kItemTable);
    bench::execute(*to, bench::kItemTable);
    fill(*from);
    const QString wanted = scalar(*from, kSum);
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("varer"));

    const auto emptied = [&] { bench::execute(*to, QStringLiteral("TRUNCATE TABLE VAREIMPORT")); };
    const auto check = [&](const std::string& who) {
        if (const QString has = scalar(*to, kSum); has != wanted)
            throw std::runtime_error(who + (" brought other rows: " + has + " for " + wanted).toStdString());
    };
    double byProgram = 1e9;
    Load best{1e9, 0, {}};
    double fewTrips = 1e9;
    double memoryMost = 0;
    for (int round = 0; round < kRounds; ++round) {
        emptied();
        byProgram =
            std::min(byProgram, bench::seconds([&] {
                         bench::freebcp(*from, {QStringLiteral("Kilde..VAREIMPORT"), QStringLiteral("out"), file});
                         bench::freebcp(*to, {QStringLiteral("Mal..VAREIMPORT"), QStringLiteral("in"), file});
                     }));
        check("freebcp");
        emptied();
        const Load fast = load(*from, *to, true);
        check("the loader in few round trips");
        fewTrips = std::min(fewTrips, fast.seconds);
        emptied();
        Load now = load(*from, *to, false);
        check("the loader");
        memoryMost = std::max(memoryMost, fast.memory);
        memoryMost = std::max(memoryMost, now.memory);
        if (now.seconds < best.seconds) best = std::move(now);
    }
    bench::tell("bulk loader, 200,000 rows of 20 columns", best.seconds, "s", "freebcp out and in", byProgram);
    bench::tell("bulk loader, rows a second", kRows / best.seconds, "rows/s", "freebcp out and in (1.3 wanted)",
                kRows / byProgram);
    bench::tell("bulk loader in few round trips, as a send has it, rows a second", kRows / fewTrips, "rows/s",
                "freebcp out and in (1.3 wanted)", kRows / byProgram);
    bench::tell("bulk loader, growth of resident memory", memoryMost, "MB", "64 MB at most", 64);
    bench::tell("bulk loader, time between two calls of the caller, p99", best.gaps[best.gaps.size() * 99 / 100], "ms",
                "50 ms at most", 50);
    bench::tell("bulk loader, time between two calls of the caller, longest", best.gaps.back(), "ms", "", 1);
}
