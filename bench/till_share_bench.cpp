// A file of 300 MB to a till's share, against smbclient's own put to the same server.
#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include "bench/figure.h"
#include "tests/support/samba_server.h"

namespace {

using namespace torvik;
using test::SambaServer;

constexpr qint64 kSize = 300'000'000;
constexpr int kRounds = 5;

double copied(const SambaServer& samba, const QString& file) {
    const int cancel = 0;
    return bench::seconds([&] {
        const auto share = samba.share();
        share->connect(R"(\\127.0.0.1\C$)", {SambaServer::kUser, SambaServer::kPassword});
        share->copy(
            file.toStdString(), R"(\\127.0.0.1\C$\vår.zip)", [](std::uint64_t, std::uint64_t) {}, cancel);
        share->disconnect(R"(\\127.0.0.1\C$)");
    });
}

double put(const SambaServer& samba, const QString& file) {
    return bench::seconds([&] {
        QProcess program;
        program.start(QStringLiteral("smbclient"),
                      {QStringLiteral("//127.0.0.1/C$"), QStringLiteral("-p"), QString::number(samba.port()),
                       QStringLiteral("-U"),
                       QStringLiteral("%1%%2").arg(QString::fromUtf8(SambaServer::kUser),
                                                   QString::fromUtf8(SambaServer::kPassword)),
                       QStringLiteral("-c"), QStringLiteral("put \"%1\" smbclient.zip").arg(file)});
        program.waitForFinished(-1);
        if (program.exitCode() != 0) throw std::runtime_error(program.readAll().toStdString());
    });
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const SambaServer samba;
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("TorvikPOS.zip"));
    {
        QFile made(file);
        if (!made.open(QIODevice::WriteOnly)) return 1;
        for (qint64 written = 0; written < kSize; written += 1'000'000)
            made.write(QByteArray(1'000'000, static_cast<char>(written / 1'000'000)));
    }
    double ours = 1e9;
    double theirs = 1e9;
    for (int round = 0; round < kRounds; ++round) {
        theirs = std::min(theirs, put(samba, file));
        ours = std::min(ours, copied(samba, file));
    }
    if (QFile(samba.folder(QStringLiteral("C$")) + QStringLiteral("/vår.zip")).size() != kSize) return 1;
    const double megabytes = kSize / 1e6;
    bench::tell("file of 300 MB to a till's share", megabytes / ours, "MB/s", "smbclient put (0.9 wanted)",
                megabytes / theirs);
    return 0;
}
