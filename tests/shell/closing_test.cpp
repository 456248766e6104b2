// How the window ends: at rest, with workers, and with a run under way, which is cancelled and waited for.
#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <functional>
#include <thread>

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/roster/avdeling.h"
#include "engine/status/oppgjor_status.h"
#include "shell/main_threads.h"
#include "tests/engine/workers/scripted_worker.h"
#include "tests/shell/modal.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/chain_session.h"
#include "tests/support/pump.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

class Closing : public test::WindowOverAChain {
protected:
    // Presses the fetch command on all tills; the window is closed when the log's last line ends so.
    void fetchAndCloseAt(MainWindow& window, const QString& line) {
        TTorvikPos& engine = window.TorvikPos1();
        const auto pump = engine.Seam.pumpMessages;
        engine.Seam.pumpMessages = [&, pump, line] {
            pump();
            if (closed || engine.Log->Lines().isEmpty() || !engine.Log->Lines().last().endsWith(line)) return;
            closed = true;
            window.close();
            EXPECT_TRUE(window.isVisible()) << "it waits for the run";
        };
        window.show();
        allTills(window);
        click(window, "actiOppgjorManually");
        ASSERT_TRUE(closed) << "the run never came to " << line.toStdString();
        EXPECT_TRUE(test::pumpUntil([&] { return !window.isVisible(); }));
    }
    [[nodiscard]] static QStringList messages(MainWindow& window) {
        QStringList texts;
        for (const QString& line : window.TorvikPos1().Log->Lines())
            texts.append(line.section(QStringLiteral("  : "), 1));
        return texts;
    }
    // Transactions that any connection to the session's server holds open.
    [[nodiscard]] static qint64 openTransactions(db::Session& session) {
        db::Query query(&session);
        query.SQL = QStringList{QStringLiteral("SELECT SUM(open_tran) FROM master..sysprocesses WHERE open_tran > 0")};
        query.Open();
        return query.Fields(0).AsInteger();
    }
    [[nodiscard]] QString savedLog() const {
        QFile log(folder.filePath(QStringLiteral("TorvikPos.log")));
        return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
    }

    bool closed = false;
};

TEST_F(Closing, SavesTheTextOfThePanes) {
    MainWindow window(path(), store);
    window.show();
    window.TorvikPos1().AddLog(QStringLiteral("en linje"));
    window.close();
    EXPECT_TRUE(savedLog().trimmed().endsWith(QStringLiteral("  : en linje")));
}

TEST_F(Closing, RunThatWaitsForTheNextDepartmentEndsAtOnce) {
    store.write("Timeout", 3600);
    QElapsedTimer timer;
    timer.start();
    MainWindow window(path(), store);
    fetchAndCloseAt(window, QStringLiteral("Venter i 3600 sekunder på neste forsøk"));

    EXPECT_LT(timer.elapsed(), 30000);
    EXPECT_TRUE(window.TorvikPos1().Cancelled);
    EXPECT_EQ(messages(window).mid(messages(window).size() - 3),
              (QStringList{QStringLiteral("Avbrutt av bruker"),
                           QStringLiteral("Ferdige kasser da kjøringen ble avbrutt: avd. 101 kasse 1"),
                           QStringLiteral("En feil oppstod i rutinen ExecuteOppgjor: ") + ErrorText(EAbort())}));
    EXPECT_TRUE(savedLog().contains(QStringLiteral("Avbrutt av bruker"))) << "saved after the run's last words";
    EXPECT_FALSE(window.TorvikPos1().SourceConnection->Connected());
}

TEST_F(Closing, RunInTheMiddleOfATillLeavesNoTransactionBehind) {
    MainWindow window(path(), store);
    fetchAndCloseAt(window, QStringLiteral("Transaksjon startet for måldatabase"));

    EXPECT_TRUE(messages(window).contains(QStringLiteral("Avbrutt av bruker")));
    EXPECT_EQ(openTransactions(*test::backOfficeSession(chain)), 0);
    EXPECT_EQ(openTransactions(*test::tillSession(chain, 0)), 0);
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());
}

// Somebody holds what the fetch must write; the cancel comes while the fetch waits for it.
TEST_F(Closing, CancelEndsAStatementThatWaitsForALockAndTheNextFetchTakesAll) {
    const auto holder = test::backOfficeSession(chain);
    holder->StartTransaction();
    db::Query lock(holder.get());
    lock.SQL = QStringList{QStringLiteral("UPDATE dts_loggtype SET dlt_id = dlt_id")};
    lock.ExecSQL();

    MainWindow window(path(), store);
    window.show();
    allTills(window);
    TTorvikPos& engine = window.TorvikPos1();
    QElapsedTimer timer;
    timer.start();
    std::thread operatorOfTheWindow([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(700));
        QMetaObject::invokeMethod(
            &window, [&engine] { engine.SetCancelRequest(true); }, Qt::QueuedConnection);
    });
    click(window, "actiOppgjorManually");
    operatorOfTheWindow.join();

    EXPECT_GE(timer.elapsed(), 700) << "the fetch did not wait for the lock";
    EXPECT_LT(timer.elapsed(), 15000);
    EXPECT_TRUE(engine.Cancelled);
    EXPECT_EQ(messages(window).count(QStringLiteral("Avbrutt av bruker")), 1);
    EXPECT_EQ(openTransactions(*test::tillSession(chain, 0)), 0);

    holder->Rollback();
    click(window, "actiOppgjorManually");
    for (int till = 0; till < 2; ++till)
        EXPECT_EQ(engine.ffraOppgjorStatus->memOppgjorStatus.Row(till).StatusIcon, 1) << "till " << till;
}

// The lock is taken in the middle of a transfer, so that the word of its failure in the back office's log waits too.
class FetchHeldUp : public Closing {
protected:
    ~FetchHeldUp() override { holder->Rollback(); }

    // Fetches, and asks for the end in steps of half a second from when the fetch is held up.
    qint64 fetchUntil(MainWindow& window, const QList<std::function<void()>>& asks) {
        TTorvikPos& engine = window.TorvikPos1();
        const auto pump = engine.Seam.pumpMessages;
        engine.Seam.pumpMessages = [&, pump] {
            pump();
            if (held || engine.Log->Lines().isEmpty() ||
                !engine.Log->Lines().last().endsWith(QStringLiteral("Transaksjon startet for måldatabase")))
                return;
            held = true;
            holder->StartTransaction();
            db::Query lock(holder.get());
            lock.SQL = QStringList{QStringLiteral("UPDATE dts_loggtype SET dlt_id = dlt_id")};
            lock.ExecSQL();
            timer.start();
            operatorOfTheWindow = std::thread([&window, asks] {
                for (const auto& ask : asks) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(500));
                    QMetaObject::invokeMethod(&window, ask, Qt::QueuedConnection);
                }
            });
        };
        window.show();
        allTills(window);
        click(window, "actiOppgjorManually");
        EXPECT_TRUE(held);
        const qint64 took = timer.elapsed();
        if (held) operatorOfTheWindow.join();
        engine.Seam.pumpMessages = pump;
        return took;
    }

    std::unique_ptr<db::Session> holder = test::backOfficeSession(chain);
    bool held = false;
    QElapsedTimer timer;
    std::thread operatorOfTheWindow;
};

TEST_F(FetchHeldUp, SecondCancelEndsWhatFollowsTheFirst) {
    MainWindow window(path(), store);
    TTorvikPos& engine = window.TorvikPos1();
    const auto cancel = [&engine] { engine.SetCancelRequest(true); };
    const qint64 took = fetchUntil(window, {cancel, cancel, cancel});
    EXPECT_LT(took, 15000);
    EXPECT_EQ(messages(window).count(QStringLiteral("Avbrutt av bruker")), 1);
    EXPECT_EQ(openTransactions(*test::tillSession(chain, 0)), 0);
}

TEST_F(FetchHeldUp, EndOfTheProgramWaitsForNoStatement) {
    MainWindow window(path(), store);
    const qint64 took = fetchUntil(window, {[&window] { window.terminate(); }});
    EXPECT_LT(took, 15000);
    EXPECT_EQ(openTransactions(*test::tillSession(chain, 0)), 0);
    EXPECT_TRUE(test::pumpUntil([&] { return !window.isVisible(); }));
}

// The login's own time-out is 15 seconds.
class LoginHeldUp : public Closing {
protected:
    // Fetches from a till that takes connections and never answers, and asks after half a second.
    qint64 fetchUntil(MainWindow& window, const std::function<void()>& ask) {
        chain.till(0).faults().hangLogins(1);
        window.show();
        allTills(window);
        QElapsedTimer timer;
        timer.start();
        std::thread operatorOfTheWindow([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(500));
            QMetaObject::invokeMethod(&window, ask, Qt::QueuedConnection);
        });
        click(window, "actiOppgjorManually");
        const qint64 took = timer.elapsed();
        operatorOfTheWindow.join();
        EXPECT_GE(took, 500) << "the login did not hang";
        return took;
    }
};

TEST_F(LoginHeldUp, CancelIsTakenAtOnceAndTheNextFetchServesTheTill) {
    MainWindow window(path(), store);
    TTorvikPos& engine = window.TorvikPos1();
    EXPECT_LT(fetchUntil(window, [&engine] { engine.SetCancelRequest(true); }), 5000);
    EXPECT_TRUE(engine.Cancelled);
    EXPECT_EQ(messages(window).count(QStringLiteral("Avbrutt av bruker")), 1);

    click(window, "actiOppgjorManually");
    for (int till = 0; till < 2; ++till)
        EXPECT_EQ(engine.ffraOppgjorStatus->memOppgjorStatus.Row(till).StatusIcon, 1) << "till " << till;
}

TEST_F(LoginHeldUp, CloseOfTheWindowIsTakenAtOnce) {
    MainWindow window(path(), store);
    EXPECT_LT(fetchUntil(window, [&window] { window.close(); }), 5000);
    EXPECT_TRUE(test::pumpUntil([&] { return !window.isVisible(); }));
}

TEST_F(Closing, SecondCloseWhileTheRunEndsIsTheSame) {
    store.write("Timeout", 3600);
    MainWindow window(path(), store);
    TTorvikPos& engine = window.TorvikPos1();
    engine.OnCancelRequestChanged = [&, told = engine.OnCancelRequestChanged](bool value) {
        if (told) told(value);
        if (value) window.close();
    };
    fetchAndCloseAt(window, QStringLiteral("Venter i 3600 sekunder på neste forsøk"));
    EXPECT_EQ(messages(window).count(QStringLiteral("Avbrutt av bruker")), 1);
}

// Fetching is cancelled; sending then begins as a run of its own, without the cancel of the one before.
TEST_F(Closing, NightEndsWithAllItsRuns) {
    QElapsedTimer timer;
    timer.start();
    MainWindow window(path(), store);
    TTorvikPos& engine = window.TorvikPos1();
    engine.Seam.sleep = [](int) {};
    bool sending = false;
    engine.OnExecuteDTSToPos = [&](RunParts& parts) {
        sending = true;
        parts.Control.Begin();
        parts.Control.WaitSeconds(3600);
    };
    const auto pump = engine.Seam.pumpMessages;
    engine.Seam.pumpMessages = [&] {
        pump();
        if (!std::exchange(closed, true)) window.close();
    };
    window.show();
    engine.Seam.now = [now = engine.Seam.now()] { return now; };  // no minute ends in between
    engine.StartTime = engine.Seam.now().time();
    engine.DoOnTimer();

    ASSERT_TRUE(sending);
    EXPECT_TRUE(test::pumpUntil([&] { return !window.isVisible(); }));
    EXPECT_LT(timer.elapsed(), 30000);
    EXPECT_EQ(messages(window).last(), QStringLiteral("OnAutoStartDone"));
}

// Disarming by the box runs the roster's query again: what the till under way still tells would stand under the first.
TEST_F(Closing, NightEndsAtTheTillWhereItStands) {
    store.write("cbAutoStart", true);
    store.write("KunHent", true);
    MainWindow window(path(), store);
    TTorvikPos& engine = window.TorvikPos1();
    engine.Seam.sleep = [](int) {};
    QStringList stands;
    const TillOperation fetch = engine.OnFetchTill;
    engine.OnFetchTill = [&](TillVisit& visit) {
        if (visit.Till.Avdelingsnummer == u"102") {
            window.close();
            stands << engine.Avdeling->Avdelingsnummer();
            EXPECT_FALSE(engine.AutoCommunicate());
        }
        fetch(visit);
    };
    window.show();
    engine.Seam.now = [now = engine.Seam.now()] { return now; };  // no minute ends in between
    engine.StartTime = engine.Seam.now().time();
    engine.DoOnTimer();
    EXPECT_EQ(stands, QStringList{QStringLiteral("102")});
    EXPECT_TRUE(test::pumpUntil([&] { return !window.isVisible(); }));
}

TEST_F(Closing, QuestionThatIsOpenIsAnsweredWithNo) {
    MainWindow window(path(), store);
    window.show();
    test::whenAsked<QDialog>([&window](QDialog&) { window.close(); });
    click(window, "actiOppgjorManually");
    EXPECT_TRUE(test::pumpUntil([&] { return !window.isVisible(); }));
    EXPECT_EQ(messages(window), QStringList());
}

TEST_F(Closing, CommandDuringARunIsRefusedAndTheRunGoesOn) {
    MainWindow window(path(), store);
    TTorvikPos& engine = window.TorvikPos1();
    bool clicked = false;
    const auto pump = engine.Seam.pumpMessages;
    engine.Seam.pumpMessages = [&] {
        pump();
        if (std::exchange(clicked, true)) return;
        click(window, "actiOppgjorManually");
    };
    allTills(window);
    click(window, "actiOppgjorManually");
    EXPECT_EQ(messages(window).filter(QStringLiteral("Det er allerede en kjøring i gang")).size(), 1);
    EXPECT_EQ(messages(window).count(QStringLiteral("STARTER oppgjør")), 1);
    EXPECT_EQ(messages(window).last(), QStringLiteral("Fullført oppgjør"));
}

TEST_F(Closing, WorkerThatRunsIsWarnedOfAndTheWindowCloses) {
    QStringList shown;
    std::atomic<bool> ended = false;
    {
        MainWindow window(path(), store);
        window.show();
        window.Threads().ShowMessage = [&](const QString& text) { shown.append(text); };
        auto* worker = new test::ScriptedWorker(true, window.Threads().MainThreadList, [&](auto& self) {
            test::untilTerminated(self);
            ended = true;
        });
        worker->ResumeToItsJob();
        window.close();
        EXPECT_FALSE(window.isVisible());
        EXPECT_EQ(shown, QStringList{QStringLiteral("Du kan ikke avslutte programmet, fordi det er fortsatt 1 "
                                                    "prosesser (trÃ¥der) aktive")});
    }
    EXPECT_TRUE(ended) << "the window ends its workers as it goes";
}

}  // namespace
}  // namespace torvik
