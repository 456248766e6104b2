#include <gtest/gtest.h>

#include <QCoreApplication>

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "tests/engine/small_chain.h"
#include "tests/support/recording_sink.h"

namespace torvik {
namespace {

class NightJob : public testing::Test {
protected:
    NightJob() {
        TTorvikPos& engine = chain.engine;
        engine.StartTime = QTime(5, 6, 59);  // the same minute as the clock's
        engine.OnAutoStart = [this](QObject*) { steps.append(QStringLiteral("start")); };
        engine.OnFetchTill = [this](TillVisit& visit) {
            steps.append(QStringLiteral("hent ") + visit.Till.Kassenummer);
        };
        engine.OnAutoReceiveDataDone = [this](QObject*) { steps.append(QStringLiteral("hentet flagg ") + flag()); };
        engine.OnExecuteDTSToPos = [this](RunParts&) { steps.append(QStringLiteral("send flagg ") + flag()); };
        engine.OnExecuteVaretelling = [this](RunParts&) { steps.append(QStringLiteral("tell flagg ") + flag()); };
        engine.OnAutoStartDone = [this](QObject*) { steps.append(QStringLiteral("slutt")); };
    }

    [[nodiscard]] QString flag() {
        return chain.value(chain.kBackOffice, QStringLiteral("SELECT In_DagligJobbFlagg FROM Innstillinger"));
    }
    void setFlag(int value) {
        chain.run(chain.kBackOffice, QStringLiteral("UPDATE Innstillinger SET In_DagligJobbFlagg = %1").arg(value));
    }
    // The seconds that the wait for sending wrote.
    [[nodiscard]] QList<int> secondsLogged() const {
        QList<int> seconds;
        for (const QString& message : chain.messages()) {
            bool isNumber = false;
            const int number = message.toInt(&isNumber);
            if (isNumber) seconds.append(number);
        }
        return seconds;
    }

    test::SmallChain chain;
    QStringList steps;
};

TEST_F(NightJob, TickFarFromTheStartOnlyListsTheTills) {
    chain.tills(QStringLiteral("1/1"));
    chain.till({.department = 1, .number = QStringLiteral("2"), .syncVersion = 1});
    chain.engine.Avdeling->KasseCollection()->Add();
    for (const QTime other : {QTime(5, 7), QTime(4, 6), QTime(17, 6)}) {
        chain.engine.StartTime = other;
        chain.engine.DoOnTimer();
    }
    EXPECT_EQ(steps, QStringList());
    const TKasseCollection& workList = *chain.engine.Avdeling->KasseCollection();
    ASSERT_EQ(workList.Count(), 2);
    EXPECT_EQ(workList[0].Ik_Ku_ID, 1);
    EXPECT_EQ(workList[0].Kassenr.trimmed(), QStringLiteral("1"));
    EXPECT_EQ(workList[0].Avdnr.trimmed(), QStringLiteral("1"));
    EXPECT_EQ(workList[0].AvdNavn.trimmed(), QStringLiteral("Storgata 1"));
    EXPECT_EQ(workList[0].SyncVersion, svTorvikPosSync);
    EXPECT_EQ(workList[1].SyncVersion, svDotNetV1);
    EXPECT_FALSE(chain.engine.TimerBusy());
    EXPECT_FALSE(chain.engine.Avdeling->Qry().Eof()) << "back on the first row";
}

TEST_F(NightJob, EveryTickOpensTheBackOfficeSessionAnew) {
    chain.tills(QStringLiteral("1/1"));
    chain.engine.StartTime = QTime(12, 0);
    chain.engine.DoOnTimer();
    chain.server.dropConnections();
    EXPECT_NO_THROW(chain.engine.DoOnTimer());
    EXPECT_EQ(chain.engine.Avdeling->KasseCollection()->Count(), 1);
}

TEST_F(NightJob, BusyTickReturnsAtOnce) {
    chain.engine.OnAutoStart = [this](QObject*) {
        steps.append(QStringLiteral("start"));
        chain.engine.DoOnTimer();
    };
    chain.engine.DoOnTimer();
    EXPECT_EQ(steps.count(QStringLiteral("start")), 1);
    EXPECT_FALSE(chain.engine.TimerBusy());
}

// The window keeps ticks away by switching the clock off before a command; nothing else does.
TEST_F(NightJob, TickDuringAManualRunIsNotKeptOut) {
    chain.tills(QStringLiteral("1/1 1/2"));
    chain.engine.StartTime = QTime(23, 0);
    int tills = 0;
    chain.engine.OnFetchTill = [&](TillVisit& visit) {
        if (++tills > 1) return;
        chain.engine.DoOnTimer();
        EXPECT_EQ(visit.Roster.KasseCollection()->Count(), visit.Roster.Qry().RecordCount());
    };
    chain.engine.Avdeling->KasseCollection()->Clear();
    chain.engine.ExecuteOppgjor();
    EXPECT_GT(chain.engine.Avdeling->KasseCollection()->Count(), 0);
}

TEST_F(NightJob, RunThatEndsWithinItsMinuteStartsAgain) {
    chain.around.now.setTime(QTime(5, 6, 0));
    chain.engine.DoOnTimer();
    chain.around.now.setTime(QTime(5, 6, 30));
    chain.engine.DoOnTimer();
    EXPECT_EQ(steps.count(QStringLiteral("start")), 2);
}

TEST_F(NightJob, WholeNightInOrder) {
    chain.tills(QStringLiteral("1/1 1/2"));
    chain.engine.IncludeVaretellingOnOppgjor = true;
    chain.engine.DoOnTimer();
    EXPECT_EQ(steps.join(u'|'), QStringLiteral("start|hent 1|hent 2|hentet flagg 3|send flagg 3|tell flagg 3|slutt"));
    EXPECT_EQ(chain.engine.Tasks, (TTasks{taHent, taSend}));
    EXPECT_EQ(chain.around.sleeps, (std::vector<int>{1000, 1000}));
    EXPECT_EQ(chain.messages().first(), QStringLiteral("Starter automatisk innhenting"));
    EXPECT_EQ(chain.messages().last(), QStringLiteral("Synkronisering fullført"));
    EXPECT_TRUE(chain.errors.Lines().isEmpty());
}

TEST_F(NightJob, ReceivingOnlySendsNothing) {
    chain.tills(QStringLiteral("1/1"));
    chain.engine.ReceiveDataOnly = true;
    chain.engine.SynchonizedRun = true;
    chain.engine.DoOnTimer();
    EXPECT_EQ(steps.join(u'|'), QStringLiteral("start|hent 1|hentet flagg 0|slutt"));
    EXPECT_EQ(chain.engine.Tasks, TTasks{taHent});
    EXPECT_EQ(flag(), QStringLiteral("3"));
}

TEST_F(NightJob, SynchronisedRunWaitsForTheBackOffice) {
    chain.engine.SynchonizedRun = true;
    chain.engine.StartSendingTime = QTime(6, 0);
    chain.around.onPump = [this] {
        if (chain.around.sleeps.size() == 4) setFlag(2);
    };
    chain.engine.DoOnTimer();
    EXPECT_EQ(steps.join(u'|'), QStringLiteral("start|hentet flagg 0|send flagg 2|slutt"));
    EXPECT_EQ(chain.around.sleeps, (std::vector<int>{1000, 1000, 3000, 3000}));
    const int seconds = 53 * 60 + 53 - 2;  // from 05:06:07 and two seconds to 06:00
    EXPECT_EQ(secondsLogged(), (QList<int>{seconds - 3, seconds - 6}));
    QStringList flags = chain.messages().filter(QStringLiteral("steg"));
    EXPECT_EQ(flags, (QStringList{QStringLiteral("Oppdaterer neste steg i synkron kjøring fra 3 til 0"),
                                  QStringLiteral("Oppdaterer neste steg i synkron kjøring fra 0 til 1"),
                                  QStringLiteral("Venter på det som kommer først av neste steg i synkronisert kjøring "
                                                 "og kl. 06:00"),
                                  QStringLiteral("Neste steg i synkron kjøring er: 2"),
                                  QStringLiteral("Oppdaterer neste steg i synkron kjøring fra 2 til 3")}));
}

TEST_F(NightJob, SendingTimeEndsTheWaitWithinFiveSeconds) {
    chain.engine.SynchonizedRun = true;
    chain.engine.StartSendingTime = QTime(5, 6, 20);
    chain.engine.DoOnTimer();
    // 05:06:09 when the wait begins: 8 seconds left after the first look, 5 after the second.
    EXPECT_EQ(secondsLogged(), (QList<int>{8, 5}));
    EXPECT_TRUE(steps.contains(QStringLiteral("send flagg 1")));
}

TEST_F(NightJob, SendingTimeAfterMidnightIsMetWhenTheClockComesRound) {
    chain.engine.SynchonizedRun = true;
    chain.engine.StartTime = QTime(23, 59);
    chain.engine.StartSendingTime = QTime(0, 0);
    chain.around.now.setTime(QTime(23, 59, 50));
    chain.engine.DoOnTimer();
    EXPECT_EQ(secondsLogged(), (QList<int>{86395, 86398, 1})) << "the distance is taken on the time of day alone";
    EXPECT_TRUE(steps.contains(QStringLiteral("send flagg 1")));
}

TEST_F(NightJob, CancelDuringTheWaitIsLoggedAndTheJobEndsNormally) {
    chain.engine.SynchonizedRun = true;
    chain.engine.StartSendingTime = QTime(12, 0);
    chain.around.onPump = [this] {
        if (chain.around.sleeps.size() == 5) chain.engine.SetCancelRequest(true);
    };
    chain.engine.DoOnTimer();
    EXPECT_EQ(steps.join(u'|'), QStringLiteral("start|hentet flagg 0|slutt"));
    EXPECT_EQ(chain.errorMessages(), QStringList{QStringLiteral("Feil i ExecuteVareoppdatering prosedyren")});
    EXPECT_EQ(flag(), QStringLiteral("3"));
}

TEST_F(NightJob, FailureOfTheReceivedCallbackIsSwallowed) {
    chain.engine.OnAutoReceiveDataDone = [](QObject*) { throw EngineError(QStringLiteral("akkumulering")); };
    chain.engine.DoOnTimer();
    EXPECT_EQ(steps.join(u'|'), QStringLiteral("start|send flagg 3|slutt"));
    EXPECT_TRUE(chain.errors.Lines().isEmpty());
}

TEST_F(NightJob, FailedSendingIsLoggedAndTheJobEndsNormally) {
    chain.engine.OnExecuteDTSToPos = [](RunParts&) { throw EngineError(QStringLiteral("sending")); };
    chain.engine.DoOnTimer();
    EXPECT_EQ(chain.errorMessages(), QStringList{QStringLiteral("Feil i ExecuteVareoppdatering prosedyren")});
    EXPECT_EQ(chain.messages().last(), QStringLiteral("Synkronisering fullført"));
    EXPECT_EQ(steps.last(), QStringLiteral("slutt"));
}

TEST_F(NightJob, FailedStockCountNamesTheOtherRoutine) {
    chain.engine.IncludeVaretellingOnOppgjor = true;
    chain.engine.OnExecuteVaretelling = [](RunParts&) { throw EngineError(QStringLiteral("telling")); };
    chain.engine.DoOnTimer();
    EXPECT_EQ(chain.errorMessages(), QStringList{QStringLiteral("Feil i ExecuteVareoppdatering prosedyren (telling)")});
    EXPECT_EQ(steps.last(), QStringLiteral("slutt"));
}

TEST_F(NightJob, MissingEndCallbackIsLogged) {
    chain.engine.OnAutoStartDone = nullptr;
    chain.engine.DoOnTimer();
    EXPECT_EQ(chain.messages().last(), QStringLiteral("OnAutoStartDone was not assigned in DoOnTimer"));
}

TEST_F(NightJob, FailureOfTheEndCallbackIsSwallowed) {
    chain.engine.OnAutoStartDone = [](QObject*) { throw EngineError(QStringLiteral("epost")); };
    EXPECT_NO_THROW(chain.engine.DoOnTimer());
    EXPECT_FALSE(chain.engine.TimerBusy());
}

TEST_F(NightJob, FlagThatCannotBeSetAfterTheFetchIsLoggedAndTheLastOneLeavesTheHandler) {
    chain.engine.SynchonizedRun = true;
    chain.engine.StartSendingTime = QTime(5, 6, 10);
    chain.engine.OnAutoReceiveDataDone = [this](QObject*) {
        chain.run(chain.kBackOffice, QStringLiteral("DROP TABLE Innstillinger"));
    };
    chain.engine.OnExecuteDTSToPos = [this](RunParts&) { steps.append(QStringLiteral("send")); };
    EXPECT_ANY_THROW(chain.engine.DoOnTimer());
    EXPECT_EQ(chain.errorMessages(), QStringList{QStringLiteral("Klarte ikke sette NextStep: ")});
    EXPECT_EQ(steps.join(u'|'), QStringLiteral("start|send|slutt"));
    EXPECT_FALSE(chain.engine.TimerBusy());
}

// A sink that fails where sinks must not: the only way for a failure out of the settlement run.
struct BrokenSink final : ILogSink {
    int failures = 0;
    int toFail = 0;
    std::function<void()> onFailure;
    void Write(const std::shared_ptr<ILogEntry>&) override {
        if (failures >= toFail) return;
        ++failures;
        if (onFailure) onFailure();
        throw EngineError(QStringLiteral("ødelagt logg"));
    }
    void SyncAndClose() override {}
};

class FailingFetch : public NightJob {
protected:
    explicit FailingFetch() {
        GlobalLogger().ClearSinks();
        GlobalLogger().AddSink(sink);
    }
    ~FailingFetch() override { GlobalLogger().ClearSinks(); }

    std::shared_ptr<BrokenSink> sink = std::make_shared<BrokenSink>();
};

TEST_F(FailingFetch, IsTriedAgainAfterThreeMinutes) {
    sink->toFail = 1;
    chain.engine.DoOnTimer();
    EXPECT_EQ(chain.messages().filter(QStringLiteral("igjen")),
              QStringList{QStringLiteral("Prøver ExecuteOppgjor igjen (melding ødelagt logg)")});
    EXPECT_EQ(chain.messages().count(QStringLiteral("Venter i 180 sekunder på neste forsåk")), 1);
    EXPECT_EQ(steps.join(u'|'), QStringLiteral("start|hentet flagg 3|send flagg 3|slutt"));
}

TEST_F(FailingFetch, IsNotWaitedForAfterACancel) {
    sink->toFail = 1;
    sink->onFailure = [this] { chain.engine.SetCancelRequest(true); };
    EXPECT_THROW(chain.engine.DoOnTimer(), EAbort);
    EXPECT_EQ(chain.messages().filter(QStringLiteral("igjen")).size(), 1);
    EXPECT_EQ(chain.messages().filter(QStringLiteral("Venter i 180")), QStringList());
    EXPECT_EQ(steps.join(u'|'), QStringLiteral("start|slutt"));
}

TEST_F(FailingFetch, ThirdFailureLeavesTheHandlerAndStillEndsTheNight) {
    sink->toFail = 1000;
    EXPECT_THROW(chain.engine.DoOnTimer(), EngineError);
    EXPECT_EQ(chain.messages().filter(QStringLiteral("igjen")).size(), 3);
    EXPECT_EQ(chain.messages().count(QStringLiteral("Venter i 180 sekunder på neste forsåk")), 2);
    EXPECT_EQ(chain.errorMessages(), QStringList{QStringLiteral("Feil i ExecuteOppgjor prosedyren")});
    EXPECT_EQ(steps.join(u'|'), QStringLiteral("start|slutt"));
}

TEST_F(NightJob, NextStepIsTrueOnlyForTwo) {
    chain.target.Open();
    for (const int value : {0, 1, 3}) {
        setFlag(value);
        EXPECT_FALSE(chain.engine.ReadNextStep()) << value;
    }
    EXPECT_TRUE(chain.log.Lines().isEmpty());
    setFlag(2);
    EXPECT_TRUE(chain.engine.ReadNextStep());
    EXPECT_EQ(chain.messages(), QStringList{QStringLiteral("Neste steg i synkron kjøring er: 2")});
}

TEST_F(NightJob, TimerTicksEveryThirtySecondsWhileArmed) {
    const auto* timer = chain.engine.findChild<QTimer*>();
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(timer->interval(), 30000);
    EXPECT_FALSE(timer->isActive());
    chain.engine.SetAutoCommunicate(true);
    EXPECT_TRUE(timer->isActive());
    chain.engine.SetAutoCommunicate(false);
    EXPECT_FALSE(timer->isActive());
}

class FailingTick : public NightJob {
protected:
    // Lets the armed timer tick once, against a back office that is not there.
    void tick() {
        chain.target.SetServer(QStringLiteral("127.0.0.1,1"));
        auto* timer = chain.engine.findChild<QTimer*>();
        timer->setInterval(0);
        bool ticked = false;
        QObject::connect(timer, &QTimer::timeout, timer, [&] { ticked = true; });
        chain.engine.SetAutoCommunicate(true);
        while (!ticked) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        chain.engine.SetAutoCommunicate(false);
    }
};

TEST_F(FailingTick, IsHandedToTheProgram) {
    int failures = 0;
    chain.engine.OnTimerException = [&](const std::exception_ptr& failure) { failures += failure ? 1 : 0; };
    tick();
    EXPECT_EQ(failures, 1);
    EXPECT_TRUE(chain.errors.Lines().isEmpty());
    EXPECT_FALSE(chain.engine.TimerBusy());
}

TEST_F(FailingTick, IsLoggedWhenTheProgramHasNoHandler) {
    tick();
    EXPECT_EQ(chain.errorMessages().size(), 1);
}

}  // namespace
}  // namespace torvik
