// Any file to the shares of the tills, and the speed of their lines.
#include "fleet/copy/send_file.h"

#include <gmock/gmock.h>

#include "engine/base/abort.h"
#include "tests/fleet/support/fleet_run.h"
#include "tests/support/qt_print.h"
#include "tests/support/samba_server.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The share of a till, as a machine of its own would have it, but for what the test changes.
class Watched : public FileShare {
public:
    explicit Watched(std::unique_ptr<FileShare> real) : real_(std::move(real)) {}

    void connect(const std::string& resource, const ShareLogin& login) override { real_->connect(resource, login); }
    void copy(const std::string& file, const std::string& target, const ShareProgress& progress,
              const int& cancel) override {
        real_->copy(file, target, progress, cancel);
        if (onCopied) onCopied();
    }
    void remove(const std::string& target) override { real_->remove(target); }
    void disconnect(const std::string& resource) override {
        real_->disconnect(resource);
        if (failsToDisconnect) throw ShareError(ENOTCONN, systemErrorText(ENOTCONN));
    }

    std::function<void()> onCopied;
    bool failsToDisconnect = false;

private:
    std::unique_ptr<FileShare> real_;
};

class SeenWindow : public CopyWindow {
public:
    explicit SeenWindow(QStringList& seen) : seen_(seen) {}
    ~SeenWindow() override { seen_ << QStringLiteral("borte"); }
    void show() override { seen_ << QStringLiteral("vist"); }
    [[nodiscard]] int position() const override { return position_; }
    void setProgress(int percent, const QString& text) override {
        position_ = percent;
        seen_ << text;
        if (onProgress) onProgress(*this);
    }
    std::function<void(SeenWindow&)> onProgress;

private:
    QStringList& seen_;
    int position_ = 0;
};

class SendingAFile : public testing::Test {
protected:
    explicit SendingAFile(int tills = 2)
        : run(FleetRun::tills(std::vector<int>(static_cast<std::size_t>(tills), 213))) {
        run.engine.Seam.tickCount = [this] { return ticks; };
        tools.Share = [this] {
            auto share = std::make_unique<Watched>(samba.share());
            share->onCopied = [this] {
                ticks += copyMs;
                if (onCopied) onCopied();
            };
            share->failsToDisconnect = failsToDisconnect;
            return share;
        };
        tools.Window = [this] {
            auto window = std::make_unique<SeenWindow>(seen);
            window->onProgress = onProgress;
            return window;
        };
    }

    // A till's login is its share's too, and the share here knows the stand-in's.
    void SetUp() override { TORVIK_NEEDS_SANDBOX(run.chain); }

    void send(const QByteArray& content, bool deleteAfterCopy = false, const QString& folder = {}) {
        sendFile(run.file("nytt.dat", content), deleteAfterCopy, folder);
    }
    void sendFile(const QString& file, bool deleteAfterCopy = false, const QString& folder = {}) {
        SendFile(run.parts(),
                 {.AFileToCopy = file,
                  .AResource = QStringLiteral("C$"),
                  .TorvikPOSPath = folder,
                  .DeleteAfterCopy = deleteAfterCopy},
                 tools);
    }
    // Each till's row: department, name, till, fetched, sent, text, speed.
    [[nodiscard]] QStringList status() const {
        const OppgjorStatusTable& table = run.engine.ffraOppgjorStatus->memOppgjorStatus;
        const auto told = [](const std::optional<bool>& value) { return !value ? "-" : *value ? "ja" : "nei"; };
        QStringList rows;
        for (int i = 0; i < table.RecordCount(); ++i) {
            const OppgjorStatusRow& row = table.Row(i);
            rows << QStringLiteral("%1/%2 hentet %3 sendt %4 '%5' %6")
                        .arg(row.Avdnr, row.Kassenr, told(row.Hentet), told(row.Sendt), row.Melding,
                             row.Opplast_mbps ? QString::number(*row.Opplast_mbps, 'f', 2) : QStringLiteral("ingen"));
        }
        return rows;
    }
    [[nodiscard]] QString resource(std::size_t till) const {
        return QStringLiteral("\\\\%1\\C$").arg(QString::fromStdString(run.chain.addressOf(till).server));
    }

    SambaServer samba;
    FleetRun run;
    CopyTools tools;
    qint64 ticks = 0;
    qint64 copyMs = 2999;
    bool failsToDisconnect = false;
    std::function<void()> onCopied;
    std::function<void(SeenWindow&)> onProgress;
    QStringList seen;
};

class SendingAFileToSixTills : public SendingAFile {
protected:
    SendingAFileToSixTills() : SendingAFile(6) {}
};

TEST(UploadSpeed, IsOfWholeSecondsAndNoneWithoutTimeOrSize) {
    const struct {
        qint64 ms;
        qint32 size;
        double speed;
    } cases[] = {
        {1000, 1'000'000, 8}, {1999, 1'000'000, 8}, {2000, 1'000'000, 4},   {999, 1'000'000, -1},  {0, 1'000'000, -1},
        {5000, 0, -1},        {4000, 500'000, 1},   {1000, -1'000'000, -8}, {3'600'000, 90, 2e-7},
    };
    for (const auto& [ms, size, speed] : cases) EXPECT_DOUBLE_EQ(uploadMbps(ms, size), speed) << ms << " " << size;
}

TEST_F(SendingAFile, PutsItOnEveryShareAndShowsTheSpeed) {
    const QByteArray content = FleetRun::bytes(1'000'000);
    const QString file = run.file("nytt.dat", content);
    QDir(samba.folder("C$")).mkdir("TorvikPOS");
    sendFile(file, false, "\\TorvikPOS\\");
    EXPECT_TRUE(samba.content("C$", "TorvikPOS/nytt.dat") == content);
    // A megabyte in two seconds.
    EXPECT_THAT(status(), ElementsAre("101/1 hentet - sendt - '' 4.00", "101/2 hentet - sendt - '' 4.00"));
    const auto begins = [&](std::size_t till) {
        return QStringLiteral("Starter kopiering fra %1 til %2\\TorvikPOS\\nytt.dat").arg(file, resource(till));
    };
    EXPECT_THAT(run.lines(), ElementsAre(begins(0), "Fullført kopiering", begins(1), "Fullført kopiering"));
    EXPECT_EQ(run.log().filter("Venter i").size(), 1);
}

TEST_F(SendingAFile, ShowsNoSpeedOfACopyUnderASecond) {
    copyMs = 999;
    send("abc");
    EXPECT_THAT(status(), ElementsAre("101/1 hentet - sendt - '' -1.00", "101/2 hentet - sendt - '' -1.00"));
}

TEST_F(SendingAFile, WithoutBytesIsCopiedAndHasNoSpeed) {
    send({});
    EXPECT_EQ(samba.content("C$", "nytt.dat"), "");
    EXPECT_THAT(status(), ElementsAre("101/1 hentet - sendt - '' -1.00", "101/2 hentet - sendt - '' -1.00"));
}

TEST_F(SendingAFile, DeletesTheCopyWhereThatIsWanted) {
    send("abc", true);
    EXPECT_THAT(samba.files("C$"), IsEmpty());
    EXPECT_THAT(run.errors(), IsEmpty());
}

TEST_F(SendingAFile, ShowsHowFarItIs) {
    seen.clear();
    send(FleetRun::bytes(8 << 20));
    const qsizetype gone = seen.indexOf(QStringLiteral("borte"));
    ASSERT_GE(gone, 3);
    EXPECT_EQ(seen.first(), QStringLiteral("vist"));
    // How large a piece is follows from the line.
    qint64 copied = 0;
    for (const QString& told : seen.mid(1, gone - 1)) {
        const qint64 before = copied;
        copied = told.section(u' ', 1, 1).section(u'.', 0, 0).toLongLong();
        EXPECT_GT(copied, before);
        EXPECT_EQ(told, QStringLiteral("Kopiert %1.00 bytes av totalt 8388608.00 bytes (%2%)")
                            .arg(QString::number(copied), QString::number(qRound(copied * 100 / 8388608.0))));
    }
    EXPECT_EQ(copied, 8388608);
}

TEST_F(SendingAFile, CancelledFailsTheTillWithTheSystemsTextAndGoesOn) {
    onProgress = [this, cancelled = std::make_shared<bool>(false)](SeenWindow& window) {
        if (!std::exchange(*cancelled, true)) window.Cancel = -1;
    };
    send(FleetRun::bytes(8 << 20));
    EXPECT_THAT(run.errors(), ElementsAre(QString::fromStdString(systemErrorText(ECANCELED)),
                                          "Feil ved kopiering til kasse 1 på avdeling 101 (Operasjonen ble avbrutt)"));
    EXPECT_THAT(status(), ElementsAre("101/1 hentet - sendt - '' ingen", "101/2 hentet - sendt - '' 33.55"));
}

TEST_F(SendingAFile, TellsAShareThatRefusesTheLogin) {
    run.engine.OverrideSourceUserNameAndPassword = true;
    run.engine.OverrideSourceUserName = QStringLiteral("pos");
    run.engine.OverrideSourcePassword = QStringLiteral("Galt-Passord-1");
    send("abc");
    const QString refused = QString::fromStdString(systemErrorText(EACCES));
    const QString words = QStringLiteral("Klarte ikke å kopiere filen, fordi kobling til %1 ikke kunne lages");
    EXPECT_THAT(run.errors(), ElementsAre(refused, words.arg(resource(0)),
                                          "Feil ved kopiering til kasse 1 på avdeling 101 (Operasjonen ble avbrutt)",
                                          refused, words.arg(resource(1)),
                                          "Feil ved kopiering til kasse 2 på avdeling 101 (Operasjonen ble avbrutt)"));
    EXPECT_THAT(status(), ElementsAre("101/1 hentet - sendt - '' ingen", "101/2 hentet - sendt - '' ingen"));
}

TEST_F(SendingAFile, UsesTheOverridingLoginOnlyWhileItIsSet) {
    run.engine.OverrideSourceUserName = QStringLiteral("ukjent");
    run.engine.OverrideSourcePassword = QStringLiteral("Galt-Passord-1");
    send("abc");
    EXPECT_THAT(run.errors(), IsEmpty());
}

TEST_F(SendingAFile, CountsAsDoneThoughTheShareCannotBeLeft) {
    failsToDisconnect = true;
    send("abc");
    const QString line = QStringLiteral("Klarte ikke å koble fra %1. Oppgradering ble likevel fullført.");
    EXPECT_THAT(run.lines().filter("koble fra"), ElementsAre(line.arg(resource(0)), line.arg(resource(1))));
    EXPECT_THAT(run.errors(), IsEmpty());
    EXPECT_THAT(status(), ElementsAre("101/1 hentet - sendt - '' 0.00", "101/2 hentet - sendt - '' 0.00"));
}

TEST_F(SendingAFile, TellsAFileThatIsNotThere) {
    sendFile(run.folder.filePath("mangler.dat"));
    EXPECT_THAT(run.errors(), testing::Contains(QString::fromStdString(systemErrorText(ENOENT))));
    EXPECT_THAT(samba.files("C$"), IsEmpty());
}

TEST_F(SendingAFileToSixTills, StopsAtNoTillThatFailsAndPassesOverThoseThatAreAway) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.spoilTills("SET NOCOUNT OFF");  // the last thing asked of a till before its share
    send("abc");
    const QStringList rows = status();
    ASSERT_EQ(rows.size(), 6);
    for (int served : {0, 4, 5}) EXPECT_TRUE(rows[served].endsWith(" 0.00")) << rows[served].toStdString();
    for (int away : {1, 2}) EXPECT_TRUE(rows[away].endsWith(" ingen")) << rows[away].toStdString();
    EXPECT_EQ(samba.content("C$", "nytt.dat"), "abc");
    EXPECT_THAT(run.errors(), IsEmpty());
}

// The size rule is one of 32 bits: what the file is beyond it is not seen, and nothing of the copy depends on it.
TEST_F(SendingAFile, HasASpeedOfTheSizesLower32Bits) {
    const struct {
        qint64 size;
        const char* speed;
    } cases[] = {{(qint64{1} << 32) + 1'000'000, "4.00"}, {qint64{1} << 32, "-1.00"}, {qint64{1} << 31, "-8589.93"}};
    class Nowhere : public FileShare {
    public:
        explicit Nowhere(qint64& ticks) : ticks_(ticks) {}
        void connect(const std::string&, const ShareLogin&) override {}
        void copy(const std::string&, const std::string&, const ShareProgress&, const int&) override { ticks_ += 2000; }
        void remove(const std::string&) override {}
        void disconnect(const std::string&) override {}

    private:
        qint64& ticks_;
    };
    tools.Share = [this] { return std::make_unique<Nowhere>(ticks); };
    for (const auto& [size, speed] : cases) {
        const QString file = run.file("stor.dat", {});
        ASSERT_TRUE(QFile::resize(file, size));
        sendFile(file);
        const QString row = QStringLiteral("101/1 hentet - sendt - '' %1").arg(QString::fromUtf8(speed));
        EXPECT_EQ(status().first(), row) << size;
    }
}

}  // namespace
}  // namespace torvik::test
