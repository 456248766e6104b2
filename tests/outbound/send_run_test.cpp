// The run that sends to all tills: its lines, its status rows, and what a till that fails or is busy means for the
// others.
#include <gmock/gmock.h>

#include <QFile>

#include "engine/base/abort.h"
#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "engine/office/application_lock.h"
#include "engine/status/oppgjor_status.h"
#include "inbound/pairs/pair_intent.h"
#include "inbound/pairs/pair_notes.h"
#include "outbound/run/send_run.h"
#include "tests/outbound/one_item.h"
#include "tests/support/chain_run.h"
#include "tests/support/chain_session.h"
#include "tests/support/qt_print.h"
#include "tests/support/status_rows.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Rows = std::vector<std::string>;

class SendRun : public testing::Test {
protected:
    SendRun() : run({.departments = 2, .tills = 3, .days = 1, .items = 10, .ordersADay = 2, .versions = {213}}) {
        joinSending(run.engine);
        run.engine.Tasks = TTasks{taSend};
        run.engine.VareOppdateringUtvalg = vopAlle;
        run.engine.DagerSidenEndring = 30;
        run.engine.ffraOppgjorStatus = std::make_unique<TfraOppgjorStatus>();
        run.engine.OnProgress = [this](QObject*, int percent, const QString& text) {
            if (text.contains(QStringLiteral("fullført"))) progress << QStringLiteral("%1 %2").arg(percent).arg(text);
            if (onProgress) onProgress(text);
        };
        run.target.Open();
        run.engine.Avdeling->SetKasseCollection(std::make_shared<TKasseCollection>());
        for (int till = 0; till < 3; ++till) run.chain.runInTill(till, "DELETE GAVEKORTVARE");
        run.chain.runInBackOffice("UPDATE Innstillinger SET In_Gavekort_Va_ID = NULL");
        run.chain.runInBackOffice(plainItem("777001"));
    }

    [[nodiscard]] Rows status() const {
        Rows rows;
        for (const QString& row : statusRows(run.engine)) rows.push_back(row.toStdString());
        return rows;
    }
    // On which tills the new item stands.
    [[nodiscard]] Rows served() const {
        Rows counts;
        for (std::size_t till = 0; till < 3; ++till)
            counts.push_back(run.tillValue(till, "SELECT COUNT(*) FROM VARE WHERE VA_ID = '777001'"));
        return counts;
    }
    [[nodiscard]] QStringList lines(const QString& part) const { return run.log().filter(part); }

    ChainRun run;
    QStringList progress;
    std::function<void(const QString&)> onProgress;
};

TEST_F(SendRun, ServesEveryTillAndTellsIt) {
    run.engine.ExecuteDTSToPos();
    EXPECT_THAT(served(), ElementsAre("1", "1", "1"));
    EXPECT_THAT(status(),
                ElementsAre("101/1 hentet - sendt ja: Overføring OK", "101/2 hentet - sendt ja: Overføring OK",
                            "102/1 hentet - sendt ja: Overføring OK"));
    EXPECT_EQ(run.errors(), QStringList());
    const QStringList log = run.log();
    EXPECT_EQ(log.mid(0, 2), (QStringList{QStringLiteral("STARTER VAREOPPDATERING"),
                                          QStringLiteral("Antall kasser som skal behandles: 3")}));
    ASSERT_EQ(lines(QStringLiteral("Overføring til Internkunde Id")).size(), 3);
    EXPECT_EQ(lines(QStringLiteral("Overføring til Internkunde Id")).front().simplified(),
              QStringLiteral("Overføring til Internkunde Id 1001 kasse 1 ble utført uten problem"));
    // Between the tills, and not behind the last.
    EXPECT_EQ(lines(QStringLiteral("Venter i 0 sekunder på neste forsøk")).size(), 2);
    ASSERT_EQ(progress.size(), 3);
    EXPECT_EQ(progress.back().simplified(),
              QStringLiteral("100 AvdID 1002, KasseNr 1 fullført. Oppdatert 3 av 3 kasser"));
    EXPECT_FALSE(run.engine.AddToLogItems);
    EXPECT_THAT(run.backOfficeRows("SELECT Ve_SesjonID FROM VareEksport"), IsEmpty());

    QFile saved(QStringLiteral("TorvikToPosLog.txt"));
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    EXPECT_EQ(saved.readAll(), QByteArray());
    EXPECT_TRUE(QFile::exists(run.folder.filePath(QStringLiteral("ZoppgjorLog.txt"))));
}

// The till has marked a redemption as handed in, and the back office has lost it: its older word is not sent.
TEST_F(SendRun, ProgramWithoutTheFetchSendsNoVouchersToATillOfAStandingPair) {
    const char* card = "SELECT ISNULL(RTRIM(GA_BET_AVDNR), 'ubrukt') FROM GAVEKORT WHERE GA_ID = '555'";
    for (int till = 0; till < 2; ++till)
        run.chain.runInTill(till,
                            "INSERT GAVEKORT (GA_ID, GA_AVDNR, GA_KASSENR, GA_AN_ID, GA_OL_ID, GA_BELOP, GA_GYLDIGTIL, "
                            "GA_BET_AVDNR, GA_BET_KASSENR, GA_BET_AN_ID, GA_BT_ID, GA_SYNKTIDSPUNKT) VALUES ('555', "
                            "'101', '9', '1', 1, 100, '20990101', '101', '1', '1', 1, GETDATE())");
    run.chain.runInBackOffice(
        "INSERT POSGAVEKORT (GA_ID, GA_AVDNR, GA_KASSENR, GA_AN_ID, GA_OL_ID, GA_BELOP, GA_GYLDIGTIL, GA_SYNKTIDSPUNKT) "
        "VALUES ('555', '101', '9', '1', 1, 100, '20990101', GETDATE())");
    PairIntents(run.target, 1001, QStringLiteral("1"))
        .write({QUuid::createUuid(), QStringLiteral("overføring"), QUuid::createUuid(), QStringLiteral("HK-01"), {}});

    run.engine.OnResolveTill = nullptr;
    run.engine.ExecuteDTSToPos();

    EXPECT_EQ(run.tillValue(0, card), "101");
    EXPECT_EQ(run.tillValue(1, card), "ubrukt") << "the other till is told what the back office holds";
    EXPECT_THAT(served(), ElementsAre("1", "1", "1"));
    EXPECT_THAT(run.backOfficeRows("SELECT COUNT(*) FROM InternkundeKasseOverfort WHERE Ikko_Ikk_Ik_Ku_ID = 1001 AND "
                                   "Ikko_Ikk_Kassenummer = '1'"),
                ElementsAre("0"));
    EXPECT_EQ(lines(QStringLiteral("Gavekort og tilgodelapper sendes ikke til (avd. 101, kasse 1)")).size(), 1);
}

// What the till has marked as handed in may not have reached the back office, whose older word would wipe it.
TEST_F(SendRun, TillOfAPairThatAnotherMachineHasLeftIsRefusedAndTold) {
    PairIntents(run.target, 1001, QStringLiteral("1"))
        .write({QUuid::createUuid(), QStringLiteral("overføring"), QUuid::createUuid(), QStringLiteral("HK-01"), {}});
    const std::string refused =
        "Kassen (avd. 101, kasse 1) betjenes ikke, fordi maskin HK-01 ikke har fullført overføring som ble begynt ";
    run.engine.ExecuteDTSToPos();
    EXPECT_THAT(served(), ElementsAre("0", "1", "1"));
    EXPECT_TRUE(status().front().starts_with("101/1 hentet - sendt nei: " + refused)) << status().front();
    ASSERT_EQ(run.errors().size(), 1);
    EXPECT_TRUE(run.errors()[0].toStdString().starts_with(refused)) << run.errors()[0].toStdString();
}

// A pair of this copy is resolved on the way, and the till is served.
TEST_F(SendRun, TillOfAPairOfThisCopyIsResolvedAndServed) {
    PairIntents(run.target, 1001, QStringLiteral("1"))
        .write({QUuid::createUuid(),
                QStringLiteral("overføring"),
                PairNotes(run.joinPoints.NoteFolder).storeId(),
                QStringLiteral("HK-01"),
                {}});
    run.engine.ExecuteDTSToPos();
    EXPECT_THAT(served(), ElementsAre("1", "1", "1"));
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM dts_logg WHERE dl_info LIKE 'Par {%'"), "0");
    EXPECT_EQ(lines(QStringLiteral("Avbrutt overføring fra")).size(), 1);
    EXPECT_EQ(run.errors(), QStringList());
}

TEST_F(SendRun, TellsWhatItSends) {
    const struct {
        TVareOppdateringUtvalg selection;
        bool prices;
        const char* line;
    } kCases[] = {
        {vopIngen, false, "Overfører data til POS. Dager siden endring = 30, ingen varer"},
        {vopEndrede, true, "Overfører data til POS. Dager siden endring = 30, send varer og priser, kun endringer"},
        {vopAlle, false, "Overfører data til POS. Dager siden endring = 30, alle varer"},
        {static_cast<TVareOppdateringUtvalg>(3), false, "Overfører data til POS. Dager siden endring = 30, ikke satt"},
    };
    run.engine.Avdeling->SetKu_Id(1002);
    for (const auto& one : kCases) {
        run.logPane.Clear();
        run.engine.VareOppdateringUtvalg = one.selection;
        run.engine.SendCustomerAndPrice = one.prices;
        run.engine.ExecuteDTSToPos();
        EXPECT_EQ(lines(QStringLiteral("Overfører data til POS")), QStringList{QString::fromUtf8(one.line)});
    }
}

TEST_F(SendRun, WithoutTillsLogsItsBeginningAlone) {
    run.engine.Avdeling->SetKu_Id(999999);
    run.engine.ExecuteDTSToPos();
    EXPECT_EQ(run.log(), (QStringList{QStringLiteral("STARTER VAREOPPDATERING"),
                                      QStringLiteral("Antall kasser som skal behandles: 0")}));
    EXPECT_EQ(progress, QStringList());
}

TEST_F(SendRun, BusyTillIsPassedOver) {
    const auto busy = test::tillSession(run.chain, 0);
    busy->StartTransaction();
    db::Query sale(busy.get());
    sale.SQL = QStringList{QStringLiteral("UPDATE INNSTILLINGER SET IN_NAVN = 'x'")};
    sale.ExecSQL();

    run.engine.ExecuteDTSToPos();

    busy->Rollback();
    EXPECT_THAT(served(), ElementsAre("0", "1", "1"));
    EXPECT_EQ(
        status().front(),
        "101/1 hentet - sendt nei: Sender ikke oppdatering til (avd. 101, kasse 1), fordi den er i en transaksjon. "
        "Kanskje kasseoppgjøret ikke er avsluttet");
    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_EQ(lines(QStringLiteral("i en transaksjon")), QStringList());
    // No export had been made when the first till was over: nothing is reported for it.
    EXPECT_EQ(progress.size(), 2);
    EXPECT_EQ(lines(QStringLiteral("Venter i")).size(), 2);
}

// Another copy of the program at the first till, until it lets go.
class TillThatIsServedElsewhere : public SendRun {
protected:
    TillThatIsServedElsewhere() {
        copy.SetConnectString(run.target.ConnectString());
        copy.Open();
        taken.emplace(copy, ApplicationLock::OfTill(1001, QStringLiteral("1")));
    }
    db::Session copy;
    std::optional<ApplicationLock> taken;
};

TEST_F(TillThatIsServedElsewhere, IsTriedAgainAtTheEndAndPassedOver) {
    run.engine.ExecuteDTSToPos();
    EXPECT_THAT(served(), ElementsAre("0", "1", "1"));
    EXPECT_THAT(status(), testing::Contains("101/1 hentet - sendt nei: En annen kjøring betjener kassen (avd. 101, "
                                            "kasse 1)"));
    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_EQ(
        lines(QStringLiteral("En annen kjøring betjener kassen (avd. 101, kasse 1). Prøver igjen til slutt")).size(),
        1);
    EXPECT_EQ(lines(QStringLiteral("Overfører data til POS")).size(), 2) << "nothing is begun at the till";
    EXPECT_EQ(progress.size(), 3);
}

TEST_F(TillThatIsServedElsewhere, IsSentToWhenItHasBecomeFree) {
    onProgress = [this](const QString& text) {
        if (text.contains(QStringLiteral("Oppdatert 2 av 3 kasser"))) taken.reset();
    };
    run.engine.ExecuteDTSToPos();
    EXPECT_THAT(served(), ElementsAre("1", "1", "1"));
    EXPECT_THAT(status(), testing::Contains("101/1 hentet - sendt ja: Overføring OK"));
    EXPECT_EQ(run.errors(), QStringList());
}

TEST_F(SendRun, TillThatCannotBeReachedIsPassedOver) {
    run.chain.runInBackOffice(
        "UPDATE Internkundekasse SET Ikk_Database = 'finnes_ikke' WHERE Ikk_Ik_Ku_Id = 1001 AND Ikk_Kassenummer = '1'");
    run.engine.ExecuteDTSToPos();
    EXPECT_THAT(served(), ElementsAre("0", "1", "1"));
    EXPECT_TRUE(QString::fromStdString(status().front()).startsWith(QStringLiteral("101/1 hentet - sendt nei: ")));
    EXPECT_TRUE(QString::fromStdString(status().front()).contains(QStringLiteral("finnes_ikke")));
    EXPECT_EQ(run.errors(), QStringList());
}

TEST_F(SendRun, BackOfficeThatIsLostAtATillIsOpenedAgainForTheNext) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    sandbox::FaultRule cut;
    cut.match.textContains = "GetPosGavekort";
    cut.action = sandbox::FaultAction::DropBefore;
    run.chain.backOffice().faults().add(cut);

    run.engine.ExecuteDTSToPos();

    EXPECT_THAT(served(), ElementsAre("0", "1", "1"));
    EXPECT_TRUE(run.errors().value(0).contains(QStringLiteral("TorvikToPOS failed: Gavekort SessionID: ")))
        << run.errors().join(u'\n').toStdString();
    EXPECT_EQ(run.errors().size(), 1);
    ASSERT_EQ(progress.size(), 3);
}

TEST_F(SendRun, BackOfficeThatStaysAwayEndsTheRun) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    onProgress = [this](const QString& text) {
        if (!text.startsWith(QStringLiteral("Forbereder overføring av Kunder"))) return;
        run.chain.backOffice().stopListening();
        run.chain.backOffice().dropConnections();
    };
    EXPECT_THROW(run.engine.ExecuteDTSToPos(), db::ConnectionError);
    EXPECT_THAT(served(), ElementsAre("0", "0", "0"));
    EXPECT_EQ(run.errors().size(), 1) << run.errors().join(u'\n').toStdString();
    EXPECT_FALSE(run.engine.AddToLogItems);
    run.chain.backOffice().startListening();
}

// Required: the failure is told in the column of what was fetched.
TEST_F(SendRun, FailedTillIsToldAndTriedOnceAndTheOthersAreServed) {
    run.engine.RetryCount = 5;
    run.chain.runInTill(0, "DROP TABLE MERSALGVARE");
    run.chain.runInBackOffice("UPDATE Innstillinger SET In_Gavekort_Va_ID = (SELECT MIN(Va_Id) FROM Vare)");
    run.engine.ExecuteDTSToPos();
    EXPECT_THAT(served(), ElementsAre("0", "1", "1"));
    const QString row = QString::fromStdString(status().front());
    EXPECT_TRUE(row.startsWith(
        QStringLiteral("101/1 hentet nei sendt -: DTS feilet: TorvikToPOS failed: Mersalgvare SessionID: ")))
        << row.toStdString();
    ASSERT_EQ(run.errors().size(), 1);
    EXPECT_TRUE(run.errors().front().startsWith(QStringLiteral(
        "Feil ved Execute prosedyren ved utsending til (Avd 101, kasse 1)(Mersalgvare): TorvikToPOS failed: Mersalgvare SessionID: ")))
        << run.errors().front().toStdString();
    EXPECT_TRUE(run.errors().front().endsWith(QStringLiteral("Invalid object name 'MersalgVare'.")));
    EXPECT_EQ(lines(QStringLiteral("Overfører data til POS")).size(), 3) << "one attempt at each till";
    EXPECT_EQ(run.tillValue(0, "SELECT COUNT(*) FROM GAVEKORTVARE"), "1")
        << "the gift-card item is refreshed all the same";
    EXPECT_THAT(run.backOfficeRows("SELECT COUNT(*) FROM (SELECT DISTINCT Ve_SesjonID FROM VareEksport) failed"),
                ElementsAre("1"));
}

TEST_F(SendRun, GiftCardItemOfEachTillIsTheBackOffices) {
    run.chain.runInTill(0, "INSERT GAVEKORTVARE (GAV_VA_ID, GAV_AKTIV) SELECT MAX(VA_ID), 1 FROM VARE");
    run.engine.ExecuteDTSToPos();
    EXPECT_EQ(run.tillValue(0, "SELECT COUNT(*) FROM GAVEKORTVARE"), "1") << "blank: left as it is";

    run.chain.runInBackOffice("UPDATE Innstillinger SET In_Gavekort_Va_ID = '777001'");
    run.engine.ExecuteDTSToPos();
    for (std::size_t till = 0; till < 3; ++till)
        EXPECT_THAT(run.tillRows(till, "SELECT RTRIM(GAV_VA_ID), GAV_AKTIV FROM GAVEKORTVARE"),
                    ElementsAre("777001 | 1"));

    run.chain.runInBackOffice(
        "ALTER TABLE Innstillinger DROP CONSTRAINT FK_Innstillinger_Gavekort UPDATE Innstillinger SET In_Gavekort_Va_ID = 'O''Hara'");
    run.engine.ExecuteDTSToPos();
    EXPECT_THAT(run.tillRows(0, "SELECT GAV_VA_ID FROM GAVEKORTVARE"), IsEmpty());
    EXPECT_EQ(run.errors(), QStringList());

    // Blanks alone are no number, and no reason to take the till's item away.
    run.chain.runInTill(0, "INSERT GAVEKORTVARE (GAV_VA_ID, GAV_AKTIV) SELECT MAX(VA_ID), 0 FROM VARE");
    run.chain.runInBackOffice("UPDATE Innstillinger SET In_Gavekort_Va_ID = ''");
    run.engine.ExecuteDTSToPos();
    EXPECT_THAT(run.tillRows(0, "SELECT GAV_AKTIV FROM GAVEKORTVARE"), ElementsAre("0"));
}

TEST_F(SendRun, FailureOfTheGiftCardItemIsSilent) {
    run.chain.runInBackOffice("UPDATE Innstillinger SET In_Gavekort_Va_ID = '777001'");
    run.chain.runInTill(0, "DROP TABLE GAVEKORTVARE");
    run.engine.ExecuteDTSToPos();
    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_EQ(status().front(), "101/1 hentet - sendt ja: Overføring OK");
    EXPECT_THAT(served(), ElementsAre("1", "1", "1"));
}

TEST_F(SendRun, CancelTakesEffectBehindTheTillThatIsBeingServed) {
    onProgress = [this](const QString& text) {
        if (text.startsWith(QStringLiteral("Forbereder overføring av Kunder"))) run.engine.SetCancelRequest(true);
    };
    EXPECT_THROW(run.engine.ExecuteDTSToPos(), EAbort);
    EXPECT_THAT(served(), ElementsAre("1", "0", "0"));
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM VareEksport"), "0") << "the till was served to its end";
    // The row tells both, in the column of what was sent.
    EXPECT_THAT(status(), ElementsAre("101/1 hentet - sendt nei: Overføring OK,Operasjonen ble avbrutt"));
    EXPECT_EQ(lines(QStringLiteral("Avbrutt av bruker")).size(), 1);
    EXPECT_FALSE(run.engine.AddToLogItems);
    EXPECT_EQ(progress, QStringList());
}

TEST_F(SendRun, ItemsAreDeletedOnTheDaysChosen) {
    for (int till = 0; till < 3; ++till)
        run.chain.runInTill(till, "INSERT VARE (VA_ID, VA_NAVN, VA_PRIS) VALUES ('777099', 'Borte', 1)");
    run.chain.runInBackOffice("UPDATE Innstillinger SET In_Slett_Va_ID = '777001'");
    const int today = QDate::currentDate().dayOfWeek();
    const std::string left = "SELECT COUNT(*) FROM VARE WHERE VA_ID = '777099'";

    run.engine.SetDeleteItemsOnSend(true);
    run.engine.ExecuteDTSToPos();
    EXPECT_EQ(run.tillValue(0, left), "1") << "no day";
    run.engine.DeleteItemsWeekDays = QStringList{QString::number(today % 7 + 1)};
    run.engine.ExecuteDTSToPos();
    EXPECT_EQ(run.tillValue(0, left), "1") << "tomorrow";
    run.engine.DeleteItemsWeekDays = QStringList{QString::number(today)};
    run.engine.SetDeleteItemsOnSend(false);
    run.engine.ExecuteDTSToPos();
    EXPECT_EQ(run.tillValue(0, left), "1") << "not chosen";
    run.engine.SetDeleteItemsOnSend(true);
    run.engine.ExecuteDTSToPos();
    for (std::size_t till = 0; till < 3; ++till) EXPECT_EQ(run.tillValue(till, left), "0") << till;
}

TEST_F(SendRun, DepartmentWhoseNumberIsNoneEndsNothing) {
    run.chain.runInBackOffice("UPDATE Internkunde SET Ik_Avdelingsnummer = 'A1' WHERE Ik_Ku_Id = 1001");
    run.engine.ExecuteDTSToPos();
    EXPECT_THAT(served(), ElementsAre("1", "1", "1"));
}

TEST_F(SendRun, NightFetchesAndThenSends) {
    run.engine.ReceiveDataOnly = false;
    run.engine.StartTime = QTime::currentTime();
    run.engine.Seam.now = [start = QDateTime::currentDateTime()] { return start; };
    run.engine.OnAutoStartDone = [](QObject*) {};
    run.engine.DoOnTimer();
    EXPECT_TRUE(run.postedWhole());
    EXPECT_THAT(served(), ElementsAre("1", "1", "1"));
    EXPECT_EQ(run.errors(), QStringList());
}

}  // namespace
}  // namespace torvik::test
