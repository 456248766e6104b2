// A counted item that the back office does not know: what is asked, what the answers mean, and what is done where
// nobody can be asked.
#include "inbound/stock_counts/counted_item.h"

#include <QRegularExpression>

#include "engine/base/abort.h"
#include "tests/inbound/stock_counts/counting_chain.h"

namespace torvik::test {
namespace {

// One till with one counted line, of the item U1 that the back office has lost.
class CountedItem : public CountingChain {
protected:
    CountedItem() : CountingChain(1, 1) {
        onTill(
            0,
            "INSERT VARE (VA_ID, VA_NAVN, VA_PRIS) VALUES ('U1', 'Ukjent', 1) "
            "DELETE ORDRELINJE WHERE OL_OR_ID IN (SELECT OR_ID FROM ORDRE WHERE OR_OP_ID = 2) AND OL_ID <> (SELECT "
            "MIN(OL_ID) FROM ORDRELINJE JOIN ORDRE ON OL_OR_ID = OR_ID WHERE OR_OP_ID = 2) "
            "UPDATE ORDRELINJE SET OL_VA_ID = 'U1', OL_ANTALL = 5 WHERE OL_OR_ID IN (SELECT OR_ID FROM ORDRE WHERE OR_OP_ID = "
            "2)");
        inBackOffice("INSERT Vare (Va_Id, Va_Navn, Va_Kostpris, Va_Pris) VALUES ('E1', 'Erstatning', 1, 2)");
        run.engine.OnAskText = [this](const QString& caption, const QString& prompt, const QString& first) {
            asked << QStringLiteral("%1|%2|%3").arg(caption, prompt, first);
            return answers.isEmpty() ? std::nullopt : answers.takeFirst();
        };
        run.engine.OnAskOperator = [this](const QString& text) {
            asked << text;
            return !confirmations.isEmpty() && confirmations.takeFirst();
        };
        run.engine.OnAddLog = [this](QObject*, const QString& text, int level, const QDateTime&) {
            told << QStringLiteral("%1 %2").arg(level).arg(text);
        };
    }
    [[nodiscard]] Rows counts() const {
        return run.backOfficeRows("SELECT RTRIM(Vt_Va_Id), Vt_Antall FROM Varetelling");
    }
    [[nodiscard]] bool isMarked() const { return marks(0)[1] == "2 | VARETELLING | ja | 0"; }

    QList<std::optional<QString>> answers;
    QList<bool> confirmations;
    QStringList asked;
    QStringList told;
};

const QString kQuestion = QStringLiteral("Varenr. U1 finnes ikke|Nytt varenummer|U1");
const QString kBreakOff = QStringLiteral("Vil du avbryte import av varetellingen");

TEST_F(CountedItem, IsAskedForUntilItIsKnown) {
    answers = {QStringLiteral("U2"), QStringLiteral(" E1 ")};
    count();
    EXPECT_EQ(asked, (QStringList{kQuestion, QStringLiteral("Varenr. U2 finnes ikke|Nytt varenummer|U2")}));
    EXPECT_EQ(counts(), Rows{"E1 | 5"});
    EXPECT_TRUE(isMarked());
}

TEST_F(CountedItem, EmptyAnswerTriesTheReplacementForSoldItems) {
    run.engine.OnAskText = [this](const QString& caption, const QString& prompt,
                                  const QString& first) -> std::optional<QString> {
        asked << QStringLiteral("%1|%2|%3").arg(caption, prompt, first);
        run.engine.ReplacementVa_Id = QStringLiteral("E1");  // set meanwhile in the window
        return QString();
    };
    count();
    EXPECT_EQ(asked, QStringList{kQuestion});
    EXPECT_EQ(counts(), Rows{"E1 | 5"});
}

TEST_F(CountedItem, NoToBreakingOffAsksAgain) {
    answers = {std::nullopt, QStringLiteral("E1")};
    confirmations = {false};
    count();
    EXPECT_EQ(asked, (QStringList{kQuestion, kBreakOff, kQuestion}));
    EXPECT_EQ(counts(), Rows{"E1 | 5"});
}

TEST_F(CountedItem, YesToBreakingOffLeavesTheTillAsItWas) {
    answers = {std::nullopt};
    confirmations = {true};
    count();
    EXPECT_EQ(asked, (QStringList{kQuestion, kBreakOff}));
    EXPECT_EQ(run.errors().last(), QStringLiteral("Import av varetelling avbrutt av bruker"));
    EXPECT_EQ(counts(), Rows{});
    EXPECT_FALSE(isMarked());
    expectNoPair();
}

// The window closes its questions when it is closed itself.
TEST_F(CountedItem, CancelWhileItIsAskedForEndsTheRun) {
    for (const bool atConfirmation : {false, true}) {
        asked.clear();
        run.engine.SetCancelRequest(false);
        run.engine.Cancelled = false;
        run.engine.OnAskText = [&](const QString&, const QString&, const QString&) -> std::optional<QString> {
            asked << QStringLiteral("?");
            if (!atConfirmation) run.engine.SetCancelRequest(true);
            return std::nullopt;
        };
        run.engine.OnAskOperator = [&](const QString& text) {
            asked << text;
            run.engine.SetCancelRequest(true);
            return false;
        };
        EXPECT_THROW(count(), EAbort);
        EXPECT_EQ(asked,
                  atConfirmation ? (QStringList{QStringLiteral("?"), kBreakOff}) : QStringList{QStringLiteral("?")});
        EXPECT_FALSE(isMarked());
        expectNoPair();
    }
}

TEST_F(CountedItem, ServiceTakesTheReplacementForIt) {
    run.engine.SetRunAsService(true);
    run.engine.ReplacementForNonExistingItemNumber = QStringLiteral("E1");
    count();
    run.engine.SetRunAsService(false);
    EXPECT_EQ(asked, QStringList());
    EXPECT_EQ(counts(), Rows{"E1 | 5"});
    EXPECT_EQ(told.filter(QStringLiteral("Erstattet")),
              QStringList{QStringLiteral("2 Varenr. E1 finnes ikke. Erstattet med E1")});
}

TEST_F(CountedItem, ServiceWithoutAReplacementRefusesTheTill) {
    run.engine.SetRunAsService(true);
    const QString failures[] = {
        QStringLiteral("Import av varetelling avbrutt da varenummeret U1 ikke finnes i Torvik"),
        QStringLiteral("Import av varetelling avbrutt da varenummeret U9 ikke finnes i Torvik")};
    count();
    run.engine.ReplacementForNonExistingItemNumber = QStringLiteral("U9");  // as unknown itself
    count();
    run.engine.SetRunAsService(false);
    EXPECT_EQ(run.errors().filter(QStringLiteral("Import av")).filter(QRegularExpression(QStringLiteral("^Import"))),
              (QStringList{failures[0], failures[1]}));
    EXPECT_EQ(asked, QStringList());
    EXPECT_FALSE(isMarked());
}

TEST_F(CountedItem, UnattendedProgramAsksAsLittleAsAService) {
    run.engine.OnIsAttended = [] { return false; };
    count();
    EXPECT_EQ(asked, QStringList());
    EXPECT_EQ(run.errors().last(),
              QStringLiteral("Import av varetelling avbrutt da varenummeret U1 ikke finnes i Torvik"));
    run.engine.OnIsAttended = [] { return true; };
    answers = {QStringLiteral("E1")};
    count();
    EXPECT_EQ(counts(), Rows{"E1 | 5"});
}

TEST_F(CountedItem, ProgramThatCannotAskRefusesTheTill) {
    run.engine.OnAskText = nullptr;
    count();
    EXPECT_EQ(run.errors().last(),
              QStringLiteral("Import av varetelling avbrutt da varenummeret U1 ikke finnes i Torvik"));
}

}  // namespace
}  // namespace torvik::test
