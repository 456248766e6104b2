// The shell's side of a night over the demo chain: arming, the folder, the accumulation, the saved and mailed logs.
#include "shell/night/automatic_run.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QRegularExpression>
#include <QTimeEdit>
#include <QTreeView>

#include "engine/db/query.h"
#include "engine/roster/avdeling.h"
#include "engine/status/oppgjor_status.h"
#include "engine/status/till_state.h"
#include "tests/shell/modal.h"
#include "tests/shell/night/smtp_server.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/chain_session.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

class Night : public test::WindowOverAChain {
protected:
    Night() {
        store.write("KunHent", true);
        store.write("AutoStartTime", QTime(4, 0));
        store.write("cbAutoStart", true);
    }
    // Armed, at four o'clock of the day, with waits that pass at once.
    void open(MainWindow& window) {
        TTorvikPos& engine = window.TorvikPos1();
        engine.Seam.now = [this] { return now; };
        engine.Seam.sleep = [](int) {};
        window.show();
        ASSERT_TRUE(engine.AutoCommunicate());
    }
    [[nodiscard]] static QStringList messages(const ILogPane* pane) {
        QStringList texts;
        for (const QString& line : pane->Lines()) texts << line.section(QStringLiteral("  : "), 1);
        return texts;
    }
    [[nodiscard]] qint64 backOffice(const char* sql) const {
        const auto session = test::backOfficeSession(chain);
        db::Query query(session.get());
        query.SQL = QStringList{QString::fromUtf8(sql)};
        query.Open();
        return query.Fields(0).AsInteger();
    }
    void runInBackOffice(const char* batch) { chain.runInBackOffice(batch); }
    [[nodiscard]] QByteArray content(const QString& file) const {
        QFile in(folder.filePath(file));
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }

    // Every preference that an arming hands to the engine, none of them as by default.
    void storePreferences() {
        for (const char* name : {"Smtp/SendPriceAndCustomer", "Smtp/DeleteItems", "Smtp/DeleteItemsDayThree",
                                 "Smtp/SynchonizedRun", "Smtp/HelpFetching"})
            store.write(name, true);
        store.write("Smtp/StartSendingTime", QTime(5, 15));
        store.write("Smtp/memExcludePOSListSQL", QStringLiteral("ikk_kassenummer <> '9'"));
    }

    QDateTime now{QDate(2026, 3, 4), QTime(4, 0, 20)};
};

constexpr char kWaiting[] = "SELECT COUNT(*) FROM PosOppgjor WHERE Pos_Op_Status < 8 AND Pos_Op_Type = 'NORMAL'";

TEST_F(Night, ArmingGivesTheEngineThePreferencesAndTheTime) {
    storePreferences();
    MainWindow window(path(), store);
    open(window);
    TTorvikPos& engine = window.TorvikPos1();
    EXPECT_EQ(engine.StartTime, QTime(4, 0));
    EXPECT_TRUE(engine.SendCustomerAndPrice);
    EXPECT_TRUE(engine.SynchonizedRun);
    EXPECT_TRUE(engine.HelpFetching);
    EXPECT_EQ(engine.StartSendingTime, QTime(5, 15));
    EXPECT_EQ(engine.Avdeling->ExcludePosListSQL().trimmed(), QStringLiteral("ikk_kassenummer <> '9'"));
    EXPECT_TRUE(engine.IncludeCreditCouponOnOppgjor);
    EXPECT_TRUE(engine.IncludeGiftVoucherOnOppgjor);
    EXPECT_EQ(engine.DeleteItemsWeekDays, QStringList{QStringLiteral("3")});
    window.Night().arm(true);
    EXPECT_EQ(engine.DeleteItemsWeekDays, (QStringList{QStringLiteral("3"), QStringLiteral("3")}))
        << "not cleared first";
}

TEST_F(Night, EachArmingGivesTheEngineThePreferencesAnew) {
    storePreferences();
    MainWindow window(path(), store);
    open(window);
    TTorvikPos& engine = window.TorvikPos1();
    engine.SendCustomerAndPrice = false;
    engine.SetDeleteItemsOnSend(false);
    engine.SynchonizedRun = false;
    engine.HelpFetching = false;
    engine.StartSendingTime = QTime(1, 0);
    engine.Avdeling->SetExcludePosListSQL({});
    window.Night().arm(true);
    EXPECT_TRUE(engine.SendCustomerAndPrice);
    EXPECT_TRUE(engine.DeleteItemsOnSend());
    EXPECT_TRUE(engine.SynchonizedRun);
    EXPECT_TRUE(engine.HelpFetching);
    EXPECT_EQ(engine.StartSendingTime, QTime(5, 15));
    EXPECT_EQ(engine.Avdeling->ExcludePosListSQL().trimmed(), QStringLiteral("ikk_kassenummer <> '9'"));
}

TEST_F(Night, TimeReachesTheEngineAtEachChangeOfItsField) {
    MainWindow window(path(), store);
    open(window);
    window.findChild<QTimeEdit*>(QStringLiteral("edStartTime"))->setTime(QTime(2, 30));
    EXPECT_EQ(window.TorvikPos1().StartTime, QTime(2, 30));
}

TEST_F(Night, HasAFolderOfItsOwnWithBothPanes) {
    MainWindow window(path(), store);
    open(window);
    window.TorvikPos1().DoOnTimer();
    const QByteArray log = content(QStringLiteral("Log/20260304040020/TorvikPos.rtf"));
    EXPECT_TRUE(log.startsWith("{\\rtf1"));
    EXPECT_TRUE(log.contains("Starter automatisk innhenting"));
    EXPECT_TRUE(log.contains("OnAutoStartDone"));
    EXPECT_TRUE(content(QStringLiteral("Log/20260304040020/TorvikPosError.rtf")).startsWith("{\\rtf1"));
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(window.TorvikPos1().AutoCommunicate()) << "armed for the next day";
}

TEST_F(Night, AccumulatesAfterTheFetchWithStatisticsWhenWanted) {
    store.write("Smtp/AutomaticAccumulate", true);
    store.write("Smtp/AutomaticUpdateStatistics", true);
    MainWindow window(path(), store);
    open(window);
    window.TorvikPos1().DoOnTimer();
    EXPECT_EQ(messages(window.TorvikPos1().Log)
                  .count(QStringLiteral("Foretar automatisk akkumulering, inkludert oppdatering av statistikk")),
              1);
    EXPECT_EQ(backOffice(kWaiting), 0);
    EXPECT_GT(backOffice("SELECT COUNT(*) FROM PosDagsalg"), 0);
    EXPECT_GT(backOffice("SELECT COUNT(*) FROM VareStatistikk"), 0);
    EXPECT_EQ(window.TorvikPos1().ErrorLog->Lines(), QStringList());
}

TEST_F(Night, AccumulatesWithoutStatisticsUnlessWanted) {
    store.write("Smtp/AutomaticAccumulate", true);
    MainWindow window(path(), store);
    open(window);
    const qint64 before = backOffice("SELECT COUNT(*) FROM VareStatistikk");
    window.TorvikPos1().DoOnTimer();
    EXPECT_EQ(messages(window.TorvikPos1().Log).count(QStringLiteral("Foretar automatisk akkumulering")), 1);
    EXPECT_EQ(backOffice(kWaiting), 0);
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM VareStatistikk"), before);
}

TEST_F(Night, DoesNotAccumulateUnlessWanted) {
    MainWindow window(path(), store);
    open(window);
    window.TorvikPos1().DoOnTimer();
    EXPECT_GT(backOffice(kWaiting), 0);
}

TEST_F(Night, SecondNightOfAnArmingDoesNotAccumulateAndTheNextArmingDoes) {
    store.write("Smtp/AutomaticAccumulate", true);
    MainWindow window(path(), store);
    open(window);
    const QString line = QStringLiteral("Foretar automatisk akkumulering");
    window.TorvikPos1().DoOnTimer();
    now = now.addDays(1);
    window.TorvikPos1().DoOnTimer();
    EXPECT_EQ(messages(window.TorvikPos1().Log).count(line), 1);
    EXPECT_TRUE(QDir(folder.filePath(QStringLiteral("Log/20260305040020"))).exists());

    auto* armed = window.findChild<QCheckBox*>(QStringLiteral("cbAutoStart"));
    armed->click();
    armed->click();
    now = now.addDays(1);
    window.TorvikPos1().DoOnTimer();
    EXPECT_EQ(messages(window.TorvikPos1().Log).count(line), 2);
}

TEST_F(Night, SettlementsThatAreNeverTakenAreLeftAfterFiveRounds) {
    store.write("Smtp/AutomaticAccumulate", true);
    runInBackOffice("CREATE TABLE Runder (Nr int IDENTITY(1, 1) NOT NULL, Tid datetime NOT NULL)");
    runInBackOffice("DROP PROCEDURE AccumulatePosData");
    runInBackOffice(
        "CREATE PROCEDURE AccumulatePosData @FraDato datetime AS INSERT INTO Runder (Tid) VALUES (GETDATE())");
    MainWindow window(path(), store);
    open(window);
    window.TorvikPos1().DoOnTimer();
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM Runder"), 5);
    EXPECT_GT(backOffice(kWaiting), 0);
}

TEST_F(Night, FailedAccumulationIsLoggedAndTriedAgainTheNextNight) {
    store.write("Smtp/AutomaticAccumulate", true);
    runInBackOffice("DROP PROCEDURE AccumulatePosData");
    MainWindow window(path(), store);
    open(window);
    window.TorvikPos1().DoOnTimer();
    // The server says it once for each round.
    const QString error =
        QStringLiteral("^Klarte ikke Ã¥ akkumulere\\. Feil: Could not find stored procedure 'AccumulatePosData'\\.");
    EXPECT_EQ(messages(window.TorvikPos1().ErrorLog).filter(QRegularExpression(error)).size(), 1);
    EXPECT_TRUE(messages(window.TorvikPos1().Log).contains(QStringLiteral("Synkronisering fullført")));
    now = now.addDays(1);
    window.TorvikPos1().DoOnTimer();
    EXPECT_EQ(messages(window.TorvikPos1().ErrorLog).filter(QRegularExpression(error)).size(), 2);
}

TEST_F(Night, MailsBothLogsWhenItIsDone) {
    const test::SmtpServer server;
    store.write("Smtp/Active", true);
    store.write("Smtp/Server", QStringLiteral("127.0.0.1"));
    store.write("Smtp/Receipients", QStringLiteral("drift@torvik.example,vakt@torvik.example"));
    store.write("Smtp/Sender", QStringLiteral("kasse@torvik.example"));
    MainWindow window(path(), store);
    EXPECT_EQ(window.Night().mailPort, 25);
    window.Night().mailPort = server.port();
    open(window);
    window.TorvikPos1().DoOnTimer();
    ASSERT_EQ(server.mails().size(), 1);
    const QJsonObject mail = server.mails()[0];
    EXPECT_EQ(mail[u"subject"].toString(), QStringLiteral("TorvikPosSync logg"));
    EXPECT_EQ(mail[u"body"].toString().trimmed(),
              QStringLiteral("Se vedlagt logg fra siste TorvikPosSync kjÃ¸ring (Server: TorvikBackOffice, database: "
                             "TorvikBackOffice)"));
    EXPECT_EQ(mail[u"recipients"].toArray().size(), 2);
    const QJsonObject files = mail[u"attachments"].toObject();
    EXPECT_EQ(files[u"TorvikPos.rtf"].toString().toLatin1(), content(QStringLiteral("TorvikPos.rtf")));
    EXPECT_EQ(files[u"TorvikPosError.rtf"].toString().toLatin1(), content(QStringLiteral("TorvikPosError.rtf")));
    EXPECT_TRUE(files[u"TorvikPos.rtf"].toString().contains(QStringLiteral("OnAutoStartDone")));
    EXPECT_EQ(window.TorvikPos1().ErrorLog->Lines(), QStringList());
}

// Armed to help, in a night that another machine leads.
class HelpingNight : public Night {
protected:
    HelpingNight() {
        store.write("Smtp/HelpFetching", true);
        store.write("Smtp/AutomaticAccumulate", true);
        store.write("Smtp/Active", true);  // with no server: a mail would be an error
        store.write("KunHent", false);
    }
    // A tick whose waits for a night pass at once.
    static void tick(MainWindow& window) {
        qint64 minutes = 0;
        window.TorvikPos1().Seam.tickCount = [&minutes] { return ++minutes * 60 * 1000; };
        window.TorvikPos1().DoOnTimer();
    }
};

TEST_F(HelpingNight, FetchesAndDoesNothingElse) {
    runInBackOffice(
        "INSERT dts_logg (dl_dlt_id, dl_ik_ku_id, dl_kassenr, dl_tidspunkt, dl_dp_id, dl_info) "
        "VALUES (1, 1001, '1', GETDATE(), 1, 'Natt {6f9619ff-8b86-d011-b42d-00c04fc964ff}, maskin HOVEDPC')");
    MainWindow window(path(), store);
    open(window);
    tick(window);
    const QStringList log = messages(window.TorvikPos1().Log);
    EXPECT_TRUE(log.contains(QStringLiteral("Hjelper maskin HOVEDPC med innhentingen")));
    EXPECT_EQ(backOffice("SELECT COUNT(DISTINCT Pos_Op_Ik_Ku_Id) FROM PosOppgjor"), 2) << "both tills";
    EXPECT_GT(backOffice(kWaiting), 0) << "not accumulated";
    EXPECT_EQ(log.filter(QStringLiteral("Sender")), QStringList());
    EXPECT_EQ(window.TorvikPos1().ErrorLog->Lines(), QStringList()) << "no mail";
    EXPECT_TRUE(content(QStringLiteral("Log/20260304040020/TorvikPos.rtf")).contains("Hjelper maskin HOVEDPC"));
    EXPECT_TRUE(window.TorvikPos1().AutoCommunicate()) << "armed for the next day";
}

TEST_F(HelpingNight, WithoutALeadingMachineFetchesNothing) {
    MainWindow window(path(), store);
    open(window);
    tick(window);
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM PosOppgjor"), 0);
    EXPECT_TRUE(messages(window.TorvikPos1().Log).contains(QStringLiteral("Ingen innhenting å hjelpe til med")));
    EXPECT_EQ(window.TorvikPos1().ErrorLog->Lines(), QStringList());
}

TEST_F(Night, ShowsWhichMachineHasFetchedATill) {
    MainWindow window(path(), store);
    open(window);
    TTorvikPos& engine = window.TorvikPos1();
    const TillOperation fetch = engine.OnFetchTill;
    engine.OnFetchTill = [&](TillVisit& visit) {
        runInBackOffice(
            "INSERT dts_logg (dl_dlt_id, dl_ik_ku_id, dl_kassenr, dl_tidspunkt, dl_dp_id, dl_info) "
            "SELECT 1, 1002, '1', GETDATE(), 1, 'Slutt ' + SUBSTRING(dl_info, 6, 38) + ' hentet, maskin BUTIKKPC' "
            "FROM dts_logg WHERE dl_info LIKE 'Natt {%'");
        fetch(visit);
    };
    engine.DoOnTimer();
    const QAbstractItemModel& tree = *window.findChild<QTreeView*>(QStringLiteral("statusTree"))->model();
    QStringList lines;
    for (int row = 0; row < tree.rowCount(); ++row)
        for (int line = 0; line < tree.rowCount(tree.index(row, 0)); ++line)
            lines << tree.index(line, 0, tree.index(row, 0)).data().toString();
    EXPECT_EQ(lines.filter(QStringLiteral("er hentet av maskin BUTIKKPC")).size(), 1)
        << lines.join(u'\n').toStdString();
    const OppgjorStatusTable& status = engine.ffraOppgjorStatus->memOppgjorStatus;
    ASSERT_EQ(status.RecordCount(), 2);
    EXPECT_EQ(status.Row(1).Melding, QStringLiteral("Hentet av maskin BUTIKKPC,"));
    EXPECT_EQ(TillStateOf(*engine.ffraOppgjorStatus, 1), TillState::Done);
}

TEST_F(Night, FailedMailIsToldInTheErrorPaneAfterItWasSaved) {
    store.write("Smtp/Active", true);
    MainWindow window(path(), store);
    open(window);
    window.TorvikPos1().DoOnTimer();
    ASSERT_EQ(window.TorvikPos1().ErrorLog->Lines().size(), 1) << "an empty server";
    EXPECT_FALSE(content(QStringLiteral("TorvikPosError.rtf")).contains("\\par"));
    EXPECT_FALSE(window.TorvikPos1().TimerBusy());
    EXPECT_TRUE(window.TorvikPos1().AutoCommunicate());
}

// Either runs the roster's query again, which under the walk would begin at the first till anew.
TEST_F(Night, CannotBeDisarmedNorArmedAnewWhileItRuns) {
    MainWindow window(path(), store);
    open(window);
    TTorvikPos& engine = window.TorvikPos1();
    auto* armed = window.findChild<QCheckBox*>(QStringLiteral("cbAutoStart"));
    QStringList served;
    QString hint;
    const TillOperation fetch = engine.OnFetchTill;
    engine.OnFetchTill = [&](TillVisit& visit) {
        served << visit.Till.Avdelingsnummer;
        if (served.size() < 4) armed->click();
        hint = armed->toolTip();
        fetch(visit);
    };
    engine.DoOnTimer();
    EXPECT_EQ(served, (QStringList{QStringLiteral("101"), QStringLiteral("102")}));
    EXPECT_EQ(hint, QStringLiteral("Kan endres når kjøringen er ferdig"));
    EXPECT_TRUE(engine.AutoCommunicate()) << "armed for the next day";
    armed->click();
    EXPECT_FALSE(engine.AutoCommunicate()) << "the operator's again";
}

TEST_F(Night, FetchesThoughItsFolderCannotBeMade) {
    MainWindow window(path(), store);
    open(window);
    QFile inTheWay(folder.filePath(QStringLiteral("Log/20260304040020")));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    window.TorvikPos1().DoOnTimer();
    EXPECT_EQ(backOffice("SELECT COUNT(DISTINCT Pos_Op_Ik_Ku_Id) FROM PosOppgjor"), 2) << "both tills";
    EXPECT_EQ(messages(window.TorvikPos1().ErrorLog).first(),
              QStringLiteral("Klarte ikke å lage mappen %1/").arg(inTheWay.fileName()));
}

TEST_F(Night, CancelIsInReachWhileItRunsAndOnlyThen) {
    MainWindow window(path(), store);
    open(window);
    const auto* cancel = window.findChild<QAction*>(QStringLiteral("actiCancel"));
    EXPECT_FALSE(cancel->isEnabled());
    EXPECT_EQ(cancel->toolTip(), QStringLiteral("Ingen kjøring er i gang"));
    bool enabledDuring = false;
    const auto pump = window.TorvikPos1().Seam.pumpMessages;
    window.TorvikPos1().Seam.pumpMessages = [&] {
        pump();
        enabledDuring = enabledDuring || cancel->isEnabled();
    };
    window.TorvikPos1().DoOnTimer();
    EXPECT_TRUE(enabledDuring);
    EXPECT_FALSE(cancel->isEnabled());
}

TEST_F(Night, ThatPassesWhileACommandAsksLeavesTheCancelToTheCommand) {
    MainWindow window(path(), store);
    open(window);
    const auto* cancel = window.findChild<QAction*>(QStringLiteral("actiCancel"));
    const auto* arming = window.findChild<QCheckBox*>(QStringLiteral("cbAutoStart"));
    window.Ask.Text = [&](const QString&, const QString&, const QString&) {
        window.TorvikPos1().DoOnTimer();
        return std::optional(QStringLiteral("202603"));
    };
    bool inReach = false;
    bool changeable = true;
    window.Ask.SelectTills = [&](TKasseCollection&, const TSyncVersions&) {
        inReach = cancel->isEnabled();
        changeable = arming->isEnabled();
        return false;
    };
    click(window, "dxBtnHentVaretelling");
    EXPECT_TRUE(messages(window.TorvikPos1().Log).contains(QStringLiteral("Fullført oppgjør"))) << "a night has passed";
    EXPECT_TRUE(inReach);
    EXPECT_FALSE(changeable);
    EXPECT_FALSE(cancel->isEnabled());
}

TEST_F(Night, CancelLeftFromARunBeforeIsNotThisNights) {
    MainWindow window(path(), store);
    open(window);
    window.TorvikPos1().SetCancelRequest(true);
    window.TorvikPos1().Cancelled = true;
    window.TorvikPos1().DoOnTimer();
    EXPECT_FALSE(messages(window.TorvikPos1().Log).contains(QStringLiteral("Avbrutt av bruker")));
    EXPECT_EQ(window.TorvikPos1().ffraOppgjorStatus->memOppgjorStatus.RecordCount(), 2);
}

}  // namespace
}  // namespace torvik
