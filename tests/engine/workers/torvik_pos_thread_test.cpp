#include "engine/workers/torvik_pos_thread.h"

#include <gtest/gtest.h>

#include <algorithm>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#endif

#include "engine/base/abort.h"
#include "engine/workers/thread_collection.h"
#include "tests/engine/workers/scripted_worker.h"
#include "tests/support/pump.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

using test::pumpUntil;
using test::ScriptedWorker;

class Worker : public testing::Test {
protected:
    // A worker whose end is noted, with its errors.
    ScriptedWorker* worker(bool suspended, ScriptedWorker::Job job) {
        auto* made = new ScriptedWorker(suspended, list, std::move(job));
        made->OnTerminate = [this](QObject* sender) {
            EXPECT_EQ(std::this_thread::get_id(), mainThread);
            ++ends;
            errors = qobject_cast<TTorvikPosThread*>(sender)->ErrorList;
        };
        return made;
    }

    const std::thread::id mainThread = std::this_thread::get_id();
    int ends = 0;
    QStringList errors;
    TThreadCollection list;
};

TEST_F(Worker, JoinsTheListAsItIsMade) {
    auto* first = worker(true, [](auto&) {});
    auto* second = worker(true, [](auto&) {});
    ASSERT_EQ(list.Count(), 2);
    EXPECT_EQ(list[0].AThread, first);
    EXPECT_EQ(list.FindItemID(second->ID())->AThread, second);
    EXPECT_NE(first->ID(), second->ID());
    EXPECT_EQ(second->Description, QString());
    EXPECT_EQ(second->ErrorList, QStringList());
    EXPECT_TRUE(second->Suspended());
}

TEST_F(Worker, SuspendedRunsWhenItIsResumedAndIsFreedAtItsEnd) {
    std::thread::id ranOn;
    QPointer<TTorvikPosThread> made = worker(true, [&](auto&) { ranOn = std::this_thread::get_id(); });
    QCoreApplication::processEvents();
    EXPECT_EQ(ranOn, std::thread::id()) << "not before it is told to";
    made->Resume();
    ASSERT_TRUE(pumpUntil([&] { return ends == 1; }));
    EXPECT_NE(ranOn, std::thread::id());
    EXPECT_NE(ranOn, mainThread);
    EXPECT_TRUE(made.isNull());
    EXPECT_EQ(list.Count(), 0) << "it takes its item along";
}

TEST_F(Worker, NotSuspendedStartsAtTheMainThreadsNextTurn) {
    std::atomic<bool> ran = false;
    const auto* made = worker(false, [&](auto&) { ran = true; });
    EXPECT_TRUE(made->Suspended()) << "it may not run before its descendant is whole";
    ASSERT_TRUE(pumpUntil([&] { return ends == 1; }));
    EXPECT_TRUE(ran);
}

#ifdef Q_OS_LINUX
TEST_F(Worker, RunsOneStepBelowNormalPriority) {
    // Five nice values are such a step; 19 is the last one there is.
    const int own = getpriority(PRIO_PROCESS, 0);
    int workers = 0;
    worker(false, [&](auto&) { workers = getpriority(PRIO_PROCESS, 0); });
    ASSERT_TRUE(pumpUntil([&] { return ends == 1; }));
    EXPECT_EQ(workers, std::min(own + 5, 19));
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), own) << "the main thread keeps its own";
}
#endif

TEST_F(Worker, WhatItsJobThrowsBecomesALineOfItsErrorList) {
    worker(false, [](ScriptedWorker& self) {
        self.ErrorList.append(QStringLiteral("en"));
        throw EngineError(QStringLiteral("to"));
    });
    ASSERT_TRUE(pumpUntil([&] { return ends == 1; }));
    EXPECT_EQ(errors, (QStringList{QStringLiteral("en"), QStringLiteral("to")}));
}

TEST_F(Worker, SilentAbortLeavesNoError) {
    worker(false, [](auto&) { throw EAbort(); });
    ASSERT_TRUE(pumpUntil([&] { return ends == 1; }));
    EXPECT_EQ(errors, QStringList());
}

TEST_F(Worker, TerminatedBeforeItStartsDoesNoWork) {
    std::atomic<bool> ran = false;
    auto* made = worker(true, [&](auto&) { ran = true; });
    made->Terminate();
    made->Resume();
    made->WaitFor();
    EXPECT_EQ(ends, 1);
    EXPECT_FALSE(ran);
}

TEST_F(Worker, SynchronizeRunsOnTheMainThreadWhileTheWorkerWaits) {
    std::thread::id calledOn;
    bool calledBeforeItGoesOn = false;
    worker(false, [&](ScriptedWorker& self) {
        self.Synchronize([&] { calledOn = std::this_thread::get_id(); });
        calledBeforeItGoesOn = calledOn == mainThread;
    });
    ASSERT_TRUE(pumpUntil([&] { return ends == 1; }));
    EXPECT_TRUE(calledBeforeItGoesOn);
}

// Sees with which event a worker wakes the main thread.
class WakingEvent : public QObject {
public:
    QEvent::Type last = QEvent::None;
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() >= QEvent::User) last = event->type();
        return false;
    }
};

TEST_F(Worker, SynchronizeCallThatPumpsMessagesIsNotBegunTwice) {
    WakingEvent waking;
    int calls = 0;
    auto* made = worker(true, [&](ScriptedWorker& self) {
        self.Synchronize([&] {
            if (++calls > 1) return;
            QCoreApplication::postEvent(&self, new QEvent(waking.last));
            for (int i = 0; i < 5; ++i) QCoreApplication::processEvents();
        });
    });
    made->installEventFilter(&waking);
    made->Resume();
    ASSERT_TRUE(pumpUntil([&] { return ends == 1; }));
    EXPECT_EQ(calls, 1);
}

TEST_F(Worker, ErrorOfASynchronizeCallIsRaisedInTheWorker) {
    worker(false,
           [](ScriptedWorker& self) { self.Synchronize([] { throw EngineError(QStringLiteral("på hovedtråden")); }); });
    ASSERT_TRUE(pumpUntil([&] { return ends == 1; }));
    EXPECT_EQ(errors, QStringList{QStringLiteral("på hovedtråden")});
}

TEST_F(Worker, WaitForServesTheWorkersCallsAndItsEnd) {
    int calls = 0;
    QPointer<TTorvikPosThread> made = worker(true, [&](ScriptedWorker& self) {
        for (int i = 0; i < 3; ++i) self.Synchronize([&] { ++calls; });
    });
    made->Resume();
    made->WaitFor();
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(ends, 1);
    EXPECT_TRUE(made.isNull());
}

TEST_F(Worker, FreedItemEndsItsWorkerWithoutNoteOfItsEnd) {
    std::atomic<bool> ended = false;
    auto* made = worker(true, [&](ScriptedWorker& self) {
        test::untilTerminated(self);
        ended = true;
    });
    made->ResumeToItsJob();
    list.Free(list[0]);
    EXPECT_TRUE(ended);
    EXPECT_EQ(list.Count(), 0);
    QCoreApplication::processEvents();
    EXPECT_EQ(ends, 0);
}

TEST_F(Worker, ListThatGoesEndsAllItsWorkers) {
    constexpr int kWorkers = 8;
    std::atomic<int> ended = 0;
    {
        TThreadCollection own;
        for (int i = 0; i < kWorkers; ++i) {
            auto* made = new ScriptedWorker(true, own, [&](ScriptedWorker& self) {
                test::untilTerminated(self);
                ++ended;
            });
            if (i % 2 == 0) made->ResumeToItsJob();
        }
    }
    EXPECT_EQ(ended, kWorkers / 2) << "those that were not started do no work";
}

TEST_F(Worker, CallOfAWorkerThatIsBeingEndedIsASilentAbort) {
    bool called = false;
    bool wentOn = false;
    auto* made = worker(true, [&](ScriptedWorker& self) {
        test::untilTerminated(self);
        self.Synchronize([&] { called = true; });
        wentOn = true;
    });
    made->ResumeToItsJob();
    list.Free(list[0]);
    EXPECT_FALSE(called);
    EXPECT_FALSE(wentOn);
}

TEST_F(Worker, ManyAtOnceEachEndOnce) {
    constexpr int kWorkers = 20;
    int calls = 0;
    for (int i = 0; i < kWorkers; ++i) worker(false, [&](ScriptedWorker& self) { self.Synchronize([&] { ++calls; }); });
    ASSERT_TRUE(pumpUntil([&] { return ends == kWorkers; }));
    EXPECT_EQ(calls, kWorkers);
    EXPECT_EQ(list.Count(), 0);
}

}  // namespace
}  // namespace torvik
