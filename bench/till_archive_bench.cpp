// A program upgrade of 300 MB into a till's database: against freebcp, which holds the archive in memory and sends it
// as the same row; against a bulk copy of the same bytes in rows of 4,000, each of which the server takes as it comes;
// and how much the program's memory grows by it.
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include "bench/figure.h"
#include "bench/freebcp.h"
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

double rowsOfFourThousand(db::Session& session, const QString& name) {
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

void makeBinaryObject(db::Session& session) {
    bench::execute(session, QStringLiteral("CREATE TABLE BINARYOBJECT (BO_ID int NULL, BO_OBJECT image NULL)"));
}

// Raises unless the table holds one row with the whole archive; drops it.
void requireArchive(db::Session& session) {
    const QString kept = bench::scalar(session, QStringLiteral("SELECT DATALENGTH(BO_OBJECT) FROM BINARYOBJECT"));
    if (kept != QString::number(kSize)) throw std::runtime_error("archive: " + kept.toStdString());
    bench::execute(session, QStringLiteral("DROP TABLE BINARYOBJECT"));
}

// The archive as freebcp reads a row: the number, the length, the bytes; and what tells it so.
void writeAsRow(const QString& archive, const QString& row, const QString& format) {
    QFile from(archive);
    QFile to(row);
    QFile form(format);
    if (!from.open(QIODevice::ReadOnly) || !to.open(QIODevice::WriteOnly) || !form.open(QIODevice::WriteOnly))
        throw std::runtime_error("no file");
    const qint32 head[] = {qToLittleEndian<qint32>(1), qToLittleEndian<qint32>(kSize)};
    to.write(reinterpret_cast<const char*>(head), sizeof head);
    while (!from.atEnd()) to.write(from.read(1'000'000));
    form.write("8.0\n2\n1\tSYBINT4\t0\t4\t\"\"\t1\tBO_ID\n2\tSYBIMAGE\t4\t");
    form.write(QByteArray::number(kSize) + "\t\"\"\t2\tBO_OBJECT\n");
}

double byFreebcp(db::Session& session, const QString& row, const QString& format) {
    makeBinaryObject(session);
    const double seconds = bench::seconds([&] {
        bench::freebcp(session, {session.Database() + QStringLiteral("..BINARYOBJECT"), QStringLiteral("in"), row},
                       {QStringLiteral("-f"), format});
    });
    requireArchive(session);
    return seconds;
}

double archive(db::Session& session, const QString& name) {
    makeBinaryObject(session);
    Seams seams;
    seams.pumpMessages = [] {};
    const double seconds = bench::seconds([&] {
        EnsureBinaryObjectColumns(session);
        writeBinaryObject(session, seams,
                          {.file = name,
                           .type = QStringLiteral("TORVIKPOS"),
                           .query = QStringLiteral("SELECT * FROM BINARYOBJECT WHERE BO_TYPE='TORVIKPOS'")});
    });
    requireArchive(session);
    return seconds;
}

}  // namespace

int main(int argc, char** argv) {
    const ServerProcess server;
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("TorvikPOS.zip"));
    write(file);
    const QString row = folder.filePath(QStringLiteral("rad.dat"));
    const QString format = folder.filePath(QStringLiteral("rad.fmt"));
    writeAsRow(file, row, format);
    bench::execute(*server.connect(QStringLiteral("master")), QStringLiteral("CREATE DATABASE KASSE"));
    double asRow = 1e9;
    double asRows = 1e9;
    double streamed = 1e9;
    double memory = 0;
    for (int round = 0; round < kRounds; ++round) {
        bench::forgetPeakOfMemory();
        const double before = bench::processMegabytes("VmRSS");
        streamed = std::min(streamed, archive(*server.connect(QStringLiteral("KASSE")), file));
        memory = std::max(memory, bench::processMegabytes("VmHWM") - before);
        asRow = std::min(asRow, byFreebcp(*server.connect(QStringLiteral("KASSE")), row, format));
        asRows = std::min(asRows, rowsOfFourThousand(*server.connect(QStringLiteral("KASSE")), file));
    }
    const double megabytes = kSize / 1e6;
    bench::tell("archive of 300 MB into a till's database", megabytes / streamed, "MB/s",
                "freebcp with the same row (0.8 wanted)", megabytes / asRow);
    bench::tell("archive of 300 MB into a till's database", megabytes / streamed, "MB/s",
                "bulk copy of the same bytes in rows of 4,000", megabytes / asRows);
    bench::tell("archive of 300 MB into a till's database, growth of memory", memory, "MB", "64 MB at most",
                kMostMegabytes);
    return streamed > 0 && asRow / streamed >= kLeastRate && memory < kMostMegabytes ? 0 : 1;
}
