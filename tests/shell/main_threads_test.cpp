// The window's list of workers: what happens at a worker's end, and at the window's.
#include "shell/main_threads.h"

#include <gtest/gtest.h>

#include <QWidget>

#include "engine/torvik_pos.h"
#include "tests/engine/workers/scripted_worker.h"
#include "tests/support/pump.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

using test::ScriptedWorker;

class Threads : public testing::Test {
protected:
    Threads() {
        engine.Log = &log;
        threads.ShowMessage = [this](const QString& text) { messages.append(text); };
    }
    ScriptedWorker* worker(bool suspended, ScriptedWorker::Job job) {
        auto* made = new ScriptedWorker(suspended, threads.MainThreadList, std::move(job));
        made->OnTerminate = engine.OnThreadDone;
        return made;
    }
    void runToItsEnd(ScriptedWorker* made) {
        const QPointer<ScriptedWorker> running(made);
        made->Resume();
        ASSERT_TRUE(test::pumpUntil([&] { return running.isNull(); }));
    }

    QWidget window;
    TTorvikPos engine;
    StringListPane log;
    QStringList messages;
    MainThreads threads{engine, window};
};

TEST_F(Threads, ListIsTheEnginesToo) {
    EXPECT_EQ(engine.ThreadList, &threads.MainThreadList);
}

TEST_F(Threads, WorkerRemovesItselfAtItsEnd) {
    runToItsEnd(worker(true, [](auto&) {}));
    EXPECT_EQ(threads.MainThreadList.Count(), 0);
    EXPECT_EQ(messages, QStringList());
}

TEST_F(Threads, EachErrorOfAWorkerIsShownByItself) {
    runToItsEnd(worker(true, [](ScriptedWorker& self) {
        self.ErrorList = QStringList{QStringLiteral("første feil"), QStringLiteral("andre feil")};
    }));
    EXPECT_EQ(messages, (QStringList{QStringLiteral("første feil"), QStringLiteral("andre feil")}));
}

TEST_F(Threads, CallbackHasTheWindowAsItsSenderAndComesAfterTheErrors) {
    auto* made = worker(true, [](ScriptedWorker& self) { self.ErrorList.append(QStringLiteral("feil")); });
    QStringList order;
    threads.ShowMessage = [&](const QString& text) { order.append(text); };
    threads.MainThreadList.FindItemID(made->ID())->CallBackProc = [&](QObject* sender) {
        EXPECT_EQ(sender, &window);
        EXPECT_EQ(threads.MainThreadList.Count(), 1) << "the item is freed last";
        order.append(QStringLiteral("ferdig"));
    };
    runToItsEnd(made);
    EXPECT_EQ(order, (QStringList{QStringLiteral("feil"), QStringLiteral("ferdig")}));
}

TEST_F(Threads, WorkerWhoseItemIsGoneEndsWithoutACallback) {
    int callbacks = 0;
    auto* made = worker(true, [](ScriptedWorker& self) { self.ErrorList.append(QStringLiteral("feil")); });
    TThreadItem& item = *threads.MainThreadList.FindItemID(made->ID());
    item.CallBackProc = [&](QObject*) { ++callbacks; };
    item.AThread = nullptr;
    threads.MainThreadList.Free(item);
    engine.Logbuffer.append(QStringLiteral("holdt tilbake"));
    runToItsEnd(made);
    EXPECT_EQ(messages, QStringList{QStringLiteral("feil")});
    EXPECT_EQ(callbacks, 0);
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(Threads, LinesHeldBackComeToThePaneAtEveryWorkersEnd) {
    engine.AllowMultiThreading = true;
    engine.AddLog(QStringLiteral("holdt tilbake"));
    ASSERT_EQ(log.Lines(), QStringList());
    runToItsEnd(worker(true, [](auto&) {}));
    EXPECT_EQ(log.Lines(), engine.Logbuffer);
    runToItsEnd(worker(true, [](auto&) {}));
    EXPECT_EQ(log.Lines(), engine.Logbuffer + engine.Logbuffer) << "the buffer is not emptied";
}

TEST_F(Threads, EndOfSomethingElseIsNoMatter) {
    worker(true, [](auto&) {});
    threads.SyncThreadDone(&window);
    threads.SyncThreadDone(nullptr);
    EXPECT_EQ(threads.MainThreadList.Count(), 1);
}

TEST_F(Threads, ClearThreadsEndsTheRunningAndTheSuspended) {
    int callbacks = 0;
    std::atomic<int> ended = 0;
    for (int i = 0; i < 4; ++i) {
        auto* made = worker(true, [&](ScriptedWorker& self) {
            test::untilTerminated(self);
            self.Synchronize([&] { ++ended; });
        });
        threads.MainThreadList.FindItemID(made->ID())->CallBackProc = [&](QObject*) { ++callbacks; };
        if (i < 3) made->ResumeToItsJob();
    }
    threads.ClearThreads();
    EXPECT_EQ(threads.MainThreadList.Count(), 0);
    EXPECT_EQ(callbacks, 4) << "each end is taken note of";
    EXPECT_EQ(ended, 3) << "the suspended one does no work any more";
}

TEST_F(Threads, ClearThreadsFreesAnItemWithoutAWorker) {
    threads.MainThreadList.Add();
    threads.ClearThreads();
    EXPECT_EQ(threads.MainThreadList.Count(), 0);
}

TEST_F(Threads, ClosingWarnsOfTheWorkersByNumber) {
    EXPECT_EQ(threads.ClosingWarning(), QString());
    worker(true, [](auto&) {});
    worker(true, [](auto&) {});
    EXPECT_EQ(threads.ClosingWarning(),
              QStringLiteral("Du kan ikke avslutte programmet, fordi det er fortsatt 2 prosesser (trÃ¥der) aktive"));
}

}  // namespace
}  // namespace torvik
