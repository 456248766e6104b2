// Each command that works on tills, by the real window: once through its good path, once through each refusal,
// cancelled at the first till and at the second, and the window closed there. Whatever stopped it, no transaction
// stands anywhere afterwards, the tills that are told as done are those that are, and the same command then goes
// through.
#include <gtest/gtest.h>

#include <QCloseEvent>
#include <QElapsedTimer>
#include <QSet>
#include <QWindow>
#include <algorithm>
#include <atomic>
#include <thread>

#include "engine/db/query.h"
#include "engine/office/application_lock.h"
#include "engine/status/oppgjor_status.h"
#include "inbound/pairs/pair_intent.h"
#include "shell/commands/command.h"
#include "tests/shell/commands/run_command.h"
#include "tests/support/pump.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

constexpr qint64 kMostMsToClose = 2000;
const char* const kTills[] = {"avd. 101 kasse 1", "avd. 102 kasse 1"};

// "Kontroller oppsett" chooses no tills: its tests are those of the check.
TEST(RunCommandRows, AreOfAllCommandsThatWorkOnChosenTills) {
    QSet<QString> commands;
    for (const CommandRow& row : commandRows())
        if (row.kind == CommandKind::Run) commands << QString::fromUtf8(row.name);
    commands.remove(QStringLiteral("actiCheckSetup"));
    QSet<QString> rows;
    for (const RunCommand& row : runCommands()) rows << QString::fromUtf8(row.action);
    EXPECT_EQ(rows, commands);
}

class RunCommands : public WindowOfCommands, public testing::WithParamInterface<RunCommand> {
protected:
    RunCommands() {
        if (!GetParam().before) return;
        for (const int till : {0, 1}) chain.runInTill(till, GetParam().before);
    }
    [[nodiscard]] static const RunCommand& command() { return GetParam(); }

    // What the log says of the tills when the run was cancelled; a till that is not named was not done, and one that
    // was done before the one at which the cancel came is named.
    void expectDoneTillsAreTold(MainWindow& window, std::size_t doneForCertain) const {
        const QString words = QStringLiteral("Ferdige kasser da kjøringen ble avbrutt: ");
        const QStringList told = log(window).filter(words);
        ASSERT_EQ(told.size(), 1) << log(window).join(u'\n').toStdString();
        for (const std::size_t till : {0U, 1U}) {
            const bool named = told[0].contains(QString::fromUtf8(kTills[till]));
            const bool done = command().copies || command().done ? isDone(command(), till) : named;
            EXPECT_TRUE(named || till >= doneForCertain) << told[0].toStdString();
            EXPECT_TRUE(done || !named) << told[0].toStdString();
        }
    }
    [[nodiscard]] bool wasCancelled(MainWindow& window) const {
        return log(window).contains(QStringLiteral("Avbrutt av bruker"));
    }
    // Runs the command, and closes the window when it has been held up for a second.
    void closeOnceHeld(MainWindow& window, const std::atomic<bool>& held) {
        QElapsedTimer timer;
        std::thread operatorOfTheWindow([&] {
            while (!held) std::this_thread::sleep_for(std::chrono::milliseconds(20));
            std::this_thread::sleep_for(std::chrono::milliseconds(1000));
            timer.start();
            QCoreApplication::postEvent(window.windowHandle(), new QCloseEvent);
        });
        click(window, command().action);
        operatorOfTheWindow.join();
        EXPECT_TRUE(pumpUntil([&] { return !window.isVisible(); }));
        EXPECT_LT(timer.elapsed(), kMostMsToClose);
        EXPECT_TRUE(wasCancelled(window)) << log(window).join(u'\n').toStdString();
        expectDoneTillsAreTold(window, 0);
    }
    void expectGoesThrough(MainWindow& window) {
        window.TorvikPos1().ErrorLog->Clear();
        copiedFiles = 0;
        click(window, command().action);
        EXPECT_TRUE(command().failsWithoutWork || errors(window).isEmpty()) << errors(window).join(u'\n').toStdString();
        EXPECT_TRUE(log(window).contains(QString::fromUtf8(command().last))) << log(window).join(u'\n').toStdString();
        expectServedAre({true, true});
    }
    void expectServedAre(const std::vector<bool>& served) const {
        if (!command().done && !command().copies) return;
        if (command().copies) {
            EXPECT_EQ(copiedFiles, std::count(served.begin(), served.end(), true));
            return;
        }
        for (std::size_t till = 0; till < served.size(); ++till)
            EXPECT_EQ(isDone(command(), till), served[till]) << kTills[till];
    }
};

TEST_P(RunCommands, GoThroughOverTheChosenTills) {
    MainWindow window(path(), store);
    open(window);
    expectServedAre({false, false});
    click(window, command().action);
    EXPECT_EQ(errors(window), QStringList());
    EXPECT_TRUE(log(window).contains(QString::fromUtf8(command().last))) << log(window).join(u'\n').toStdString();
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());
    expectServedAre({true, true});
    expectNoOpenTransactions();
}

TEST_P(RunCommands, EndWithoutTillsOrDuringAnotherAndTouchNothing) {
    MainWindow window(path(), store);
    open(window);
    const auto select = window.Ask.SelectTills;
    window.Ask.SelectTills = [](TKasseCollection&, const TSyncVersions&) { return false; };
    click(window, command().action);
    EXPECT_EQ(log(window), QStringList()) << "the operator thinks better of it";

    window.Ask.SelectTills = [](TKasseCollection&, const TSyncVersions&) { return true; };
    click(window, command().action);
    EXPECT_EQ(log(window), QStringList{QStringLiteral("Det er ikke valgt noen kasser")});

    window.Ask.SelectTills = select;
    window.TorvikPos1().ErrorLog->Clear();
    const RunCommand& other = runCommand(
        command().action == std::string_view("actiHealthCheck") ? "actiViewTorvikPOSini" : "actiHealthCheck");
    at(window, other.middle, [&] { click(window, command().action); });
    click(window, other.action);
    EXPECT_EQ(errors(window), QStringList{QStringLiteral("Det er allerede en kjøring i gang")});
    EXPECT_EQ(log(window).last(), QString::fromUtf8(other.last));
    expectServedAre({false, false});
}

TEST_P(RunCommands, TellOfATillThatIsAwayAndServeTheOther) {
    chain.till(1).stopListening();
    MainWindow window(path(), store);
    open(window);
    click(window, command().action);
    const QString told = errors(window).join(u'\n');
    if (command().unreachable == kStatusAlone) {
        EXPECT_EQ(told, QString());
        EXPECT_EQ(window.TorvikPos1().ffraOppgjorStatus->Failures(1).size(), 1U);
    } else if (command().unreachable == kDriversWords) {
        EXPECT_EQ(errors(window).size(), 1) << told.toStdString();
    } else {
        EXPECT_TRUE(told.contains(QString::fromUtf8(command().unreachable))) << told.toStdString();
    }
    chain.till(1).startListening();
    expectServedAre({true, false});
}

// What the first has marked as fetched may not have reached the back office; another copy is at the second.
TEST_P(RunCommands, RefuseATillThatIsHalfFetchedAndOneThatAnotherCopyServes) {
    const auto backOffice = test::backOfficeSession(chain);
    PairIntents(*backOffice, 1001, QStringLiteral("1"))
        .write({QUuid::createUuid(), QStringLiteral("oppgjør 1"), QUuid::createUuid(), QStringLiteral("HK-01"), {}});
    std::optional<ApplicationLock> taken(std::in_place, *backOffice,
                                         ApplicationLock::OfTill(1002, QStringLiteral("1")));
    MainWindow window(path(), store);
    open(window);
    click(window, command().action);
    const QString told = errors(window).join(u'\n');
    EXPECT_TRUE(told.contains(QStringLiteral("avd. 101, kasse 1")) && told.contains(QStringLiteral("HK-01")))
        << told.toStdString();
    EXPECT_EQ(
        log(window)
            .filter(QStringLiteral("En annen kjøring betjener kassen (avd. 102, kasse 1). Prøver igjen til slutt"))
            .size(),
        1);
    expectServedAre({false, false});
    expectNoOpenTransactions();

    taken.reset();
    click(window, command().action);
    expectServedAre({false, true});
}

TEST_P(RunCommands, CancelledAtTheFirstTillLeaveNothingOpenAndGoThroughTheNextTime) {
    MainWindow window(path(), store);
    open(window);
    at(window, command().middle, [&] { click(window, "actiCancel"); });
    click(window, command().action);
    EXPECT_TRUE(wasCancelled(window)) << log(window).join(u'\n').toStdString();
    EXPECT_TRUE(window.isEnabled());
    EXPECT_FALSE(window.findChild<QAction*>(QStringLiteral("actiCancel"))->isEnabled());
    expectDoneTillsAreTold(window, 0);
    if (command().done) {
        EXPECT_FALSE(isDone(command(), 1));
    }
    expectNoOpenTransactions();
    expectGoesThrough(window);
}

// A command that takes no cancel within a till is through with the last one then.
TEST_P(RunCommands, CancelledAtTheSecondTillTellTheFirstAsDone) {
    MainWindow window(path(), store);
    open(window);
    at(
        window, command().middle, [&] { click(window, "actiCancel"); }, 2);
    click(window, command().action);
    if (wasCancelled(window)) {
        expectDoneTillsAreTold(window, 1);
        if (command().copies) expectServedAre({true, false});
    } else {
        expectServedAre({true, true});
    }
    expectNoOpenTransactions();
    expectGoesThrough(window);
}

TEST_P(RunCommands, WindowClosedInTheMiddleIsGoneInTwoSeconds) {
    for (const int tillNumber : {1, 2}) {
        MainWindow window(path(), store);
        open(window);
        QElapsedTimer timer;
        at(
            window, command().middle,
            [&] {
                timer.start();
                window.close();
            },
            tillNumber);
        copiedFiles = 0;
        click(window, command().action);
        ASSERT_TRUE(timer.isValid());
        EXPECT_TRUE(pumpUntil([&] { return !window.isVisible(); }));
        EXPECT_LT(timer.elapsed(), kMostMsToClose);
        EXPECT_TRUE(wasCancelled(window)) << log(window).join(u'\n').toStdString();
        expectDoneTillsAreTold(window, 0);
        EXPECT_TRUE(QFile::exists(folder.filePath(QStringLiteral("TorvikPos.log"))));
        expectNoOpenTransactions();
    }
}

class RunCommandsThatWrite : public RunCommands {};

// Somebody else holds what the command must write, for as long as it likes.
TEST_P(RunCommandsThatWrite, WindowClosedWhileAServerLetsItWaitIsGoneInTwoSeconds) {
    MainWindow window(path(), store);
    open(window);
    const auto holder = command().locksOffice ? test::backOfficeSession(chain) : test::tillSession(chain, 0);
    std::atomic<bool> held = false;
    const auto hold = [&] {
        holder->StartTransaction();
        db::Query lock(holder.get());
        lock.SQL = QStringList{command().locksOffice ? QStringLiteral("UPDATE dts_loggtype SET dlt_id = dlt_id")
                                                     : QStringLiteral("UPDATE INNSTILLINGER SET IN_NAVN = IN_NAVN")};
        lock.ExecSQL();
        held = true;
    };
    if (command().locksOffice) {
        at(window, command().middle, hold);
    } else {
        hold();
    }
    closeOnceHeld(window, held);
    holder->Rollback();
    expectNoOpenTransactions();
    expectServedAre({false, false});
}

// The login's own time-out is 15 seconds.
TEST_P(RunCommands, WindowClosedWhileALoginHangsIsGoneInTwoSeconds) {
    MainWindow window(path(), store);
    open(window);
    chain.till(0).faults().hangLogins(1);
    closeOnceHeld(window, std::atomic<bool>(true));
    expectServedAre({false, false});
}

std::string nameOf(const testing::TestParamInfo<RunCommand>& test) {
    return test.param.action;
}

// What writes something at a till.
std::vector<RunCommand> writing() {
    std::vector<RunCommand> commands;
    for (const RunCommand& command : runCommands())
        if (command.done) commands.push_back(command);
    return commands;
}

INSTANTIATE_TEST_SUITE_P(Each, RunCommands, testing::ValuesIn(runCommands().begin(), runCommands().end()), nameOf);
INSTANTIATE_TEST_SUITE_P(Each, RunCommandsThatWrite, testing::ValuesIn(writing()), nameOf);

}  // namespace
}  // namespace torvik::test
