// The commands of stock counts, number series and the reset: what they ask in which order, what they do, and how the
// operator's "Avbryt" ends them.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/office/application_lock.h"
#include "engine/status/oppgjor_status.h"
#include "shell/commands/command.h"
#include "shell/dialogs/nullstill_utvalg.h"
#include "shell/night/automatic_run.h"
#include "tests/shell/modal.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/chain_session.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

const TSyncVersions kAll{svTorvikPosSync, svDotNetV1};

class TillCommands : public test::WindowOverAChain {
protected:
    [[nodiscard]] static QStringList messages(const ILogPane* pane) {
        QStringList texts;
        for (const QString& line : pane->Lines()) texts << line.section(QStringLiteral("  : "), 1);
        return texts;
    }
    [[nodiscard]] static QStringList log(MainWindow& window) { return messages(window.TorvikPos1().Log); }
    [[nodiscard]] static QStringList errors(MainWindow& window) { return messages(window.TorvikPos1().ErrorLog); }

    // Records the questions; the tills are both where `tills` says so.
    void record(MainWindow& window, bool tills) {
        window.Ask.SelectTills = [this, tills](TKasseCollection& chosen, const TSyncVersions& versions) {
            asked << (versions == kAll ? QStringLiteral("alle kasser") : QStringLiteral("gamle kasser"));
            for (int department : {1001, 1002}) {
                if (!tills) break;
                TKasseItem& item = chosen.Add();
                item.Ik_Ku_ID = department;
                item.Kassenr = QStringLiteral("1");
            }
            return tills;
        };
        window.Ask.ResetScope = [this] {
            asked << QStringLiteral("omfang");
            return scope;
        };
        window.Ask.Confirm = [this](const QString& text) {
            asked << text;
            return yes;
        };
        window.Ask.ShowMessage = [this](const QString& text) { told << text; };
        window.Ask.Text = [this](const QString& title, const QString& label, const QString& first) {
            asked << QStringLiteral("%1|%2|%3").arg(title, label, first);
            return answers.isEmpty() ? std::nullopt : answers.takeFirst();
        };
    }
    // Notes and confirms so many reminders, one after the other.
    static void confirmReminders(QStringList& shown, int count) {
        test::whenAsked<QMessageBox>(
            [&shown, count](QMessageBox& reminder) {
                shown << reminder.text();
                reminder.accept();
                if (count > 1) confirmReminders(shown, count - 1);
            },
            [](QMessageBox& box) { return box.text().startsWith(QStringLiteral("Husk")); });
    }
    [[nodiscard]] static QString value(db::Session& session, const char* sql) {
        db::Query query(&session);
        query.ParamCheck = false;
        query.SQL = QStringList{QString::fromUtf8(sql)};
        query.Open();
        return query.Fields(0).AsString();
    }
    [[nodiscard]] QString backOffice(const char* sql) const { return value(*test::backOfficeSession(chain), sql); }
    [[nodiscard]] QString till(std::size_t index, const char* sql) const {
        return value(*test::tillSession(chain, index), sql);
    }

    QStringList asked;
    QStringList told;
    TInitializeItems scope{nutvOppgjor, nutvKunde};
    bool yes = true;
    QList<std::optional<QString>> answers;
};

constexpr char kMark[] = "SELECT IN_NUMMERSERIER_SYNKRONISERT FROM INNSTILLINGER";
constexpr char kOrders[] = "SELECT COUNT(*) FROM ORDRE";
constexpr char kCounted[] = "SELECT COUNT(*) FROM Varetelling WHERE Vt_Periode = 202611";
constexpr char kCountIsMarked[] =
    "SELECT COUNT(*) FROM OPPGJOR WHERE OP_TYPE = 'VARETELLING' AND OP_OPPDATERTTIDSPUNKT IS NOT NULL";
const QString kReset =
    QStringLiteral("Dette vil slette alle bonger, oppgjør og logger (2 kasser). Vil du gjøre dette \nnå ?");
const QString kReminder = QStringLiteral(
    "Husk å slett alle filer og mapper i mappene:\nReceipt, Attachment, Bank, Creditslip, Log, Report, Returnslip, \nZ");

TEST_F(TillCommands, StandInTheMenuInTheirOrder) {
    MainWindow window(path(), store);
    QStringList names;
    for (const QAction* action : window.menuBar()->actions()[1]->menu()->actions()) names << action->objectName();
    QStringList own;
    for (const QString& name : names)
        if (QStringList{QStringLiteral("actiSendVarer"), QStringLiteral("actiSyncNrSerie"),
                        QStringLiteral("actiNullstill"), QStringLiteral("dxBtnHentVaretelling")}
                .contains(name))
            own << name;
    EXPECT_EQ(own, (QStringList{QStringLiteral("actiSendVarer"), QStringLiteral("actiSyncNrSerie"),
                                QStringLiteral("actiNullstill"), QStringLiteral("dxBtnHentVaretelling")}));
    const std::pair<const char*, const char*> kCaptions[] = {
        {"actiSyncNrSerie", "Synkroniser nummerserier"},
        {"actiNullstill", "Nullstill"},
        {"dxBtnHentVaretelling", "Hent kun varetelling (vanlig oppgjør blir ikke med)"}};
    for (const auto& [name, caption] : kCaptions)
        EXPECT_EQ(window.findChild<QAction*>(QString::fromUtf8(name))->text(), QString::fromUtf8(caption));
}

TEST_F(TillCommands, NumberSeriesAskForAllTillsAndMarkThem) {
    store.write("cbAutoStart", true);
    for (int index = 0; index < 2; ++index)
        chain.runInTill(index, "UPDATE INNSTILLINGER SET IN_NUMMERSERIER_SYNKRONISERT = 0");
    MainWindow window(path(), store);
    window.show();
    record(window, true);
    click(window, "actiSyncNrSerie");
    EXPECT_EQ(asked, QStringList{QStringLiteral("alle kasser")});
    for (std::size_t index = 0; index < 2; ++index) EXPECT_EQ(till(index, kMark), QStringLiteral("True"));
    EXPECT_EQ(log(window).last(), QStringLiteral("fullføRT OPPDATERING AV ID"));
    EXPECT_EQ(errors(window), QStringList());
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());
}

TEST_F(TillCommands, NumberSeriesWithoutTillsEndWithoutAWord) {
    MainWindow window(path(), store);
    window.show();
    record(window, false);
    click(window, "actiSyncNrSerie");
    EXPECT_EQ(window.TorvikPos1().Log->Lines(), QStringList());
}

TEST_F(TillCommands, CancelEndsTheNumberSeriesInTheWait) {
    MainWindow window(path(), store);
    window.show();
    record(window, true);
    TTorvikPos& engine = window.TorvikPos1();
    engine.Seam.pumpFor = [&](int) { click(window, "actiCancel"); };
    chain.runInTill(1, "UPDATE INNSTILLINGER SET IN_NUMMERSERIER_SYNKRONISERT = 0");
    click(window, "actiSyncNrSerie");
    EXPECT_EQ(till(1, kMark), QStringLiteral("False"));
    EXPECT_EQ(log(window).mid(log(window).size() - 2),
              (QStringList{QStringLiteral("Avbrutt av bruker"),
                           QStringLiteral("Ferdige kasser da kjøringen ble avbrutt: avd. 101 kasse 1")}));
    EXPECT_EQ(errors(window), QStringList());
}

TEST_F(TillCommands, ResetAsksForItsScopeThenForTillsThenWhetherItShall) {
    store.write("cbAutoStart", true);
    MainWindow window(path(), store);
    window.show();
    record(window, true);
    click(window, "actiNullstill");
    EXPECT_EQ(asked, (QStringList{QStringLiteral("omfang"), QStringLiteral("alle kasser"), kReset}));
    EXPECT_EQ(told, (QStringList{kReminder, kReminder}));
    for (std::size_t index = 0; index < 2; ++index) {
        EXPECT_EQ(till(index, kOrders), QStringLiteral("0"));
        EXPECT_EQ(till(index, "SELECT COUNT(*) FROM KUNDE"), QStringLiteral("0"));
        EXPECT_NE(till(index, "SELECT COUNT(*) FROM VARE"), QStringLiteral("0"));
    }
    EXPECT_EQ(errors(window), QStringList());
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());
    EXPECT_EQ(window.TorvikPos1().ffraOppgjorStatus->memOppgjorStatus.RecordCount(), 0);
}

TEST_F(TillCommands, ResetEndsAtEachNo) {
    store.write("cbAutoStart", true);
    MainWindow window(path(), store);
    window.show();
    record(window, true);
    scope = {};
    click(window, "actiNullstill");
    EXPECT_EQ(asked, QStringList{QStringLiteral("omfang")});
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate()) << "disarmed before the dialog";

    scope = {nutvOppgjor};
    record(window, false);
    click(window, "actiNullstill");
    EXPECT_EQ(asked.size(), 3);

    record(window, true);
    yes = false;
    click(window, "actiNullstill");
    EXPECT_EQ(asked.last(), kReset);
    EXPECT_EQ(window.TorvikPos1().Log->Lines(), QStringList());
    for (std::size_t index = 0; index < 2; ++index) EXPECT_NE(till(index, kOrders), QStringLiteral("0"));
}

TEST_F(TillCommands, ResetOfAServiceDoesNothingEvenAfterTheDialog) {
    MainWindow window(path(), store);
    window.show();
    record(window, true);
    window.TorvikPos1().SetRunAsService(true);
    click(window, "actiNullstill");
    window.TorvikPos1().SetRunAsService(false);
    EXPECT_EQ(asked, (QStringList{QStringLiteral("omfang"), QStringLiteral("alle kasser")}));
    EXPECT_NE(till(0, kOrders), QStringLiteral("0"));
}

TEST_F(TillCommands, ResetThroughItsDialogs) {
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    QStringList shown;
    test::whenAsked<TfrmNullstillUtvalg>([&](TfrmNullstillUtvalg& dialog) {
        test::child<QCheckBox>(dialog, "cbKunde").click();
        test::press(dialog, "ok");
        test::whenAsked<QMessageBox>([&](QMessageBox& question) {
            shown << question.text();
            for (QAbstractButton* button : question.buttons())
                if (button->text() == QStringLiteral("Ja")) QTest::mouseClick(button, Qt::LeftButton);
            confirmReminders(shown, 2);
        });
    });
    click(window, "actiNullstill");
    EXPECT_EQ(shown, (QStringList{kReset, kReminder, kReminder}));
    EXPECT_EQ(till(0, "SELECT COUNT(*) FROM KUNDE"), QStringLiteral("0"));
    EXPECT_EQ(till(1, kOrders), QStringLiteral("0"));
}

TEST_F(TillCommands, StockCountsAskForThePeriodAndThenForAllTills) {
    MainWindow window(path(), store);
    window.show();
    record(window, true);
    answers = {QStringLiteral("202611")};
    click(window, "dxBtnHentVaretelling");
    ASSERT_EQ(asked.size(), 2);
    EXPECT_TRUE(asked[0].startsWith(QStringLiteral("Periode|Oppgi periode (Ã…Ã…Ã…Ã…MM)|")));
    EXPECT_EQ(asked[1], QStringLiteral("alle kasser"));
    EXPECT_EQ(backOffice(kCounted), QStringLiteral("6"));
    for (std::size_t index = 0; index < 2; ++index) EXPECT_EQ(till(index, kCountIsMarked), QStringLiteral("1"));
    EXPECT_EQ(log(window).last(), QStringLiteral("fullføRT VARETELLING"));
    EXPECT_EQ(errors(window), QStringList());
}

TEST_F(TillCommands, StockCountsEndAtEachAvbryt) {
    MainWindow window(path(), store);
    window.show();
    record(window, true);
    click(window, "dxBtnHentVaretelling");
    EXPECT_EQ(asked.size(), 1);
    record(window, false);
    answers = {QStringLiteral("202611")};
    click(window, "dxBtnHentVaretelling");
    EXPECT_EQ(asked.size(), 3);
    EXPECT_EQ(window.TorvikPos1().Log->Lines(), QStringList());
}

TEST_F(TillCommands, StockCountsAreRefusedWhileAnotherCopyBringsThem) {
    MainWindow window(path(), store);
    window.show();
    record(window, true);
    answers = {QStringLiteral("202611")};
    const auto other = test::backOfficeSession(chain);
    const ApplicationLock stage(*other, ApplicationLock::OfStockCounts());
    click(window, "dxBtnHentVaretelling");
    EXPECT_EQ(errors(window), QStringList{QStringLiteral("En annen kjøring henter varetellinger. Prøv igjen senere")});
    EXPECT_EQ(backOffice(kCounted), QStringLiteral("0"));
}

TEST_F(TillCommands, FetchBringsTheCountsWhereThatIsTicked) {
    MainWindow window(path(), store);
    window.show();
    record(window, true);
    window.findChild<QCheckBox*>(QStringLiteral("cbIncludeTelling"))->setChecked(true);
    window.findChild<QLineEdit*>(QStringLiteral("edVt_Periode"))->setText(QStringLiteral("202611"));
    click(window, "actiOppgjorManually");
    EXPECT_EQ(backOffice(kCounted), QStringLiteral("6"));
    EXPECT_EQ(errors(window), QStringList());
}

// An item of the first till's count is lost at the back office.
class UnknownItem : public TillCommands {
protected:
    UnknownItem() {
        chain.runInTill(
            0,
            "INSERT VARE (VA_ID, VA_NAVN, VA_PRIS) VALUES ('U1', 'Ukjent', 1) UPDATE ORDRELINJE SET OL_VA_ID = 'U1' "
            "WHERE OL_OR_ID IN (SELECT OR_ID FROM ORDRE JOIN OPPGJOR ON OR_OP_ID = OP_ID WHERE OP_TYPE = "
            "'VARETELLING')");
    }
    void start(MainWindow& window) {
        window.show();
        allTills(window);
        window.Ask.Text = [real = window.Ask.Text, first = true](
                              const QString& title, const QString& label,
                              const QString& text) mutable -> std::optional<QString> {
            if (std::exchange(first, false)) return QStringLiteral("202611");
            return real(title, label, text);
        };
    }
};

TEST_F(UnknownItem, IsAskedForInADialog) {
    MainWindow window(path(), store);
    start(window);
    const QString item = backOffice("SELECT RTRIM(MIN(Va_Id)) FROM Vare");
    QStringList shown;
    int left = 3;
    std::function<void(QInputDialog&)> answer = [&](QInputDialog& dialog) {
        shown << dialog.windowTitle() + u'|' + dialog.labelText() + u'|' + dialog.textValue();
        dialog.setTextValue(item);
        dialog.accept();
        if (--left > 0) test::whenAsked<QInputDialog>(answer);
    };
    test::whenAsked<QInputDialog>(answer);
    click(window, "dxBtnHentVaretelling");
    const QString question = QStringLiteral("Varenr. U1 finnes ikke|Nytt varenummer|U1");
    EXPECT_EQ(shown, (QStringList{question, question, question}));
    EXPECT_EQ(till(0, kCountIsMarked), QStringLiteral("1"));
}

TEST_F(UnknownItem, ClosingTheWindowEndsTheQuestionAndTheRun) {
    MainWindow window(path(), store);
    start(window);
    test::whenAsked<QInputDialog>([&](QInputDialog&) { window.close(); });
    click(window, "dxBtnHentVaretelling");
    EXPECT_TRUE(log(window).contains(QStringLiteral("Avbrutt av bruker")));
    EXPECT_EQ(backOffice(kCounted), QStringLiteral("0"));
    EXPECT_EQ(till(0, kCountIsMarked), QStringLiteral("0"));
    EXPECT_EQ(backOffice("SELECT SUM(open_tran) FROM master..sysprocesses WHERE dbid = DB_ID()"), QStringLiteral("0"));
}

TEST_F(UnknownItem, NightAsksNobodyAndTheTillIsRefused) {
    MainWindow window(path(), store);
    window.show();
    record(window, true);
    TTorvikPos& engine = window.TorvikPos1();
    engine.ReceiveDataOnly = true;
    engine.IncludeVaretellingOnOppgjor = true;
    engine.VaretellingPeriode = QStringLiteral("202611");
    engine.Seam.sleep = [](int) {};
    engine.Seam.now = [start = QDateTime::currentDateTime()] { return start; };
    engine.StartTime = engine.Seam.now().time();
    engine.DoOnTimer();
    EXPECT_EQ(asked, QStringList());
    EXPECT_EQ(errors(window).filter(QStringLiteral("Import av varetelling")).last(),
              QStringLiteral("Import av varetelling avbrutt da varenummeret U1 ikke finnes i Torvik"));
    EXPECT_EQ(till(0, kCountIsMarked), QStringLiteral("0"));
    EXPECT_EQ(till(1, kCountIsMarked), QStringLiteral("1"));
}

}  // namespace
}  // namespace torvik
