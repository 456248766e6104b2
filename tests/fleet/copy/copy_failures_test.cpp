// What a share refuses at each step of a copy: what is told, which steps still follow, and that the next till is
// served.
#include <gmock/gmock.h>

#include "engine/base/abort.h"
#include "fleet/copy/send_file.h"
#include "fleet/upgrade/upgrade_run.h"
#include "tests/fleet/support/fleet_run.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

enum class Step { Connect, Copy, Delete, Disconnect };
enum class Command { Upgrade, SendFile, SpeedTest };

// Does nothing but note its steps, and refuses one of them the first time.
class RefusingShare : public FileShare {
public:
    RefusingShare(Step refused, QStringList& steps) : refused_(refused), steps_(steps) {}

    void connect(const std::string&, const ShareLogin&) override { note(Step::Connect, "koble"); }
    void copy(const std::string&, const std::string&, const ShareProgress&, const int&) override {
        note(Step::Copy, "kopier");
    }
    void remove(const std::string&) override { note(Step::Delete, "slett"); }
    void disconnect(const std::string&) override { note(Step::Disconnect, "koble fra"); }

private:
    void note(Step step, const char* name) {
        steps_ << QString::fromUtf8(name);
        if (step == refused_ && !std::exchange(done_, true)) throw ShareError(ENOSPC, systemErrorText(ENOSPC));
    }

    Step refused_;
    QStringList& steps_;
    bool done_ = false;
};

// In the lines: %1 the file, %2 and %3 the shares of the two tills, %4 the system's words, %5 those of an abort.
struct Refusal {
    const char* name;
    Command command;
    Step refused;
    QStringList steps;
    QStringList lines;
    int errors;  // how many of the lines are errors
};

void PrintTo(const Refusal& refusal, std::ostream* out) {
    *out << refusal.name;
}

const QString kFirst = QStringLiteral("Starter kopiering fra %1 til %2\\TorvikPOS\\TorvikPOS.zip");
const QString kSecond = QStringLiteral("Starter kopiering fra %1 til %3\\TorvikPOS\\TorvikPOS.zip");
const QString kDone = QStringLiteral("Fullført kopiering");
const QString kNotLeft = QStringLiteral("Klarte ikke å koble fra %2. Oppgradering ble likevel fullført.");
const QString kFailed = QStringLiteral("Feil ved kopiering til kasse 1 på avdeling 101 (%5)");

const Refusal kRefusals[] = {
    {"UpgradeNotConnected",
     Command::Upgrade,
     Step::Connect,
     {"koble", "koble", "kopier", "koble fra"},
     {"%4", "Klarte ikke å oppgradere, fordi kobling til %2 ikke kunne lages", "%5", kSecond, kDone},
     3},
    {"UpgradeNotCopied",
     Command::Upgrade,
     Step::Copy,
     {"koble", "kopier", "koble", "kopier", "koble fra"},
     {kFirst, "%4", "%5", kSecond, kDone},
     2},
    {"UpgradeNotDisconnected",
     Command::Upgrade,
     Step::Disconnect,
     {"koble", "kopier", "koble fra", "koble", "kopier", "koble fra"},
     {kFirst, kDone, kNotLeft, kSecond, kDone},
     0},
    {"FileNotConnected",
     Command::SendFile,
     Step::Connect,
     {"koble", "koble", "kopier", "koble fra"},
     {"%4", "Klarte ikke å kopiere filen, fordi kobling til %2 ikke kunne lages", kFailed, kSecond, kDone},
     3},
    {"FileNotCopied",
     Command::SendFile,
     Step::Copy,
     {"koble", "kopier", "koble", "kopier", "koble fra"},
     {kFirst, "%4", kFailed, kSecond, kDone},
     2},
    {"FileNotDisconnected",
     Command::SendFile,
     Step::Disconnect,
     {"koble", "kopier", "koble fra", "koble", "kopier", "koble fra"},
     {kFirst, kDone, kNotLeft, kSecond, kDone},
     0},
    {"SpeedTestNotCopied",
     Command::SpeedTest,
     Step::Copy,
     {"koble", "kopier", "koble", "kopier", "slett", "koble fra"},
     {kFirst, "%4", kFailed, kSecond, kDone},
     2},
    {"SpeedTestNotDeleted",
     Command::SpeedTest,
     Step::Delete,
     {"koble", "kopier", "slett", "koble", "kopier", "slett", "koble fra"},
     {kFirst, kDone, "%4", kFailed, kSecond, kDone},
     2},
};

class CopyThatAShareRefuses : public testing::TestWithParam<Refusal> {};

INSTANTIATE_TEST_SUITE_P(Each, CopyThatAShareRefuses, testing::ValuesIn(kRefusals),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(CopyThatAShareRefuses, IsToldAndTheNextTillIsServed) {
    const Refusal& refusal = GetParam();
    FleetRun run(FleetRun::tills({71, 71}));
    QStringList steps;
    CopyTools tools;
    tools.Share = [&] { return std::make_unique<RefusingShare>(refusal.refused, steps); };
    const QString file = run.file("TorvikPOS.zip", "PK");
    const QString folder = QStringLiteral("\\TorvikPOS\\");
    if (refusal.command == Command::Upgrade) {
        UpgradeTorvikPOS(run.parts(), file, folder, true, tools);
    } else {
        SendFile(run.parts(),
                 {.AFileToCopy = file,
                  .AResource = QStringLiteral("C$"),
                  .TorvikPOSPath = folder,
                  .DeleteAfterCopy = refusal.command == Command::SpeedTest},
                 tools);
    }
    const auto share = [&run](std::size_t till) {
        return QStringLiteral("\\\\%1\\C$").arg(QString::fromStdString(run.chain.addressOf(till).server));
    };
    QStringList lines;
    for (const QString& line : refusal.lines)
        lines << QString(line)
                     .replace("%1", file)
                     .replace("%2", share(0))
                     .replace("%3", share(1))
                     .replace("%4", QString::fromStdString(systemErrorText(ENOSPC)))
                     .replace("%5", QString::fromUtf8(EAbort().what()));
    EXPECT_EQ(run.lines(), lines);
    EXPECT_EQ(run.errors().size(), refusal.errors);
    EXPECT_EQ(steps, refusal.steps);
}

}  // namespace
}  // namespace torvik::test
