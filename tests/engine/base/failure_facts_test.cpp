// What an operator is told of a failure: facts from every layer of the exception, and the words for each kind of it.
#include "engine/base/failure_facts.h"

#include <gtest/gtest.h>

#include <QSet>

#include "engine/base/step_error.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

using Why = db::ConnectionError::Reason;

db::StatementError refused() {
    return {{{.Text = QStringLiteral("Cannot insert the value NULL into column 'Va_Id'"), .Number = 515, .Line = 2}},
            QStringLiteral("SET NOCOUNT ON\nINSERT INTO dbo.Temp_Ordre_Import (Or_Id) VALUES (1)")};
}

// The failure as it comes up: from the server, through a step, through the till.
template <typename Failure>
FailureFacts throughTwoLayers(const Failure& failure) {
    try {
        try {
            try {
                throw failure;
            } catch (const std::exception&) {
                std::throw_with_nested(StepError(QStringLiteral("Ordre"), QStringLiteral("Ordre feilet")));
            }
        } catch (const std::exception&) {
            std::throw_with_nested(EngineError(QStringLiteral("Feil ved henting")));
        }
    } catch (const std::exception& outermost) {
        return FactsOf(outermost);
    }
}

TEST(FailureFacts, ComeFromEveryLayerOfTheFailure) {
    EXPECT_EQ(throughTwoLayers(refused()),
              (FailureFacts{.Kind = FailureKind::Refused,
                            .Connection = std::nullopt,
                            .Text = QStringLiteral("Feil ved henting"),
                            .Step = QStringLiteral("Ordre"),
                            .Table = QStringLiteral("dbo.Temp_Ordre_Import"),
                            .ServerText = QStringLiteral("Cannot insert the value NULL into column 'Va_Id'"),
                            .Number = 515}));
}

TEST(FailureFacts, OfAFailureThatTheProgramFoundAreItsTextAlone) {
    EXPECT_EQ(FactsOf(EngineError(QStringLiteral("Det ble oppdatert 0 rader. Forventet 1"))),
              (FailureFacts{.Text = QStringLiteral("Det ble oppdatert 0 rader. Forventet 1")}));
    EXPECT_EQ(FactsOf(EngineError(QStringLiteral("selv"))).Reason(), QString());
}

TEST(FailureFacts, InnermostStepIsNamed) {
    try {
        try {
            throw StepError(QStringLiteral("Betaling"), QStringLiteral("a"));
        } catch (const std::exception&) {
            std::throw_with_nested(StepError(QStringLiteral("overføring"), QStringLiteral("b")));
        }
    } catch (const std::exception& failure) {
        EXPECT_EQ(FactsOf(failure).Step, QStringLiteral("Betaling"));
    }
}

TEST(FailureFacts, EachReasonOfAFailedConnectionHasWordsOfItsOwn) {
    QSet<QString> reasons;
    QSet<QString> remedies;
    for (const Why why : {Why::UnknownHost, Why::Unreachable, Why::LoginFailed, Why::UnknownDatabase, Why::NoDriver,
                          Why::Lost, Why::Refused}) {
        const FailureFacts facts = throughTwoLayers(db::ConnectionError(why, QStringLiteral("nei")));
        EXPECT_EQ(facts.Connection, why);
        reasons << facts.Reason();
        remedies << facts.Remedy();
    }
    EXPECT_EQ(reasons.size(), 7);
    EXPECT_EQ(remedies.size(), 7);
    EXPECT_EQ(throughTwoLayers(db::ConnectionError(Why::LoginFailed, QStringLiteral("nei"))).Reason(),
              QStringLiteral("Feil brukernavn eller passord"));
}

TEST(FailureFacts, NextRunLooksFirstWhereACommitHadNoAnswer) {
    const db::ConnectionError lost(Why::Lost, QStringLiteral("borte"));
    const QString looks = throughTwoLayers(db::CommitInDoubt(QStringLiteral("uten svar"), lost, false)).NextRun();
    EXPECT_TRUE(looks.contains(QStringLiteral("Ser først etter i begge ender"))) << looks.toStdString();
    EXPECT_EQ(FactsOf(db::ConnectionError(Why::LoginFailed, QStringLiteral("nei"))).NextRun(),
              QStringLiteral("Prøver kassen på nytt. Den er ikke rørt."));
    EXPECT_FALSE(FactsOf(lost).NextRun().contains(QStringLiteral("ikke rørt"))) << "something had been done";
    EXPECT_EQ(FactsOf(refused()).NextRun(), FactsOf(lost).NextRun());
}

struct TableCase {
    const char* statement;
    int line;
    const char* table;
};

TEST(FailureFacts, TableIsTheFirstThatTheFailedLineNames) {
    constexpr TableCase cases[] = {
        {"SELECT * FROM Ordre (NOLOCK) WHERE Or_Id=1", 1, "Ordre"},
        {"update Oppgjor set OP_STATUS=1 where Op_Id=1\nSELECT @@ROWCOUNT", 1, "Oppgjor"},
        {"update Oppgjor set OP_STATUS=1\ndelete from [dbo].[Betaling]", 2, "[dbo].[Betaling]"},
        {"if exists ( select 1 from sysobjects where name = 'x' )\ndelete from posbeholdning", 1, "posbeholdning"},
        {"INSERT BULK Temp_Vare_Import (Va_Id int)", 0, "Temp_Vare_Import"},
        {"exec dbo.GetID 'Or_ID'", 1, "dbo.GetID"},
        {"DECLARE @svar int EXEC @svar = ExecuteDtsFromPos @UnId = ? SELECT @svar", 1, "ExecuteDtsFromPos"},
        {"{CALL ExecuteDtsFromPos (?)}", 1, "ExecuteDtsFromPos"},
        {"SELECT Æ_Id FROM Ærlig", 1, "Ærlig"},
        {"INSERT INTO Vare (Va_Id) VALUES (1)", 40, "Vare"},  // the line is a procedure's
        {"SELECT 1", 1, ""},
        {"", 1, ""},
    };
    for (const TableCase& each : cases)
        EXPECT_EQ(TableOf(QString::fromUtf8(each.statement), each.line), QString::fromUtf8(each.table))
            << each.statement;
}

}  // namespace
}  // namespace torvik
