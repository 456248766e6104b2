// What a settlement run makes of tills that cannot be fetched, and of a back office that is lost on the way: each is
// reported with its words, the others are fetched whole, and the next good run makes up for it.
#include <gtest/gtest.h>

#include "engine/db/query.h"
#include "engine/roster/avdeling.h"
#include "engine/status/oppgjor_status.h"
#include "tests/support/chain_run.h"
#include "tests/support/chain_session.h"

namespace torvik::test {
namespace {

// Departments 101 to 103; tills 0 to 4 are 101/1, 102/1, 103/1, 101/2, 102/2.
constexpr std::size_t kFaulty = 1;

std::set<std::size_t> allBut(std::size_t till, std::size_t count = 5) {
    std::set<std::size_t> tills;
    for (std::size_t i = 0; i < count; ++i)
        if (i != till) tills.insert(i);
    return tills;
}

int iconOf(ChainRun& run, const QString& department, const QString& till) {
    const OppgjorStatusTable& table = run.engine.ffraOppgjorStatus->memOppgjorStatus;
    for (int row = 0; row < table.RecordCount(); ++row)
        if (table.Row(row).Avdnr == department && table.Row(row).Kassenr.trimmed() == till)
            return table.Row(row).StatusIcon;
    return -1;
}

TEST(SettlementFaults, StoppedTillDoesNotStopTheOthers) {
    ChainRun run;
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.chain.till(kFaulty).stopListening();

    run.fetch();

    EXPECT_TRUE(run.errors().contains(QStringLiteral("Klarte ikke å koble til avdelingsnummer 102 kassenummer 1)")))
        << run.errors().join(u'\n').toStdString();
    EXPECT_TRUE(run.posted(allBut(kFaulty)));
    run.chain.till(kFaulty).startListening();
    run.fetch();
    EXPECT_TRUE(run.postedWhole());
}

TEST(SettlementFaults, TillWithAnOpenTransactionIsLeftAlone) {
    ChainRun run;
    TORVIK_NEEDS_SANDBOX(run.chain);
    const auto busy = tillSession(run.chain, kFaulty);
    db::Query change(busy.get());
    change.SQL = QStringList{QStringLiteral("BEGIN TRANSACTION"),
                             QStringLiteral("UPDATE INNSTILLINGER SET IN_NAVN = 'opptatt'")};
    change.ExecSQL();

    run.fetch();

    EXPECT_TRUE(run.errors().contains(QStringLiteral(
        "Henter ikke oppgjør (avd. 102, kasse 1), fordi den er i en transaksjon. Kanskje kasseoppgjøret ikke er avsluttet")))
        << run.errors().join(u'\n').toStdString();
    EXPECT_TRUE(run.posted(allBut(kFaulty)));
    busy->Close();
    run.fetch();
    EXPECT_TRUE(run.postedWhole());
}

TEST(SettlementFaults, WrongPasswordIsAFailedConnectionAndNamesNoPassword) {
    ChainRun run;
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.chain.runInBackOffice(
        "UPDATE Internkundekasse SET Ikk_Passord = 'hemmelig' WHERE Ikk_Ik_Ku_Id = 1002 AND Ikk_Kassenummer = '1'");

    run.fetch();

    EXPECT_TRUE(run.errors().contains(QStringLiteral("Klarte ikke å koble til avdelingsnummer 102 kassenummer 1)")));
    EXPECT_EQ(run.log().filter(QStringLiteral("hemmelig")), QStringList());
    EXPECT_EQ(run.structured.lines().filter(QStringLiteral("hemmelig")), QStringList());
    EXPECT_TRUE(run.posted(allBut(kFaulty)));
}

TEST(SettlementFaults, TillThatLacksAColumnFailsAtItsStepAndKeepsItsData) {
    ChainRun run;
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.chain.runInTill(kFaulty, "ALTER TABLE ORDRELINJE DROP COLUMN OL_KORREKSJON");

    run.fetch();

    EXPECT_EQ(
        run.errors()
                .filter(QStringLiteral(
                    "Feil ved overføring til avd 1002 kassenr 1. Ordrelinje feilet (p=15): Invalid column name 'OL_KORREKSJON'."))
                .size() > 0,
        true)
        << run.errors().join(u'\n').toStdString();
    EXPECT_TRUE(run.posted(allBut(kFaulty)));
    EXPECT_EQ(run.tillValue(kFaulty, "SELECT COUNT(*) FROM OPPGJOR WHERE OP_OPPDATERTTIDSPUNKT IS NOT NULL"), "0");
    EXPECT_EQ(iconOf(run, QStringLiteral("102"), QStringLiteral("1")), 3);
    EXPECT_EQ(iconOf(run, QStringLiteral("101"), QStringLiteral("1")), 1);

    run.chain.runInTill(kFaulty, "ALTER TABLE ORDRELINJE ADD OL_KORREKSJON bit NULL");
    run.fetch();
    EXPECT_TRUE(run.postedWhole());
}

TEST(SettlementFaults, TemporarySettlementHoldsTheTillBack) {
    ChainRun run;
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.chain.runInTill(
        kFaulty,
        "INSERT OPPGJOR (OP_ID, OP_AN_ID, OP_TIDSPUNKT, OP_TYPE) SELECT 99, MIN(AN_ID), GETDATE(), 'MIDLERTIDIG' FROM ANSATT");
    run.fetch();
    EXPECT_TRUE(run.errors().contains(QStringLiteral(
        "Henter ikke oppgjør (avd. 102, kasse 1), fordi den har midlertidige oppgjør (OP_TYPE=MIDLERTIDIG)")))
        << run.errors().join(u'\n').toStdString();
    EXPECT_TRUE(run.posted(allBut(kFaulty)));
}

// The requests of a run at which the back office's session is cut: each once, in a run of its own.
class LostBackOffice : public testing::TestWithParam<const char*> {};

TEST_P(LostBackOffice, LosesNothingAndTakesNothingTwice) {
    ChainRun run({.departments = 2, .tills = 3, .days = 2});
    TORVIK_NEEDS_SANDBOX(run.chain);
    sandbox::FaultRule cut;
    cut.match.textContains = GetParam();
    cut.action = sandbox::FaultAction::DropBefore;
    run.chain.backOffice().faults().add(cut);

    run.fetch();
    EXPECT_FALSE(run.errors().isEmpty());

    run.chain.backOffice().faults().clear();
    run.fetch();
    EXPECT_TRUE(run.postedWhole());
    for (std::size_t till = 0; till < 3; ++till)
        EXPECT_EQ(run.tillValue(
                      till, "SELECT COUNT(*) FROM OPPGJOR WHERE OP_TYPE = 'NORMAL' AND OP_OPPDATERTTIDSPUNKT IS NULL"),
                  "0");
}

INSTANTIATE_TEST_SUITE_P(AtEachStep, LostBackOffice,
                         testing::Values("dl_tidspunkt > dateadd", "Temp_Betalingform_Import", "NEWID()",
                                         "POSOPPGJOR WHERE", "Temp_Ordre_Import", "ExecuteDtsFromPos", "DeleteFromTemp",
                                         "delete from dts_logg", "posbeholdningstransaksjoner", "Ik_Fakturaregel"),
                         [](const auto& test) { return "Request" + std::to_string(test.index); });

TEST(SettlementFaults, AfterALostBackOfficeTheOtherTillsOfTheSameRunAreFetched) {
    ChainRun run;
    TORVIK_NEEDS_SANDBOX(run.chain);
    sandbox::FaultRule cut;
    cut.match.textContains = "ExecuteDtsFromPos";
    cut.skip = 1;
    cut.action = sandbox::FaultAction::DropAfter;
    run.chain.backOffice().faults().add(cut);

    run.fetch();

    // The roster goes by department number: 101/1, 101/2, 102/1 ...; the second one is till 3.
    EXPECT_TRUE(run.posted(allBut(3)));
    run.fetch();
    EXPECT_TRUE(run.postedWhole());
}

}  // namespace
}  // namespace torvik::test
