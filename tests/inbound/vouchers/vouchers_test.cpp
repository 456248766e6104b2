// Gift cards and credit notes: what has changed on the till reaches the back office's copies, and is marked.
#include <gtest/gtest.h>

#include "engine/db/meanwhile.h"
#include "tests/inbound/one_till.h"

namespace torvik::test {
namespace {

const char* const kCards =
    "SELECT GA_ID, RTRIM(GA_AVDNR), RTRIM(GA_KASSENR), RTRIM(GA_AN_ID), GA_OL_ID, GA_BELOP, GA_GYLDIGTIL, "
    "RTRIM(GA_BET_AVDNR), RTRIM(GA_BET_KASSENR), RTRIM(GA_BET_AN_ID), GA_BT_ID FROM POSGAVEKORT ORDER BY GA_ID";
const char* const kNotes =
    "SELECT TG_ID, RTRIM(TG_AVDNR), RTRIM(TG_KASSENR), RTRIM(TG_AN_ID), TG_OR_ID, TG_BELOP, TG_GYLDIGTIL, "
    "RTRIM(TG_BET_AVDNR), RTRIM(TG_BET_KASSENR), RTRIM(TG_BET_AN_ID), TG_BT_ID FROM POSTilgodelapp ORDER BY TG_ID";
const char* const kUnmarked = "SELECT COUNT(*) FROM GAVEKORT WHERE GA_SYNKTIDSPUNKT IS NULL";

class Vouchers : public OneTill {
protected:
    Vouchers() : OneTill(213, 0) {
        run.engine.IncludeGiftVoucherOnOppgjor = true;
        run.engine.IncludeCreditCouponOnOppgjor = true;
    }

    // `rest` is what follows the issuing columns: the value, the last day, and the four of the redemption.
    void card(const std::string& id, const std::string& rest) {
        onTill("INSERT GAVEKORT VALUES ('" + id + "', '101', '1', '100', 17, " + rest + ", NULL)");
    }
    [[nodiscard]] QStringList batches(Requests& requests) { return requests.with(QStringLiteral("INSERT INTO POS")); }
};

TEST_F(Vouchers, NewCardIsCreatedWithItsIssue) {
    card("G1", "250.5, '20270302 12:30:00.123', NULL, NULL, NULL, NULL");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kCards),
              Rows({"G1 | 101 | 1 | 100 | 17 | 250.5 | 2027-03-02 12:30:00.123 | NULL | NULL | NULL | NULL"}));
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM POSGAVEKORT WHERE GA_SYNKTIDSPUNKT IS NULL"), Rows({"0"}));
    EXPECT_EQ(till(kUnmarked), Rows({"0"}));
    EXPECT_TRUE(run.log().contains(QStringLiteral("Importerer gavekort G1")));
}

TEST_F(Vouchers, CardRedeemedBeforeTheBackOfficeSawItIsWhole) {
    card("G1", "250, NULL, '102', '3', '205', 88");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kCards), Rows({"G1 | 101 | 1 | 100 | 17 | 250 | NULL | 102 | 3 | 205 | 88"}));
}

TEST_F(Vouchers, KnownCardKeepsItsIssueAndTakesItsRedemption) {
    inBackOffice(
        "INSERT POSGAVEKORT VALUES ('G1', '101', '1', '100', 17, 250, NULL, '103', '1', '300', 5, '20260101')");
    card("G1", "999, '20300101', '102', '3', '205', 88");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kCards), Rows({"G1 | 101 | 1 | 100 | 17 | 250 | NULL | 102 | 3 | 205 | 88"}));
}

TEST_F(Vouchers, SameNumberOfAnotherTillOrDepartmentIsAnotherCard) {
    for (const char* other : {"'101', '2'", "'102', '1'"}) {
        const std::string rest = std::string(other) + ", '100', 17, 1, NULL, NULL, NULL, NULL, NULL, '20260101')\n";
        inBackOffice("INSERT POSGAVEKORT VALUES ('G1', " + rest + "INSERT POSTilgodelapp VALUES ('T1', " + rest);
    }
    card("G1", "250, NULL, '103', '3', '205', 88");
    onTill("INSERT TILGODELAPP VALUES ('T1', '101', '1', '100', 4, 99.5, NULL, '103', '3', '205', 89, NULL)");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT RTRIM(GA_AVDNR), RTRIM(GA_KASSENR), GA_BELOP, GA_BT_ID FROM POSGAVEKORT ORDER BY "
                         "GA_AVDNR, GA_KASSENR"),
              Rows({"101 | 1 | 250 | 88", "101 | 2 | 1 | NULL", "102 | 1 | 1 | NULL"}));
    EXPECT_EQ(backOffice("SELECT RTRIM(TG_AVDNR), RTRIM(TG_KASSENR), TG_BELOP, TG_BT_ID FROM POSTilgodelapp ORDER BY "
                         "TG_AVDNR, TG_KASSENR"),
              Rows({"101 | 1 | 99.5 | 89", "101 | 2 | 1 | NULL", "102 | 1 | 1 | NULL"}));
}

TEST_F(Vouchers, CardWithoutRedemptionSetsFourNulls) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    card("G1", "250, NULL, NULL, NULL, NULL, NULL");
    Requests requests(run.chain.backOffice());
    EXPECT_EQ(execute(), QString());
    ASSERT_EQ(batches(requests).size(), 1);
    EXPECT_EQ(
        batches(requests).first().split(QStringLiteral("\r\n")),
        QStringList({"INSERT INTO POSGAVEKORT (GA_ID,GA_AVDNR,GA_KASSENR,GA_AN_ID,GA_OL_ID,GA_BELOP,GA_GYLDIGTIL,"
                     "GA_BET_AVDNR,GA_BET_KASSENR,GA_BET_AN_ID,GA_BT_ID,GA_SYNKTIDSPUNKT) SELECT "
                     "'G1','101','1','100',17,250,NULL,NULL,NULL,NULL,NULL,GETDATE()",
                     "WHERE NOT EXISTS ( SELECT 1 FROM POSGAVEKORT WHERE GA_ID='G1' AND GA_AVDNR='101' AND "
                     "GA_KASSENR='1')",
                     "UPDATE POSGAVEKORT set GA_BET_AVDNR=NULL,GA_BET_KASSENR=NULL,GA_BET_AN_ID=NULL,GA_BT_ID=NULL ",
                     "WHERE Ga_ID='G1' AND Ga_AvdNr='101' AND Ga_Kassenr = '1'"}));
}

TEST_F(Vouchers, CreditNoteIsCreatedAndRedeemed) {
    onTill(
        "INSERT TILGODELAPP VALUES ('T1', '101', '1', '100', 4, 99.5, '20270302', NULL, NULL, NULL, NULL, NULL)\n"
        "INSERT TILGODELAPP VALUES ('T2', '101', '1', '100', 5, 10, NULL, '101', '1', '100', 9, NULL)");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kNotes),
              Rows({"T1 | 101 | 1 | 100 | 4 | 99.5 | 2027-03-02 00:00:00.000 | NULL | NULL | NULL | NULL",
                    "T2 | 101 | 1 | 100 | 5 | 10 | NULL | 101 | 1 | 100 | 9"}));
    EXPECT_EQ(till("SELECT COUNT(*) FROM TILGODELAPP WHERE TG_SYNKTIDSPUNKT IS NULL"), Rows({"0"}));
    EXPECT_TRUE(run.log().contains(QStringLiteral("Importerer tilgodelapp T2")));
}

TEST_F(Vouchers, WithoutChangesNothingRunsAtTheBackOfficeAndTheMarkStillRuns) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    onTill("INSERT GAVEKORT VALUES ('G1', '101', '1', '100', 17, 250, NULL, NULL, NULL, NULL, NULL, '20260101')");
    Requests backOfficeRequests(run.chain.backOffice());
    Requests tillRequests(run.chain.till(0));
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(batches(backOfficeRequests), QStringList());
    EXPECT_EQ(tillRequests.count(QStringLiteral("UPDATE gavekort SET GA_SYNKTIDSPUNKT=GETDATE()")), 1);
    EXPECT_EQ(till("SELECT GA_SYNKTIDSPUNKT FROM GAVEKORT"), Rows({"2026-01-01 00:00:00.000"}));
}

struct BatchCase {
    int cards;
    std::vector<qsizetype> lines;
};

TEST_F(Vouchers, SixteenCardsAreABatch) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    const BatchCase cases[] = {{15, {60}}, {16, {64}}, {17, {64, 4}}, {32, {64, 64}}};
    Requests requests(run.chain.backOffice());
    int number = 0;
    for (const BatchCase& c : cases) {
        for (int i = 0; i < c.cards; ++i) card("G" + std::to_string(++number), "250, NULL, NULL, NULL, NULL, NULL");
        requests.forget();
        EXPECT_EQ(execute(), QString());
        std::vector<qsizetype> lines;
        for (const QString& batch : batches(requests)) lines.push_back(batch.split(u'\n').size());
        EXPECT_EQ(lines, c.lines) << c.cards;
    }
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM POSGAVEKORT"), Rows({std::to_string(number)}));
}

TEST_F(Vouchers, FailingFullBatchIsDroppedAndItsCardsMarked) {
    for (int i = 0; i < 16; ++i) card("G" + std::to_string(10 + i), "250, NULL, NULL, NULL, NULL, NULL");
    card("G5", "250, NULL, NULL, NULL, NULL, NULL");
    TORVIK_NEEDS_SANDBOX(run.chain);
    sandbox::FaultRule refuse;
    refuse.match.textContains = "INSERT INTO POSGAVEKORT";
    refuse.action = sandbox::FaultAction::Fail;
    refuse.message = {.number = 50000, .severity = 16, .state = 1, .text = "Made to fail"};
    run.chain.backOffice().faults().add(refuse);

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(run.errors().size(), 2);  // the server's, and the names of the cards
    EXPECT_EQ(backOffice("SELECT GA_ID FROM POSGAVEKORT"), Rows({"G5"}));
    EXPECT_EQ(till(kUnmarked), Rows({"0"}));
}

TEST_F(Vouchers, CancelThatEndsAFullBatchMarksNoCardAndTheNextRunBringsThemAll) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    for (int i = 1; i <= 16; ++i) card("G" + std::to_string(i), "250, NULL, NULL, NULL, NULL, NULL");
    sandbox::FaultRule slow;
    slow.match.textContains = "INSERT INTO POSGAVEKORT";
    slow.action = sandbox::FaultAction::Delay;
    slow.delay = std::chrono::seconds(2);
    run.chain.backOffice().faults().add(slow);
    Requests requests(run.chain.backOffice());
    {
        const db::Meanwhile window([&] {
            if (!batches(requests).isEmpty() && !run.engine.CancelRequest()) run.engine.SetCancelRequest(true);
        });
        run.engine.ExecuteOppgjor();
    }
    EXPECT_TRUE(run.log().contains(QStringLiteral("Avbrutt av bruker")));
    EXPECT_EQ(till(kUnmarked), Rows({"16"}));
    EXPECT_EQ(backOffice(kCards), Rows());

    run.engine.ExecuteOppgjor();
    EXPECT_EQ(till(kUnmarked), Rows({"0"}));
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM POSGAVEKORT"), Rows({"16"}));
}

TEST_F(Vouchers, FailingLastBatchRollsThePhaseBack) {
    card("G1", "250, NULL, NULL, NULL, NULL, NULL");
    inBackOffice("ALTER TABLE POSGAVEKORT ADD CONSTRAINT CK_Gavekort CHECK (GA_ID <> 'G1')");
    EXPECT_NE(execute(), QString());
    EXPECT_EQ(till(kUnmarked), Rows({"1"}));
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM PosOppgjor"), Rows({"0"}));
}

TEST_F(Vouchers, FailureLaterInThePhaseTakesTheMarkBack) {
    card("G1", "250, NULL, NULL, NULL, NULL, NULL");
    onTill("ALTER TABLE ORDRELINJE DROP COLUMN OL_KORREKSJON");
    EXPECT_NE(execute(), QString());
    EXPECT_EQ(till(kUnmarked), Rows({"1"}));
    EXPECT_EQ(backOffice(kCards), Rows());
}

TEST_F(Vouchers, StayOnTheTillUnlessIncluded) {
    card("G1", "250, NULL, NULL, NULL, NULL, NULL");
    onTill("INSERT TILGODELAPP VALUES ('T1', '101', '1', '100', 4, 99.5, NULL, NULL, NULL, NULL, NULL, NULL)");
    run.engine.IncludeGiftVoucherOnOppgjor = false;
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kCards), Rows());
    EXPECT_EQ(backOffice(kNotes).size(), 1u);
    EXPECT_EQ(till(kUnmarked), Rows({"1"}));
}

TEST_F(Vouchers, AreAChainsAlone) {
    card("G1", "250, NULL, NULL, NULL, NULL, NULL");
    run.engine.IsEnterprise = false;
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kCards), Rows());
    EXPECT_EQ(till(kUnmarked), Rows({"1"}));
}

// The till sells on while its cards are copied: what it issues or redeems meanwhile is marked with the others, and must
// have been copied as it then stands.
TEST_F(Vouchers, CardThatChangesWhileOthersAreCopiedReachesTheBackOffice) {
    card("G1", "250, NULL, NULL, NULL, NULL, NULL");
    card("G2", "300, NULL, NULL, NULL, NULL, NULL");
    bool changed = false;
    run.engine.Seam.pumpMessages = [&] {
        if (changed || !run.log().contains(QStringLiteral("Importerer gavekort G2"))) return;
        changed = true;
        onTill(
            "UPDATE GAVEKORT SET GA_BET_AVDNR = '102', GA_BET_KASSENR = '3', GA_BET_AN_ID = '205', GA_BT_ID = 88 "
            "WHERE GA_ID = 'G1'");
        card("G3", "99, NULL, NULL, NULL, NULL, NULL");
    };
    EXPECT_EQ(execute(), QString());
    ASSERT_TRUE(changed);
    EXPECT_EQ(backOffice(kCards), Rows({"G1 | 101 | 1 | 100 | 17 | 250 | NULL | 102 | 3 | 205 | 88",
                                        "G2 | 101 | 1 | 100 | 17 | 300 | NULL | NULL | NULL | NULL | NULL",
                                        "G3 | 101 | 1 | 100 | 17 | 99 | NULL | NULL | NULL | NULL | NULL"}));
    EXPECT_EQ(till(kUnmarked), Rows({"0"}));
    EXPECT_EQ(run.log().filter(QStringLiteral("Importerer gavekort")),
              QStringList({"Importerer gavekort G1", "Importerer gavekort G2", "Importerer gavekort G1",
                           "Importerer gavekort G3"}));
}

TEST_F(Vouchers, CardThatIsRedeemedElsewhereIsToldBeforeItIsWiped) {
    inBackOffice(
        "INSERT POSGAVEKORT VALUES ('G1', '101', '1', '100', 17, 250, NULL, '103', '1', '300', 5, '20260101')\n"
        "INSERT POSGAVEKORT VALUES ('G2', '101', '1', '100', 17, 250, NULL, NULL, NULL, NULL, NULL, '20260101')\n"
        "INSERT POSGAVEKORT VALUES ('G1', '101', '2', '100', 17, 250, NULL, '103', '1', '300', 5, '20260101')");
    card("G1", "250, NULL, NULL, NULL, NULL, NULL");
    card("G2", "250, NULL, NULL, NULL, NULL, NULL");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(
        run.log().filter(QStringLiteral("er ubrukt på kassen")),
        QStringList({"Kort G1 (avd. 101, kasse 1) er ubrukt på kassen, men innløst ved måldatabase: avd. 103, kasse 1, "
                     "ansatt 300, betaling 5. Innløsningen slettes"}));
    EXPECT_EQ(run.structured.lines().filter(QStringLiteral("WRN Kort {Kort} er ubrukt")).size(), 1);
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM POSGAVEKORT WHERE GA_KASSENR = '1' AND GA_BT_ID IS NULL"), Rows({"2"}));
}

TEST_F(Vouchers, DroppedBatchNamesItsCards) {
    for (int i = 1; i <= 17; ++i) card((i < 10 ? "G0" : "G") + std::to_string(i), "1, NULL, NULL, NULL, NULL, NULL");
    inBackOffice("ALTER TABLE POSGAVEKORT ADD CONSTRAINT CK_Gavekort CHECK (GA_ID <> 'G03')");
    EXPECT_EQ(execute(), QString());
    const QStringList named = run.errors().filter(QStringLiteral("Gavekort i gruppen som feilet: "));
    ASSERT_EQ(named.size(), 1);
    EXPECT_TRUE(
        named.first().startsWith(QStringLiteral("Gavekort i gruppen som feilet: G01 (avd. 101, kasse 1), G02 ")));
    EXPECT_EQ(named.first().count(QStringLiteral("kasse 1)")), 16);
}

TEST_F(Vouchers, QuotesInACardStandAsTheyAre) {
    onTill("INSERT GAVEKORT VALUES ('G''1 %1', '101', '1', '1''0', 17, 5, NULL, '1''2', '3', '2:5', 88, NULL)");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kCards), Rows({"G'1 %1 | 101 | 1 | 1'0 | 17 | 5 | NULL | 1'2 | 3 | 2:5 | 88"}));
}

}  // namespace
}  // namespace torvik::test
