// A program upgrade of 300 MB into a till's database, against a plain bulk insertion of the same bytes (bulk copy into
// rows of 4,000, as freebcp would send them); and how much the program's memory grows by it.
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include "bench/figure.h"
#include "bench/memory.h"
#include "bench/server_process.h"
#include "engine/base/seams.h"
#include "engine/db/table.h"
#include "fleet/objects/binary_object.h"

namespace {

using namespace torvik;
using bench::ServerProcess;

constexpr qint64 kSize = 300'000'000;
constexpr qint64 kRow = 4000;
constexpr int kRounds = 3;
constexpr double kMostMegabytes = 64;
constexpr double kLeastRate = 0.8;

void write(const QString& name) {
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly)) throw std::runtime_error("no file");
    QByteArray piece(1'000'000, Qt::Uninitialized);
    quint64 state = 88172645463325252ULL;
    for (qint64 written = 0; written < kSize; written += piece.size()) {
        for (char& c : piece) {
            state ^= state << 13;
            state ^= state >> 7;
            state ^= state << 17;
            c = static_cast<char>(state);
        }
        file.write(piece);
    }
}

double plainInsertion(db::Session& session, const QString& name) {
    bench::execute(session, QStringLiteral("CREATE TABLE PLAIN (NR int NOT NULL, DEL varbinary(4000) NOT NULL)"));
    const double seconds = bench::seconds([&] {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) throw std::runtime_error("no file");
        db::Table table(&session);
        table.SetTableName(QStringLiteral("PLAIN"));
        table.CommandTimeout = 600;
        table.Open();
        for (int row = 0; !file.atEnd(); ++row) {
            table.Append();
            table.Fields(0) = row;
            table.Fields(1) = file.read(kRow);
            table.Post();
        }
        table.Close();
    });
    const QString kept =
        bench::scalar(session, QStringLiteral("SELECT SUM(CAST(DATALENGTH(DEL) AS bigint)) FROM PLAIN"));
    if (kept != QString::number(kSize)) throw std::runtime_error("plain: " + kept.toStdString());
    bench::execute(session, QStringLiteral("DROP TABLE PLAIN"));
    return seconds;
}

double archive(db::Session& session, const QString& name) {
    bench::execute(session, QStringLiteral("CREATE TABLE BINARYOBJECT (BO_ID int NULL, BO_OBJECT image NULL)"));
    Seams seams;
    seams.pumpMessages = [] {};
    const double seconds = bench::seconds([&] {
        EnsureBinaryObjectColumns(session);
        writeBinaryObject(session, seams,
                          {.file = name,
                           .type = QStringLiteral("TORVIKPOS"),
                           .query = QStringLiteral("SELECT * FROM BINARYOBJECT WHERE BO_TYPE='TORVIKPOS'")});
    });
    const QString kept = bench::scalar(session, QStringLiteral("SELECT DATALENGTH(BO_OBJECT) FROM BINARYOBJECT"));
    if (kept != QString::number(kSize)) throw std::runtime_error("archive: " + kept.toStdString());
    bench::execute(session, QStringLiteral("DROP TABLE BINARYOBJECT"));
    return seconds;
}

}  // namespace

int main(int argc, char** argv) {
    const ServerProcess server;
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("TorvikPOS.zip"));
    write(file);
    bench::execute(*server.connect(QStringLiteral("master")), QStringLiteral("CREATE DATABASE KASSE"));
    double plain = 1e9;
    double streamed = 1e9;
    double memory = 0;
    for (int round = 0; round < kRounds; ++round) {
        bench::forgetPeakOfMemory();
        const double before = bench::processMegabytes("VmRSS");
        streamed = std::min(streamed, archive(*server.connect(QStringLiteral("KASSE")), file));
        memory = std::max(memory, bench::processMegabytes("VmHWM") - before);
        plain = std::min(plain, plainInsertion(*server.connect(QStringLiteral("KASSE")), file));
    }
    const double megabytes = kSize / 1e6;
    bench::tell("archive of 300 MB into a till's database", megabytes / streamed, "MB/s",
                "bulk insertion of the same bytes (0.8 wanted)", megabytes / plain);
    bench::tell("archive of 300 MB into a till's database, growth of memory", memory, "MB", "64 MB at most",
                kMostMegabytes);
    return streamed > 0 && plain / streamed >= kLeastRate && memory < kMostMegabytes ? 0 : 1;
}
