// Each command that works on tills, by the real window: once through its good path, once through each refusal,
// cancelled in the middle, and the window closed in the middle. Whatever stopped it, no transaction stands anywhere
// afterwards and the same command then goes through.
#include <gtest/gtest.h>

#include <QCheckBox>

#include "engine/db/query.h"
#include "engine/status/oppgjor_status.h"
#include "tests/shell/modal.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/pump.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

struct RunCommand {
    const char* action;
    const char* middle;       // the beginning of a line of its log that comes while it is at a till
    const char* last;         // of its log, when all has gone well
    const char* unreachable;  // what the error pane says of till 102/1 that is away; empty where the status alone tells
};

void PrintTo(const RunCommand& command, std::ostream* out) {
    *out << command.action;
}

constexpr RunCommand kFetch{"actiOppgjorManually", "Transaksjon startet for måldatabase", "Fullført oppgjør",
                            "Klarte ikke å koble til avdelingsnummer 102 kassenummer 1)"};
constexpr RunCommand kSend{"actiSendVarer", "Overfører data til POS",
                           "Overføring til Internkunde Id 1002 kasse 1          ble utført uten problem", ""};
constexpr RunCommand kRepair{"btnNils", "Database versjon", "fullføRT OPPRETTING AV MANGLENDE KREDITTORDRE",
                             "Klarte ikke å koble til (avd. 102, kasse 1)"};
constexpr RunCommand kScript{"actiRunSQL", "Database versjon", "fullføRT SQL SCRIPT kjøring",
                             "Klarte ikke å koble til (avd. 102, kasse 1)"};
constexpr RunCommand kMessage{"actiSendMessage", "Database versjon", "fullføRT SQL SCRIPT kjøring",
                              "Klarte ikke å koble til (avd. 102, kasse 1)"};
constexpr RunCommand kHealth{"actiHealthCheck", "Database versjon", "fullføRT HELSESJEKK",
                             "Klarte ikke å koble til (avd. 102, kasse 1)"};

class RunCommandsBase : public test::WindowOverAChain {
protected:
    void open(MainWindow& window) {
        window.show();
        window.TorvikPos1().RetryCount = 1;
        allTills(window);
        window.Ask.Date = [](const QString&) { return std::optional(QDate(2000, 1, 1)); };
        window.Ask.SqlScript = [](SettingsStore&, const QString&, const QStringList&) {
            return std::optional(SqlScriptAnswer{{QStringLiteral("SELECT 1 AS n")}, true});
        };
        window.Ask.Message = [](const QString&) {
            return std::optional(InstantMessage{.Tittel = QStringLiteral("Hei"), .Til = QStringLiteral("Alle")});
        };
    }
    [[nodiscard]] static QStringList messages(const ILogPane* pane) {
        QStringList texts;
        for (const QString& line : pane->Lines()) texts << line.section(QStringLiteral("  : "), 1);
        return texts;
    }
    [[nodiscard]] static QStringList log(MainWindow& window) { return messages(window.TorvikPos1().Log); }
    [[nodiscard]] static QStringList errors(MainWindow& window) { return messages(window.TorvikPos1().ErrorLog); }
    // Does this once, when the log's last line begins so.
    static void at(MainWindow& window, const char* line, std::function<void()> action) {
        TTorvikPos& engine = window.TorvikPos1();
        engine.Seam.pumpMessages = [&window, text = QString::fromUtf8(line), action = std::move(action),
                                    pump = engine.Seam.pumpMessages, done = false]() mutable {
            pump();
            if (done || log(window).isEmpty() || !log(window).last().startsWith(text)) return;
            done = true;
            action();
        };
    }
    [[nodiscard]] QString valueAt(const QString& connectString, const char* sql) const {
        db::Session session;
        session.SetConnectString(connectString);
        session.Open();
        db::Query query(&session);
        query.ParamCheck = false;
        query.SQL = QStringList{QString::fromUtf8(sql)};
        query.Open();
        return query.Fields(0).AsString().trimmed();
    }
    [[nodiscard]] QString office() const { return QString::fromStdString(chain.dataLink()); }
    [[nodiscard]] QString till(std::size_t index) const {
        const auto address = chain.addressOf(index);
        return QStringLiteral("Data Source=%1;Initial Catalog=%2;User ID=%3;Password=%4")
            .arg(QString::fromStdString(address.server), QString::fromStdString(address.database),
                 QString::fromStdString(address.user), QString::fromStdString(address.password));
    }
    void expectNoOpenTransactions() const {
        constexpr char kOpen[] = "SELECT COUNT(*) FROM master..sysprocesses WHERE open_tran > 0";
        for (const QString& server : {office(), till(0), till(1)})
            EXPECT_EQ(valueAt(server, kOpen), QStringLiteral("0"));
    }
    [[nodiscard]] static const OppgjorStatusTable& status(MainWindow& window) {
        return window.TorvikPos1().ffraOppgjorStatus->memOppgjorStatus;
    }
};

class RunCommands : public RunCommandsBase, public testing::WithParamInterface<RunCommand> {};

TEST_P(RunCommands, GoThroughOverTheChosenTills) {
    MainWindow window(path(), store);
    open(window);
    click(window, GetParam().action);
    EXPECT_EQ(errors(window), QStringList());
    EXPECT_TRUE(log(window).contains(QString::fromUtf8(GetParam().last))) << log(window).join(u'\n').toStdString();
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());
    expectNoOpenTransactions();
}

TEST_P(RunCommands, EndWithoutAWordWhenNoTillsAreChosenAfterAll) {
    MainWindow window(path(), store);
    open(window);
    window.Ask.SelectTills = [](TKasseCollection&, const TSyncVersions&) { return false; };
    click(window, GetParam().action);
    EXPECT_EQ(log(window), QStringList());
}

TEST_P(RunCommands, RefuseAnEmptyChoice) {
    MainWindow window(path(), store);
    open(window);
    window.Ask.SelectTills = [](TKasseCollection&, const TSyncVersions&) { return true; };
    click(window, GetParam().action);
    EXPECT_EQ(log(window), QStringList{QStringLiteral("Det er ikke valgt noen kasser")});
}

TEST_P(RunCommands, AreRefusedDuringAnother) {
    MainWindow window(path(), store);
    open(window);
    at(window, kFetch.middle, [&] { click(window, GetParam().action); });
    click(window, kFetch.action);
    EXPECT_EQ(errors(window), QStringList{QStringLiteral("Det er allerede en kjøring i gang")});
    EXPECT_EQ(log(window).last(), QString::fromUtf8(kFetch.last));
}

TEST_P(RunCommands, TellOfATillThatIsAwayAndServeTheOther) {
    chain.till(1).stopListening();
    MainWindow window(path(), store);
    open(window);
    click(window, GetParam().action);
    if (*GetParam().unreachable) {
        EXPECT_TRUE(errors(window).contains(QString::fromUtf8(GetParam().unreachable)))
            << errors(window).join(u'\n').toStdString();
    } else {
        EXPECT_EQ(errors(window), QStringList());
        EXPECT_EQ(status(window).Row(0).Sendt, true);
        EXPECT_EQ(status(window).Row(1).Sendt, false);
    }
}

TEST_P(RunCommands, CancelledInTheMiddleLeaveNothingOpenAndGoThroughTheNextTime) {
    MainWindow window(path(), store);
    open(window);
    at(window, GetParam().middle, [&] { click(window, "actiCancel"); });
    click(window, GetParam().action);
    EXPECT_TRUE(log(window).contains(QStringLiteral("Avbrutt av bruker"))) << log(window).join(u'\n').toStdString();
    EXPECT_FALSE(log(window).contains(QString::fromUtf8(GetParam().last)));
    expectNoOpenTransactions();

    window.TorvikPos1().ErrorLog->Clear();
    click(window, GetParam().action);
    EXPECT_EQ(errors(window), QStringList());
    EXPECT_TRUE(log(window).contains(QString::fromUtf8(GetParam().last)));
}

TEST_P(RunCommands, WindowClosedInTheMiddleLeavesNothingOpen) {
    MainWindow window(path(), store);
    open(window);
    at(window, GetParam().middle, [&] { window.close(); });
    click(window, GetParam().action);
    EXPECT_TRUE(test::pumpUntil([&] { return !window.isVisible(); }));
    EXPECT_FALSE(log(window).contains(QString::fromUtf8(GetParam().last)));
    EXPECT_TRUE(QFile::exists(folder.filePath(QStringLiteral("TorvikPos.log"))));
    expectNoOpenTransactions();
}

INSTANTIATE_TEST_SUITE_P(Each, RunCommands, testing::Values(kFetch, kSend, kRepair, kScript, kMessage, kHealth),
                         [](const auto& test) { return std::string(test.param.action); });

using Sending = RunCommandsBase;

TEST_F(Sending, BringsTheItemsToTheTills) {
    chain.runInBackOffice("UPDATE Vare SET Va_Navn = 'Nytt navn' WHERE Va_Id = (SELECT MIN(Va_Id) FROM Vare)");
    const QString item = valueAt(office(), "SELECT MIN(Va_Id) FROM Vare");
    MainWindow window(path(), store);
    open(window);
    click(window, "actiSendVarer");
    const QByteArray name = QStringLiteral("SELECT Va_Navn FROM Vare WHERE Va_Id = '%1'").arg(item).toUtf8();
    for (const std::size_t index : {0U, 1U}) {
        EXPECT_EQ(valueAt(till(index), name.constData()), QStringLiteral("Nytt navn"));
        EXPECT_EQ(status(window).Row(static_cast<int>(index)).Sendt, true);
    }
}

TEST_F(Sending, WithThreadsIsOnlyAMessage) {
    MainWindow window(path(), store);
    open(window);
    window.Ask.SelectTills = [](TKasseCollection&, const TSyncVersions&) {
        ADD_FAILURE() << "asked";
        return true;
    };
    QStringList shown;
    window.Ask.ShowMessage = [&shown](const QString& text) { shown << text; };
    test::child<QCheckBox>(window, "cbUseThreads").click();
    click(window, "actiSendVarer");
    EXPECT_EQ(shown,
              QStringList{QStringLiteral("TrÃ¥der er ikke lenger stÃ¸ttet grunnet bortfall av stÃ¸tte for DTS")});
    EXPECT_EQ(log(window), QStringList());
}

TEST_F(Sending, TakesThePreferencesAsTheyAreNow) {
    MainWindow window(path(), store);
    open(window);
    test::child<QCheckBox>(window, "cbSendPriceAndCustomer").click();
    EXPECT_FALSE(window.TorvikPos1().SendCustomerAndPrice);
    click(window, "actiSendVarer");
    EXPECT_TRUE(window.TorvikPos1().SendCustomerAndPrice);
    EXPECT_EQ(window.TorvikPos1().Tasks, TTasks{taSend});
}

TEST_F(Sending, TillInATransactionIsRefusedWithItsReason) {
    db::Session busy;
    busy.SetConnectString(till(1));
    busy.Open();
    busy.StartTransaction();
    MainWindow window(path(), store);
    open(window);
    click(window, "actiSendVarer");
    EXPECT_EQ(status(window).Row(1).Melding,
              QStringLiteral("Sender ikke oppdatering til (avd. 102, kasse 1), fordi den er i en transaksjon. Kanskje "
                             "kasseoppgjøret ikke er avsluttet,"));
    EXPECT_EQ(status(window).Row(0).Sendt, true);
}

using Fetching = RunCommandsBase;

TEST_F(Fetching, TillInATransactionIsRefusedWithItsReason) {
    db::Session busy;
    busy.SetConnectString(till(1));
    busy.Open();
    busy.StartTransaction();
    MainWindow window(path(), store);
    open(window);
    click(window, "actiOppgjorManually");
    EXPECT_TRUE(errors(window).contains(
        QStringLiteral("Henter ikke oppgjør (avd. 102, kasse 1), fordi den er i en transaksjon. Kanskje kasseoppgjøret "
                       "ikke er avsluttet")));
    EXPECT_EQ(status(window).Row(0).Hentet, true);
}

TEST_F(Fetching, TillWithTemporarySettlementsIsRefusedWithItsReason) {
    chain.runInTill(1, "UPDATE Oppgjor SET Op_Type = 'MIDLERTIDIG' WHERE Op_Id = (SELECT MAX(Op_Id) FROM Oppgjor)");
    MainWindow window(path(), store);
    open(window);
    click(window, "actiOppgjorManually");
    EXPECT_TRUE(errors(window).contains(QStringLiteral(
        "Henter ikke oppgjør (avd. 102, kasse 1), fordi den har midlertidige oppgjør (OP_TYPE=MIDLERTIDIG)")));
    EXPECT_EQ(status(window).Row(0).Hentet, true);
}

using Accumulating = RunCommandsBase;

constexpr char kWaiting[] = "SELECT COUNT(*) FROM PosOppgjor WHERE Pos_Op_Status < 8 AND Pos_Op_Type = 'NORMAL'";

TEST_F(Accumulating, FollowsAFetchThatWasCancelledToo) {
    store.write("Smtp/AutomaticAccumulate", true);
    MainWindow window(path(), store);
    open(window);
    at(window, "Hentet oppgjør fra avd.", [&] { click(window, "actiCancel"); });
    click(window, "actiOppgjorManually");
    EXPECT_TRUE(log(window).contains(QStringLiteral("Avbrutt av bruker")));
    // The fetch tells of its cancel and comes back as after any other failure: what has been fetched is accumulated.
    EXPECT_EQ(log(window).count(QStringLiteral("Foretar automatisk akkumulering")), 1);
    EXPECT_EQ(valueAt(office(), kWaiting), QStringLiteral("0"));
}

TEST_F(Accumulating, RunsOnceUntilTheNextArming) {
    store.write("Smtp/AutomaticAccumulate", true);
    MainWindow window(path(), store);
    open(window);
    click(window, "actiOppgjorManually");
    click(window, "actiOppgjorManually");
    EXPECT_EQ(log(window).count(QStringLiteral("Foretar automatisk akkumulering")), 1)
        << "an untick of what is not ticked arms and disarms nothing";
}

}  // namespace
}  // namespace torvik
