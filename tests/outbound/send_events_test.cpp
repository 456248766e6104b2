// The structured events of a send: a till that failed stands there with its reason, whatever the operator's log says.
#include <gtest/gtest.h>

#include "engine/base/abort.h"
#include "engine/status/oppgjor_status.h"
#include "outbound/run/send_run.h"
#include "tests/support/chain_run.h"
#include "tests/support/qt_print.h"
#include "tests/support/recording_sink.h"

namespace torvik::test {
namespace {

class SendEvents : public testing::Test {
protected:
    SendEvents() : run({.departments = 2, .tills = 3, .days = 1, .items = 10, .ordersADay = 2, .versions = {213}}) {
        joinSending(run.engine);
        run.engine.Tasks = TTasks{taSend};
        run.engine.ffraOppgjorStatus = std::make_unique<TfraOppgjorStatus>();
        run.target.Open();
        run.engine.Avdeling->SetKasseCollection(std::make_shared<TKasseCollection>());
    }
    [[nodiscard]] static QString words(int department, int till) {
        return QStringLiteral(
                   "ERR Feil ved sending til avdelingsnummer {Avdeling} kassenummer {Kassenummer}: {Feilmelding} "
                   "Avdeling=%1 Kassenummer=%2 Feilmelding=")
            .arg(department)
            .arg(till);
    }

    ChainRun run;
};

// One till's export fails and another cannot be connected to: the operator's log has a line of the first alone.
TEST_F(SendEvents, FailedTillsStandThereWithTheirReasons) {
    run.chain.runInTill(0, "DROP TABLE MERSALGVARE");
    run.chain.runInBackOffice("UPDATE Internkundekasse SET Ikk_Passord = 'sesam-sesam' WHERE Ikk_Ik_Ku_Id = 1002");
    const RecordedLog events;
    run.engine.ExecuteDTSToPos();
    const QStringList told = events.lines().filter(QStringLiteral("ERR "));
    ASSERT_EQ(told.size(), 2) << told.join(u'\n').toStdString();
    EXPECT_TRUE(told[0].startsWith(words(101, 1) + QStringLiteral("TorvikToPOS failed: Mersalgvare SessionID: ")))
        << told[0].toStdString();
    EXPECT_TRUE(told[0].endsWith(
        QStringLiteral(" Aarsak=Serveren avviste en setning Serversvar=Invalid object name 'MersalgVare'. "
                       "Steg=Mersalgvare Tabell=MersalgVare Feilnummer=208")))
        << told[0].toStdString();
    EXPECT_TRUE(told[1].startsWith(words(102, 1))) << told[1].toStdString();
    EXPECT_TRUE(
        told[1].contains(QStringLiteral(" Aarsak=Feil brukernavn eller passord Serversvar=Login failed for user '%1'")
                             .arg(QString::fromStdString(run.chain.addressOf(1).user))))
        << told[1].toStdString();
    EXPECT_TRUE(told[1].endsWith(QStringLiteral(" Feilnummer=18456"))) << told[1].toStdString();
    EXPECT_EQ(told.filter(QStringLiteral("sesam")), QStringList());
    EXPECT_EQ(run.errors().size(), 1);
}

// The till behind which the cancel is heard has been sent to.
TEST_F(SendEvents, CancelIsNoFailureOfItsTill) {
    run.engine.OnProgress = [this](QObject*, int, const QString& text) {
        if (text.startsWith(QStringLiteral("Forbereder overføring av Kunder"))) run.engine.SetCancelRequest(true);
    };
    const RecordedLog events;
    EXPECT_THROW(run.engine.ExecuteDTSToPos(), EAbort);
    EXPECT_EQ(events.lines().filter(QStringLiteral("ERR ")), QStringList());
}

TEST_F(SendEvents, SendThatGoesThroughHasNoEventOfAFailure) {
    const RecordedLog events;
    run.engine.ExecuteDTSToPos();
    EXPECT_EQ(events.lines().filter(QStringLiteral("ERR ")), QStringList());
}

}  // namespace
}  // namespace torvik::test
