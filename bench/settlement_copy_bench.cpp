// A settlement of 100,000 order lines through the transfer, against the same SELECTs and INSERTs as a plain loop,
// against freebcp of what it has staged, out of the staging tables and in again, and the memory that it takes; and the
// memory that 200 MB of attachments take. The posting procedures do nothing here: the copy is what is measured.
#include <QCoreApplication>
#include <QTemporaryDir>

#include "bench/big_settlement.h"
#include "bench/chain_process.h"
#include "bench/figure.h"
#include "bench/freebcp.h"
#include "bench/memory.h"
#include "bench/plain_copy.h"
#include "engine/db/query.h"
#include "engine/roster/avdeling.h"
#include "inbound/transfer/dm_pos_to_torvik.h"
#include "inbound/transfer/transfer_steps.h"
#include "tests/support/chain_program.h"

namespace {

using namespace torvik;

constexpr int kOrders = 25'000;
constexpr int kLines = 4 * kOrders;
constexpr int kRounds = 3;
constexpr int kAttachments = 400;
constexpr int kAttachmentBytes = 512 * 1024;

void postNothing(sandbox::chain::DemoChain& chain) {
    for (const char* procedure : {"ExecuteDtsFromPos", "DeleteFromTemp"})
        chain.runInBackOffice(std::string("ALTER PROCEDURE ") + procedure +
                              " @Ik_Ku_Id int, @KasseNr int, @UnId uniqueidentifier AS RETURN 0");
}

void addLines(sandbox::chain::DemoChain& chain) {
    bench::addBigSettlement(chain, 0, kOrders);
    postNothing(chain);
}

void addAttachments(sandbox::chain::DemoChain& chain) {
    bench::addBigSettlement(chain, 0, 1);
    postNothing(chain);
    const std::string content =
        "CONVERT(varbinary(max), REPLICATE(CONVERT(varchar(max), 'x'), " + std::to_string(kAttachmentBytes) + "))";
    for (int i = 1; i <= kAttachments; ++i)
        chain.runInTill(0, "INSERT VEDLEGG (VLG_ID, VLG_OP_ID, VLG_FILNAVN, VLG_INNHOLD) VALUES (" +
                               std::to_string(100'000 + i) + ", 900, 'bilag.pdf', " + content + ")");
}

// How many lines were staged; the stage is emptied.
qint64 takeStaged(db::Session& session) {
    db::Query query(&session);
    query.ParamCheck = false;
    query.SQL = QStringList{QStringLiteral("SELECT COUNT(*) FROM Temp_Ordrelinje_Import WHERE toli_ol_id >= 1000000")};
    query.Open();
    const qint64 lines = query.Fields(0).AsInteger();
    query.Close();
    query.SQL.clear();
    for (const TableMap* map : allTableMaps())
        query.SQL << QStringLiteral("TRUNCATE TABLE ") + QString::fromUtf8(map->target);
    query.ExecSQL();
    return lines;
}

void transfer(test::ChainProgram& program) {
    program.source.StartTransaction();
    program.target.StartTransaction();
    TdmPOStoTorvik dm;
    dm.SetSourceConnection(&program.source);
    dm.SetDestinationConnection(&program.target);
    dm.Ik_Ku_ID = 1001;
    dm.SetKasseNr(program.engine.Avdeling->Ikk_Kassenummer());
    dm.Execute();
    program.source.Commit();
    program.target.Commit();
}

// By how many MB the process grows at most.
double growthWithAttachments(const std::string& dataLink) {
    test::ChainProgram program(dataLink);
    program.target.Open();
    program.engine.Avdeling->Open();
    if (!program.engine.ConnectSource()) throw std::runtime_error("the till is not there");
    bench::forgetPeakOfMemory();
    const double before = bench::processMegabytes("VmRSS");
    transfer(program);
    const double most = bench::processMegabytes("VmHWM");
    db::Query staged(&program.target);
    staged.SQL =
        QStringList{QStringLiteral("SELECT COUNT(*), MIN(DATALENGTH(imp_Pos_Vlg_Innhold)) FROM temp_POSVEDLEGG_import "
                                   "WHERE imp_Pos_Vlg_ID > 100000")};
    staged.Open();
    if (staged.Fields(0).AsInteger() != kAttachments || staged.Fields(1).AsInteger() != kAttachmentBytes)
        throw std::runtime_error("not all attachments were staged");
    return most - before;
}

db::ConnectSettings settingsOf(const db::Session& session) {
    db::ConnectSettings settings;
    settings.Server = session.Server();
    settings.Database = session.Database();
    settings.Username = session.Username();
    settings.Password = session.Password();
    return settings;
}

void plain(const test::ChainProgram& program) {
    bench::PlainConnection from(settingsOf(program.source));
    bench::PlainConnection to(settingsOf(program.target));
    for (const TableMap* map : allTableMaps()) bench::PlainCopy(from, to, *map, 1001, "1").run();
    from.commit();
    to.commit();
}

// The staging tables that hold rows.
QStringList stagedTables(db::Session& session) {
    QStringList tables;
    for (const TableMap* map : allTableMaps()) {
        const QString name = QString::fromUtf8(map->target);
        db::Query rows(&session);
        rows.ParamCheck = false;
        rows.SQL = QStringList{QStringLiteral("SELECT TOP 1 1 FROM ") + name};
        rows.Open();
        if (!rows.IsEmpty() && !tables.contains(name)) tables << name;
    }
    return tables;
}

// Seconds that freebcp needs for what is staged: out to files, and in again once the stage is empty. The rows come from
// the staging tables and not from the till's, which would cost it joins besides.
double byFreebcp(db::Session& session) {
    const QTemporaryDir folder;
    const QStringList tables = stagedTables(session);
    const auto copyAll = [&](const char* way) {
        return bench::seconds([&] {
            for (const QString& table : tables)
                bench::freebcp(session, {session.Database() + QStringLiteral("..") + table, QString::fromUtf8(way),
                                         folder.filePath(table)});
        });
    };
    double seconds = copyAll("out");
    if (takeStaged(session) != kLines) throw std::runtime_error("not all lines were staged");
    seconds += copyAll("in");
    if (takeStaged(session) != kLines) throw std::runtime_error("freebcp has not brought all lines");
    return seconds;
}

}  // namespace

int main(int argc, char** argv) {
    const sandbox::chain::ChainOptions oneTill{.departments = 1, .tills = 1, .days = 0, .versions = {213}};
    const bench::ChainProcess chain(oneTill, addLines);
    const bench::ChainProcess withAttachments(oneTill, addAttachments);
    const QCoreApplication application(argc, argv);
    test::ChainProgram program(chain.dataLink());
    program.target.Open();
    program.engine.Avdeling->Open();
    if (!program.engine.ConnectSource()) return 1;

    const double before = bench::processMegabytes("VmRSS");
    double transferred = 1e9;
    double bulk = 1e9;
    for (int round = 0; round < kRounds; ++round) {
        transferred = std::min(transferred, bench::seconds([&] { transfer(program); }));
        bulk = std::min(bulk, byFreebcp(program.target));
    }
    const double most = bench::processMegabytes("VmHWM");
    const double looped = bench::seconds([&] { plain(program); });
    if (takeStaged(program.target) != kLines) return 1;

    bench::tell({"settlement of 100,000 order lines, plain prepared-statement loop", looped, "s", {}, {}});
    bench::tell({"settlement of 100,000 order lines, transfer", transferred, "s", "times as fast as the plain loop",
                 looped / transferred});
    bench::tell("the same, order lines", kLines / transferred, "lines/s", "plain loop", kLines / looped);
    bench::tell("the same, order lines", kLines / transferred, "lines/s", "freebcp out and in (0.8 wanted)",
                kLines / bulk);
    bench::tell("the same, most memory resident", most, "MB", "250 MB at most", 250);
    bench::tell({"the same, memory resident before it", before, "MB", {}, {}});
    bench::tell("400 attachments of 512 KB, growth of resident memory",
                growthWithAttachments(withAttachments.dataLink()), "MB", "64 MB at most", 64);
}
