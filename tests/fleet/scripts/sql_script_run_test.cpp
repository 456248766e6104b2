// A script over the tills: its batches, its rows, and whatever befalls one till.
#include "fleet/scripts/sql_script_run.h"

#include <gmock/gmock.h>

#include "engine/base/abort.h"
#include "engine/db/meanwhile.h"
#include "engine/db/query.h"
#include "tests/fleet/support/fleet_run.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const QStringList kPayForms{"UPDATE BETALINGFORM SET BF_SKUFF = 7"};

constexpr char kDrawers[] = "SELECT DISTINCT BF_SKUFF FROM BETALINGFORM WHERE BF_SKUFF = 7";

// The till that reads so of itself waits for a minute.
const QStringList kSecondTillWaits{"IF EXISTS (SELECT * FROM INNSTILLINGER WHERE IN_KASSENR = '2')",
                                   "  WAITFOR DELAY '00:00:20'", "GO", "UPDATE BETALINGFORM SET BF_SKUFF = 7"};

struct ScriptRows {
    QString till;
    QStringList names;
    QStringList rows;
    friend bool operator==(const ScriptRows& a, const ScriptRows& b) {
        return a.till == b.till && a.names == b.names && a.rows == b.rows;
    }
    friend void PrintTo(const ScriptRows& rows, std::ostream* out) {
        *out << rows.till.toStdString() << ": " << rows.names.join(u',').toStdString() << ": "
             << rows.rows.join(u'|').toStdString();
    }
};

class SqlScripts : public testing::Test {
protected:
    explicit SqlScripts(std::vector<int> versions = {213, 213}) : run(FleetRun::tills(std::move(versions))) {}

    void receiveRows() {
        run.engine.OnSqlScriptReturnDataEvent = [this](QObject* sender, db::Query& data, db::Query& roster) {
            EXPECT_EQ(sender, &run.engine);
            ScriptRows got{
                roster.text("Ik_Avdelingsnummer") + u'/' + roster.text("Ikk_Kassenummer"), data.FieldNames(), {}};
            for (; !data.Eof(); data.Next()) got.rows << data.Fields(0).AsString();
            received.push_back(got);
        };
    }
    [[nodiscard]] std::vector<std::string> drawers(std::size_t till) const { return run.tillRows(till, kDrawers); }

    FleetRun run;
    std::vector<ScriptRows> received;
};

TEST_F(SqlScripts, RunAtEveryTillAndTellOfEach) {
    QStringList progress;
    run.engine.OnProgress = [&](QObject*, int percent, const QString& text) {
        progress << QString::number(percent) + u' ' + text;
    };
    ExecuteSQLScript(run.parts(), kPayForms, false, false);
    for (std::size_t till : {0, 1}) EXPECT_THAT(drawers(till), ElementsAre("7")) << till;
    EXPECT_THAT(run.lines(), ElementsAre("STARTER SQL SCRIPT kjøring", "Antall kasser som skal behandles: 2",
                                         "Kjført SQL Script (avd. 101, kasse 1)",
                                         "Kjført SQL Script (avd. 101, kasse 2)", "fullføRT SQL SCRIPT kjøring"));
    EXPECT_THAT(progress,
                ElementsAre("50 Utført SQL script for 1 av 2 kasser", "100 Utført SQL script for 2 av 2 kasser"));
    EXPECT_THAT(run.errors(), IsEmpty());
    EXPECT_EQ(run.log().filter("Venter i").size(), 1) << "between the tills, not behind the last";
    EXPECT_TRUE(QFile::exists(run.folder.filePath("ZoppgjorLog.txt")));
}

TEST_F(SqlScripts, EmptyTheFrameAndForgetACancelOfBefore) {
    run.engine.ffraOppgjorStatus->SetStatus(1001, "101", "x", "1", ostHentet, oksNull, {}, QTime(0, 0), -1);
    run.engine.SetCancelRequest(true);
    ExecuteSQLScript(run.parts(), kPayForms, false, false);
    EXPECT_EQ(run.engine.ffraOppgjorStatus->memOppgjorStatus.RecordCount(), 0);
    EXPECT_THAT(drawers(1), ElementsAre("7"));
}

TEST_F(SqlScripts, GoNeverReachesTheServer) {
    run.chain.runInTill(0,
                        "CREATE PROCEDURE Husk @Hva varchar(10) = 'intet' AS UPDATE BETALINGFORM SET BF_NAVN = @Hva");
    run.chain.runInTill(1,
                        "CREATE PROCEDURE Husk @Hva varchar(10) = 'intet' AS UPDATE BETALINGFORM SET BF_NAVN = @Hva");
    // With the separator in them the first batch would be wrong, and the second would hand it over.
    ExecuteSQLScript(run.parts(), {"UPDATE BETALINGFORM SET BF_NAVN = 'x'", "GO", "EXEC Husk", " go "}, false, false);
    EXPECT_THAT(run.errors(), IsEmpty());
    for (std::size_t till : {0, 1})
        EXPECT_THAT(run.tillRows(till, "SELECT DISTINCT rtrim(BF_NAVN) FROM BETALINGFORM"), ElementsAre("intet"));
}

TEST_F(SqlScripts, FailedBatchStopsNeitherTheTillNorTheScript) {
    ExecuteSQLScript(run.parts(),
                     {"UPDATE BETALINGFORM SET BF_SKUFF = 3", "SELECT * FROM FINNES_IKKE", "GO", "EXEC HELLER_IKKE",
                      "GO", "UPDATE BETALINGFORM SET BF_SKUFF = 7"},
                     false, false);
    for (std::size_t till : {0, 1}) EXPECT_THAT(drawers(till), ElementsAre("7")) << till;
    const QStringList errors = run.errors();
    ASSERT_EQ(errors.size(), 4);
    for (int till : {0, 1}) {
        EXPECT_THAT(errors[2 * till].toStdString(), HasSubstr("Invalid object name 'FINNES_IKKE'"));
        EXPECT_THAT(errors[2 * till + 1].toStdString(), HasSubstr("Could not find stored procedure 'HELLER_IKKE'"));
    }
    EXPECT_EQ(run.log().filter("Kjført SQL Script").size(), 2);
}

TEST_F(SqlScripts, BatchWithoutAStatementIsNothingToRun) {
    const QStringList nothing{"", "GO", "GO", "  "};
    ExecuteSQLScript(run.parts(), nothing, false, false);
    ExecuteSQLScript(run.parts(), {}, false, false);
    EXPECT_THAT(run.errors(), IsEmpty());
    EXPECT_EQ(run.log().filter("Kjført SQL Script").size(), 4);
}

TEST_F(SqlScripts, ColonsAreParametersOnlyWhereTheCallerSaysSo) {
    const QStringList script{"DECLARE @a varchar(20)", "IF 1 = 0 GOTO slutt", "SET @a = 'kl. 10:a'",
                             "UPDATE BETALINGFORM SET BF_NAVN = @a", "slutt:SET @a = NULL"};
    ExecuteSQLScript(run.parts(), script, false, false);
    EXPECT_THAT(run.errors(), IsEmpty());
    EXPECT_THAT(run.tillRows(0, "SELECT DISTINCT rtrim(BF_NAVN) FROM BETALINGFORM"), ElementsAre("kl. 10:a"));
    ExecuteSQLScript(run.parts(), script, false, true);
    EXPECT_EQ(run.errors().size(), 2) << "a mark in the place of the label is no statement";
}

TEST_F(SqlScripts, RowsComeBackTillByTill) {
    receiveRows();
    ExecuteSQLScript(run.parts(), {"SELECT rtrim(IN_KASSENR) Kasse, IN_NAVN FROM INNSTILLINGER"}, true, false);
    EXPECT_THAT(received, ElementsAre(ScriptRows{"101/1", {"Kasse", "IN_NAVN"}, {"1"}},
                                      ScriptRows{"101/2", {"Kasse", "IN_NAVN"}, {"2"}}));
    EXPECT_EQ(run.log().filter("Kjført SQL Script").size(), 2);
    EXPECT_THAT(run.errors(), IsEmpty());
}

TEST_F(SqlScripts, ScriptWithRowsIsOneCommandGoAndAll) {
    receiveRows();
    ExecuteSQLScript(run.parts(), {"DECLARE @n int", "GO", "SET @n = 5", "go", "SELECT @n AS n"}, true, false);
    EXPECT_THAT(received, ElementsAre(ScriptRows{"101/1", {"n"}, {"5"}}, ScriptRows{"101/2", {"n"}, {"5"}}));
}

TEST_F(SqlScripts, RowsMayBeWantedByNobody) {
    ExecuteSQLScript(run.parts(), {"SELECT 1"}, true, false);
    EXPECT_EQ(run.log().filter("Kjført SQL Script").size(), 2);
}

TEST_F(SqlScripts, ScriptThatGivesNoRowsIsTheTillsFailureAndTheNextFollows) {
    receiveRows();
    ExecuteSQLScript(run.parts(), kPayForms, true, false);
    EXPECT_THAT(received, IsEmpty());
    const QString failure = QStringLiteral("En feil oppstod i rutinen SQL Script: The statement did not return rows");
    ASSERT_EQ(run.errors().size(), 2);
    for (const QString& error : run.errors()) EXPECT_THAT(error.toStdString(), StartsWith(failure.toStdString()));
    EXPECT_THAT(run.log().filter("Kjført SQL Script"), IsEmpty());
    EXPECT_THAT(drawers(1), ElementsAre("7")) << "it has run all the same";
}

TEST_F(SqlScripts, TransactionLeftOpenIsTakenBackAndTold) {
    ExecuteSQLScript(run.parts(), {"BEGIN TRANSACTION", "GO", "UPDATE BETALINGFORM SET BF_SKUFF = 7"}, false, false);
    EXPECT_THAT(drawers(0), IsEmpty());
    EXPECT_THAT(run.errors(),
                ElementsAre("Skriptet fullførte ikke transaksjonen sin, og den tas tilbake (avd. 101, kasse 1)",
                            "Skriptet fullførte ikke transaksjonen sin, og den tas tilbake (avd. 101, kasse 2)"));
}

TEST_F(SqlScripts, TransactionOfAFailedTillHoldsNoLocks) {
    ExecuteSQLScript(run.parts(), {"BEGIN TRANSACTION", "UPDATE BETALINGFORM SET BF_SKUFF = 7"}, true, false);
    EXPECT_EQ(run.errors().size(), 2);
    EXPECT_FALSE(run.source.Connected());
    run.chain.runInTill(1, "UPDATE BETALINGFORM SET BF_SKUFF = 1");
    EXPECT_THAT(drawers(1), IsEmpty());
}

TEST_F(SqlScripts, WaitTenMinutesForABatchUnlessToldOtherwise) {
    EXPECT_EQ(kScriptTimeout, 600);
}

class SqlScriptsAtThreeTills : public SqlScripts {
protected:
    SqlScriptsAtThreeTills() : SqlScripts({213, 213, 213}) {}
};

TEST_F(SqlScriptsAtThreeTills, BatchThatTakesTooLongEndsAndTheRestFollows) {
    ExecuteSQLScript(run.parts(), kSecondTillWaits, false, false, 1);
    ASSERT_EQ(run.errors().size(), 1);
    EXPECT_THAT(run.errors().first().toStdString(), HasSubstr("Timeout expired"));
    for (std::size_t till : {0, 1, 2}) EXPECT_THAT(drawers(till), ElementsAre("7")) << till;
}

TEST_F(SqlScriptsAtThreeTills, QueryThatTakesTooLongIsItsTillsFailureAlone) {
    receiveRows();
    ExecuteSQLScript(
        run.parts(),
        {"IF EXISTS (SELECT * FROM INNSTILLINGER WHERE IN_KASSENR = '2') WAITFOR DELAY '00:00:20'", "SELECT 1 AS n"},
        true, false, 1);
    EXPECT_THAT(received, ElementsAre(ScriptRows{"101/1", {"n"}, {"1"}}, ScriptRows{"101/3", {"n"}, {"1"}}));
    ASSERT_EQ(run.errors().size(), 1);
    EXPECT_THAT(run.errors().first().toStdString(),
                AllOf(StartsWith("En feil oppstod i rutinen SQL Script: "), HasSubstr("Timeout expired")));
}

TEST_F(SqlScriptsAtThreeTills, TillThatNeverAnswersEndsByItsTimeOut) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.chain.till(1).faults().add({.match = {.textContains = "BF_SKUFF"}, .action = sandbox::FaultAction::Hang});
    ExecuteSQLScript(run.parts(), kPayForms, false, false, 1);
    EXPECT_GE(run.errors().size(), 1);
    for (std::size_t till : {0, 2}) EXPECT_THAT(drawers(till), ElementsAre("7")) << till;
    EXPECT_THAT(drawers(1), IsEmpty());
}

TEST_F(SqlScriptsAtThreeTills, CancelEndsTheBatchUnderWayAndTheRun) {
    const db::Meanwhile asked([this] {
        if (run.log().contains("Kjført SQL Script (avd. 101, kasse 1)")) run.engine.SetCancelRequest(true);
    });
    EXPECT_THROW(ExecuteSQLScript(run.parts(), kSecondTillWaits, false, false), EAbort);
    EXPECT_THAT(drawers(0), ElementsAre("7"));
    for (std::size_t till : {1, 2}) EXPECT_THAT(drawers(till), IsEmpty()) << till;
    EXPECT_THAT(
        run.errors(),
        ElementsAre(
            QStringLiteral("En feil oppstod i rutinen SQL Script: %1").arg(QString::fromUtf8(EAbort().what()))));
    EXPECT_EQ(run.lines().mid(run.lines().size() - 2),
              (QStringList{run.errors().last(),
                           QStringLiteral("Ferdige kasser da kjøringen ble avbrutt: avd. 101 kasse 1")}));
    EXPECT_EQ(run.lines().count("Avbrutt av bruker"), 1);
}

TEST_F(SqlScriptsAtThreeTills, CancelBetweenTillsEndsTheRunBehindTheTill) {
    run.engine.OnProgress = [this](QObject*, int, const QString&) { run.engine.SetCancelRequest(true); };
    EXPECT_THROW(ExecuteSQLScript(run.parts(), kPayForms, false, false), EAbort);
    EXPECT_THAT(drawers(0), ElementsAre("7"));
    EXPECT_THAT(drawers(1), IsEmpty());
    EXPECT_EQ(run.log().mid(run.log().size() - 2),
              (QStringList{QStringLiteral("Avbrutt av bruker"),
                           QStringLiteral("Ferdige kasser da kjøringen ble avbrutt: avd. 101 kasse 1")}));
}

class SqlScriptsAtFiveTills : public SqlScripts {
protected:
    SqlScriptsAtFiveTills() : SqlScripts({213, 213, 213, 213, 213}) {}
};

constexpr char kUnreachable[] = "Klarte ikke å koble til (avd. 101, kasse ";

TEST_F(SqlScriptsAtFiveTills, StopAtNone) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.spoilTills("INSERT INTO BINARYOBJECT");
    ExecuteSQLScript(run.parts(),
                     {"INSERT INTO BINARYOBJECT (BO_ID, BO_TYPE, BO_OBJECT) VALUES (1, 'x', 0xE6F800)", "GO",
                      "UPDATE BETALINGFORM SET BF_SKUFF = 7"},
                     false, false);
    run.allowLogins();
    EXPECT_THAT(run.tillRows(0, "SELECT BO_ID, BO_TYPE, BO_OBJECT FROM BINARYOBJECT"), ElementsAre("1 | x | 0xE6F800"));
    EXPECT_THAT(drawers(0), ElementsAre("7"));
    EXPECT_THAT(drawers(2), IsEmpty());
    EXPECT_THAT(run.tillRows(3, "SELECT * FROM BINARYOBJECT"), IsEmpty());
    EXPECT_THAT(drawers(3), IsEmpty()) << "the connection is gone, and with it the rest of the script";
    EXPECT_THAT(drawers(4), ElementsAre("7")) << "the table that is missing is another batch's";

    const QStringList errors = run.errors();
    EXPECT_EQ(errors[0], QString::fromUtf8(kUnreachable) + "2)");
    EXPECT_EQ(errors[1], QString::fromUtf8(kUnreachable) + "3)");
    EXPECT_THAT(errors[2].toStdString(), HasSubstr("connection"));
    EXPECT_THAT(errors.last().toStdString(), HasSubstr("Invalid object name 'BINARYOBJECT'"));
    EXPECT_EQ(run.lines().last(), "fullføRT SQL SCRIPT kjøring");
}

TEST_F(SqlScriptsAtFiveTills, GiveTheRowsOfThoseThatAnswer) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    receiveRows();
    run.spoilTills("FROM BINARYOBJECT");
    ExecuteSQLScript(run.parts(), {"SELECT COUNT(*) n FROM BINARYOBJECT"}, true, false);
    EXPECT_THAT(received, ElementsAre(ScriptRows{"101/1", {"n"}, {"0"}}));
    const QStringList errors = run.errors();
    ASSERT_EQ(errors.size(), 4);
    for (int away : {0, 1}) EXPECT_EQ(errors[away], QString::fromUtf8(kUnreachable) + QString::number(away + 2) + ")");
    for (int failed : {2, 3})
        EXPECT_THAT(errors[failed].toStdString(), StartsWith("En feil oppstod i rutinen SQL Script: "));
    EXPECT_THAT(errors[3].toStdString(), HasSubstr("Invalid object name 'BINARYOBJECT'"));
}

TEST_F(SqlScriptsAtFiveTills, TellNoPassword) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.spoilTills("BINARYOBJECT");
    ExecuteSQLScript(run.parts(), {"SELECT * FROM BINARYOBJECT"}, true, false);
    const QString password = QString::fromUtf8(sandbox::chain::DemoChain::kTillPassword);
    for (const QString& line : run.log() + run.errors()) EXPECT_FALSE(line.contains(password)) << line.toStdString();
}

}  // namespace
}  // namespace torvik::test
