// The end that the operating system asks for: within two seconds, whatever the window is at. What a signal and a
// log-off both call is MainWindow::terminate; what a signal does before, and to a program that does not serve it, is
// seen in processes of its own.
#include "shell/start/termination.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <QAbstractItemView>
#include <QComboBox>
#include <QElapsedTimer>
#include <QMenuBar>
#include <QSystemTrayIcon>
#include <QTreeView>
#include <csignal>

#include "engine/status/oppgjor_status.h"
#include "shell/status/status_view.h"
#include "tests/shell/modal.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/pump.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

constexpr int kTwoSeconds = 2000;

constexpr int kHeldUpExit = 7;  // of a process that was not ended

// Ten seconds in which nothing is served.
[[noreturn]] void holdUp(const std::function<void()>& meanwhile = [] {}) {
    for (int i = 0; i < 100; ++i) {
        meanwhile();
        ::usleep(100'000);
    }
    ::_exit(kHeldUpExit);
}

[[noreturn]] void neverServe() {
    onTerminationSignal([] {});
    std::raise(SIGTERM);
    holdUp();
}

TEST(TerminationDeathTest, SignalThatIsNeverServedEndsTheProcessWithinTwoSeconds) {
    QElapsedTimer clock;
    clock.start();
    EXPECT_EXIT(neverServe(), testing::ExitedWithCode(1), "TorvikPosSync did not end in time and was ended");
    EXPECT_GE(clock.elapsed(), kTimeToEnd.count());
    EXPECT_LT(clock.elapsed(), kTwoSeconds + 500) << "the time that a process takes to be made included";
}

[[noreturn]] void logOffThatIsNeverServed() {
    onTerminationSignal([] {});
    beginTermination();
    holdUp();
}

TEST(TerminationDeathTest, LogOffHasTheSameTime) {
    EXPECT_EXIT(logOffThatIsNeverServed(), testing::ExitedWithCode(1), "did not end in time");
}

[[noreturn]] void signalAgainAndAgain() {
    onTerminationSignal([] {});
    holdUp([] { std::raise(SIGTERM); });
}

TEST(TerminationDeathTest, SecondSignalGivesNoNewTime) {
    EXPECT_EXIT(signalAgainAndAgain(), testing::ExitedWithCode(1), "did not end in time");
}

struct State {
    const char* name;
    void (*enter)(MainWindow& window);  // comes back when what stands open has been closed
};

void PrintTo(const State& state, std::ostream* out) {
    *out << state.name;
}

void trigger(MainWindow& window, const char* action) {
    test::child<QAction>(window, action).trigger();
}

// Ends the window from within a run, at this line of its log.
void endAt(MainWindow& window, const QString& line, std::function<void()> end) {
    TTorvikPos& engine = window.TorvikPos1();
    engine.Seam.pumpMessages = [&engine, line, end = std::move(end), pump = engine.Seam.pumpMessages,
                                done = false]() mutable {
        pump();
        if (done || engine.Log->Lines().isEmpty() || !engine.Log->Lines().last().endsWith(line)) return;
        done = true;
        end();
    };
}

class EndOf : public test::WindowOverAChain {
protected:
    // Ends the window as soon as a dialog or a menu stands open.
    void endWhenOpen(MainWindow& window) {
        auto* look = new QTimer(&window);
        QObject::connect(look, &QTimer::timeout, &window, [this, look, &window] {
            if (!QApplication::activeModalWidget() && !QApplication::activePopupWidget()) return;
            look->stop();
            end(window);
        });
        look->start(5);
    }
    void end(MainWindow& window) {
        EXPECT_FALSE(clock.isValid()) << "ended twice";
        clock.start();
        window.terminate();
    }
    void expectEnded(MainWindow& window) {
        EXPECT_TRUE(clock.isValid()) << "the state was never reached";
        const auto* icon = window.findChild<QSystemTrayIcon*>();  // goes with the close that was let through
        EXPECT_TRUE(test::pumpUntil([&] { return !window.isVisible() && !icon->isVisible(); }));
        EXPECT_LT(clock.elapsed(), kTwoSeconds);
        EXPECT_TRUE(QFile::exists(folder.filePath(QStringLiteral("TorvikPos.log"))));
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
        EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());
    }

    QElapsedTimer clock;
};

class EndFrom : public EndOf, public testing::WithParamInterface<State> {};

TEST_P(EndFrom, EndsWithinTwoSeconds) {
    store.write("Timeout", 3600);
    MainWindow window(path(), store);
    window.show();
    endWhenOpen(window);
    GetParam().enter(window);
    expectEnded(window);
}

constexpr State kStates[] = {
    {"TillSelection", [](MainWindow& window) { trigger(window, "actiOppgjorManually"); }},
    {"DatePrompt", [](MainWindow& window) { trigger(window, "btnNils"); }},
    {"TextPrompt",
     [](MainWindow& window) { (void)window.Ask.Text(QStringLiteral("Periode"), QStringLiteral("Oppgi periode"), {}); }},
    {"ResetPrompt", [](MainWindow& window) { (void)window.Ask.ResetScope(); }},
    {"Preferences", [](MainWindow& window) { trigger(window, "actiPreferences"); }},
    {"About", [](MainWindow& window) { trigger(window, "actiAbout"); }},
    {"SetupCheck", [](MainWindow& window) { trigger(window, "actiCheckSetup"); }},
    {"Message", [](MainWindow& window) { window.Ask.ShowMessage(QStringLiteral("Hei")); }},
    {"QuestionOfARun", [](MainWindow& window) { (void)window.TorvikPos1().OnAskOperator(QStringLiteral("Vil du?")); }},
    {"PairDecision", [](MainWindow& window) { (void)window.Ask.DecidePair(PairQuestion{}); }},
    {"ExportDialog", [](MainWindow& window) { test::child<StatusView>(window, "statusView").exportToSpreadsheet(); }},
    {"ContextMenu",
     [](MainWindow& window) {
         Q_EMIT test::child<QTreeView>(window, "statusTree").customContextMenuRequested(QPoint(5, 5));
     }},
    {"Menu",
     [](MainWindow& window) {
         QMenu& menu = *window.menuBar()->actions()[0]->menu();
         menu.exec(window.mapToGlobal(QPoint(0, 0)));
     }},
    {"ListOfAComboBox",
     [](MainWindow& window) {
         auto& list = test::child<QComboBox>(window, "cbVarer");
         list.showPopup();
         static_cast<void>(test::pumpUntil([&] { return !list.view()->isVisible(); }));
     }},
    {"DialogOverADialog",
     [](MainWindow& window) {
         QTimer::singleShot(0, &window, [&window] { window.Ask.ShowMessage(QStringLiteral("Over")); });
         trigger(window, "actiPreferences");
     }},
};

INSTANTIATE_TEST_SUITE_P(States, EndFrom, testing::ValuesIn(kStates),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(EndOf, WindowAtRest) {
    MainWindow window(path(), store);
    window.show();
    end(window);
    expectEnded(window);
}

TEST_F(EndOf, WindowThatHasOnlyItsTrayIcon) {
    MainWindow window(path(), store);
    end(window);
    expectEnded(window);
}

TEST_F(EndOf, ArmedNight) {
    store.write("cbAutoStart", true);
    MainWindow window(path(), store);
    window.show();
    ASSERT_TRUE(window.TorvikPos1().AutoCommunicate());
    end(window);
    expectEnded(window);
}

TEST_F(EndOf, RunAtATill) {
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    endAt(window, QStringLiteral("Transaksjon startet for måldatabase"), [&] { end(window); });
    click(window, "actiOppgjorManually");
    expectEnded(window);
}

TEST_F(EndOf, RunThatWaits) {
    store.write("Timeout", 3600);
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    endAt(window, QStringLiteral("Venter i 3600 sekunder på neste forsøk"), [&] { end(window); });
    click(window, "actiOppgjorManually");
    expectEnded(window);
}

TEST_F(EndOf, NightThatWaits) {
    store.write("Timeout", 3600);
    MainWindow window(path(), store);
    window.show();
    TTorvikPos& engine = window.TorvikPos1();
    engine.Seam.now = [now = engine.Seam.now()] { return now; };  // no minute ends in between
    engine.StartTime = engine.Seam.now().time();
    engine.Seam.sleep = [](int) {};  // the pauses between its steps, which a signal cuts short
    endAt(window, QStringLiteral("Venter i 3600 sekunder på neste forsøk"), [&] { end(window); });
    engine.DoOnTimer();
    expectEnded(window);
}

TEST_F(EndOf, PreferencesOverARun) {
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    endAt(window, QStringLiteral("Transaksjon startet for måldatabase"), [&] {
        endWhenOpen(window);
        trigger(window, "actiPreferences");
    });
    click(window, "actiOppgjorManually");
    expectEnded(window);
}

TEST_F(EndOf, StoryOfATill) {
    chain.till(1).stopListening();
    MainWindow window(path(), store);
    window.show();
    window.TorvikPos1().RetryCount = 1;
    allTills(window);
    click(window, "actiOppgjorManually");
    auto& tree = test::child<QTreeView>(window, "statusTree");
    tree.setFocus();
    tree.setCurrentIndex(tree.model()->index(0, 0));
    QTest::keyClick(&tree, Qt::Key_Return);
    end(window);
    expectEnded(window);
}

}  // namespace
}  // namespace torvik
