// The pair of transactions by itself: its states, its lines, and what is left of its intent and note.
#include "inbound/pairs/transaction_pair.h"

#include <gtest/gtest.h>

#include <QDir>

#include "tests/inbound/one_till.h"

namespace torvik::test {
namespace {

using State = TransactionPair::State;

const char* const kIntents = "SELECT COUNT(*) FROM dts_logg WHERE dl_info LIKE 'Par {%'";

class PairTest : public OneTill {
protected:
    PairTest() : OneTill(213, 1), notes(run.joinPoints.NoteFolder) {
        inBackOffice("CREATE TABLE Arbeid (Nr int)");
        onTill("CREATE TABLE Arbeid (Nr int)");
    }

    [[nodiscard]] PairSides sides() {
        return {
            run.source, run.target, 1001, QStringLiteral("1"), true, notes, [this](const QString& text, bool isError) {
                log << (isError ? QStringLiteral("! ") : QString()) + text;
            }};
    }
    // Work on both sides, and a mark on the till.
    void work(TransactionPair& pair) {
        for (db::Session* session : {&run.source, &run.target}) {
            db::Query query(session);
            query.SQL = QStringList{QStringLiteral("INSERT Arbeid VALUES (1)")};
            query.ExecSQL();
        }
        db::Query mark(&run.source);
        mark.SQL =
            QStringList{QStringLiteral("UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = '20260302 22:00' WHERE OP_ID = 1")};
        mark.ExecSQL();
        pair.add({TillMark::Kind::Settlement, {QStringLiteral("1")}, QStringLiteral("2026-03-02 22:00:00.000"), {}});
    }
    // The rows of the work at the till and at the back office, the intents, the notes.
    [[nodiscard]] Rows left() const {
        const auto found = QDir(run.joinPoints.NoteFolder).entryList({QStringLiteral("par-*")}).size();
        return {till("SELECT COUNT(*) FROM Arbeid").front(), backOffice("SELECT COUNT(*) FROM Arbeid").front(),
                backOffice(kIntents).front(), std::to_string(found)};
    }
    QString failCommit(TransactionPair& pair) {
        const QString failure = failureOf([&] { pair.commit(); });
        pair.rollBack(QStringLiteral("feil"));
        return failure;
    }

    PairNotes notes;
    QStringList log;
};

TEST_F(PairTest, CommitsBothAndLeavesNoTrace) {
    TransactionPair pair(sides(), QStringLiteral("oppgjør 1"));
    EXPECT_EQ(pair.state(), State::NotBegun);
    pair.begin();
    EXPECT_EQ(pair.state(), State::Open);
    work(pair);
    pair.commit();
    EXPECT_EQ(pair.state(), State::Both);
    EXPECT_EQ(left(), Rows({"1", "1", "0", "0"}));
    EXPECT_EQ(log, QStringList({"Transaksjon startet for kildedatabase", "Transaksjon startet for måldatabase",
                                "Transaksjon commit for kildedatabase", "Transaksjon commit for måldatabase"}));
}

TEST_F(PairTest, TheIntentStandsWhileThePairIsOpenAndTheNoteOfWhatItMarkedWhenTheTillCommits) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    Rows atCommit;
    const int observer = run.chain.till(0).faults().observe([&](const sandbox::RequestInfo& request) {
        if (request.text == "COMMIT TRANSACTION")
            atCommit.push_back(
                std::to_string(QDir(run.joinPoints.NoteFolder).entryList({QStringLiteral("par-*")}).size()));
    });
    TransactionPair marking(sides(), QStringLiteral("oppgjør 1"));
    marking.begin();
    EXPECT_EQ(backOffice(kIntents), Rows({"1"}));
    work(marking);
    marking.commit();
    EXPECT_EQ(atCommit, Rows({"1"}));

    TransactionPair markingNothing(sides(), QStringLiteral("overføring"));
    markingNothing.begin();
    markingNothing.commit();
    EXPECT_EQ(atCommit, Rows({"1", "0"}));
    run.chain.till(0).faults().forget(observer);
}

// A log line pumps messages, and whatever they do would come between.
TEST_F(PairTest, NothingIsSentOrToldBetweenTheCommits) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    QStringList order;
    std::mutex mutex;
    const auto note = [&](const QString& what) {
        const std::lock_guard lock(mutex);
        order << what;
    };
    const int atTill = run.chain.till(0).faults().observe(
        [&](const sandbox::RequestInfo& r) { note(QStringLiteral("till: ") + QString::fromStdString(r.text)); });
    const int atOffice = run.chain.backOffice().faults().observe(
        [&](const sandbox::RequestInfo& r) { note(QStringLiteral("office: ") + QString::fromStdString(r.text)); });
    PairSides told = sides();
    told.log = [&](const QString& text, bool) { note(QStringLiteral("log: ") + text); };
    TransactionPair pair(told, QStringLiteral("oppgjør 1"));
    pair.begin();
    work(pair);
    pair.commit();
    run.chain.till(0).faults().forget(atTill);
    run.chain.backOffice().faults().forget(atOffice);

    EXPECT_EQ(order.mid(order.size() - 4),
              QStringList({"till: COMMIT TRANSACTION", "office: COMMIT TRANSACTION",
                           "log: Transaksjon commit for kildedatabase", "log: Transaksjon commit for måldatabase"}));
}

TEST_F(PairTest, RolledBackOnBothSidesLeavesNoTrace) {
    TransactionPair pair(sides(), QStringLiteral("oppgjør 1"));
    pair.begin();
    work(pair);
    log.clear();
    pair.rollBack(QStringLiteral("feil"));
    EXPECT_EQ(pair.state(), State::Neither);
    EXPECT_EQ(left(), Rows({"0", "0", "0", "0"}));
    EXPECT_EQ(log, QStringList({"! <<<  feil >>>", "! Transaksjon rollback for måldatabase. feil",
                                "! Transaksjon rollback for kildedatabase. feil"}));
}

TEST_F(PairTest, BareLinesOfARollbackDoNotRepeatTheFailure) {
    TransactionPair pair(sides(), QStringLiteral("varetelling"));
    pair.begin();
    work(pair);
    run.source.Rollback();
    log.clear();
    pair.rollBack(QStringLiteral("feil"), TransactionPair::RollbackLines::Bare);
    EXPECT_EQ(left(), Rows({"0", "0", "0", "0"}));
    EXPECT_EQ(log, QStringList(
                       {"! <<<  feil >>>", "! Transaksjon rollback for måldatabase", "! <<<  Ingen transaksjon >>>"}));
}

TEST_F(PairTest, EndsWithItsScope) {
    {
        TransactionPair pair(sides(), QStringLiteral("oppgjør 1"));
        pair.begin();
        work(pair);
    }
    EXPECT_EQ(left(), Rows({"0", "0", "0", "0"}));
}

TEST_F(PairTest, TillThatIsAheadIsNeverToldAsRolledBack) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    sandbox::FaultRule refuse;
    refuse.match.textContains = "COMMIT TRANSACTION";
    refuse.action = sandbox::FaultAction::Fail;
    refuse.message = {.number = 50000, .severity = 16, .state = 1, .text = "Ingen commit"};
    TransactionPair pair(sides(), QStringLiteral("oppgjør 1"));
    pair.begin();
    work(pair);
    log.clear();
    run.chain.backOffice().faults().add(refuse);

    EXPECT_EQ(failCommit(pair), QStringLiteral("Ingen commit"));

    EXPECT_EQ(pair.state(), State::TillAhead);
    EXPECT_EQ(left(), Rows({"1", "0", "1", "1"}));
    EXPECT_EQ(log, QStringList({"Transaksjon commit for kildedatabase", "! <<<  feil >>>",
                                "! Transaksjon rollback for måldatabase. feil", "<<<  feil >>>"}));
}

TEST_F(PairTest, NoteThatCannotBeWrittenStopsThePair) {
    TransactionPair pair(sides(), QStringLiteral("oppgjør 1"));
    pair.begin();
    work(pair);
    QDir(run.joinPoints.NoteFolder).removeRecursively();
    QFile inItsPlace(run.joinPoints.NoteFolder);
    ASSERT_TRUE(inItsPlace.open(QIODevice::WriteOnly));
    const QString failure = failureOf([&] { pair.commit(); });
    pair.rollBack(failure);
    EXPECT_TRUE(failure.startsWith(QStringLiteral("Klarte ikke å skrive notatet"))) << failure.toStdString();
    EXPECT_EQ(pair.state(), State::Neither);
    EXPECT_EQ(left(), Rows({"0", "0", "0", "0"}));
}

TEST_F(PairTest, IntentThatSomebodyElseStruckOutStopsThePair) {
    TransactionPair pair(sides(), QStringLiteral("oppgjør 1"));
    pair.begin();
    inBackOffice("DELETE dts_logg");
    work(pair);
    EXPECT_NE(failCommit(pair), QString());
    EXPECT_EQ(pair.state(), State::Neither);
    EXPECT_EQ(left(), Rows({"0", "0", "0", "0"}));
}

TEST_F(PairTest, TransactionThatItsServerHasEndedIsFoundBeforeEitherSideCommits) {
    for (db::Session* ended : {&run.source, &run.target}) {
        TransactionPair pair(sides(), QStringLiteral("oppgjør 1"));
        pair.begin();
        work(pair);
        db::Query end(ended);
        end.SQL = QStringList{QStringLiteral("ROLLBACK TRANSACTION")};
        end.ExecSQL();
        EXPECT_NE(failCommit(pair), QString());
        EXPECT_EQ(pair.state(), State::Neither);
        EXPECT_EQ(left(), Rows({"0", "0", "0", "0"}));
    }
}

TEST_F(PairTest, PairThatCannotBeBegunLeavesNoIntent) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.source.StartTransaction();  // so the pair's own cannot be begun
    TransactionPair pair(sides(), QStringLiteral("oppgjør 1"));
    EXPECT_NE(failureOf([&] { pair.begin(); }), QString());
    EXPECT_EQ(pair.state(), State::Neither);
    EXPECT_EQ(left(), Rows({"0", "0", "0", "0"}));
    EXPECT_EQ(log, QStringList());
}

}  // namespace
}  // namespace torvik::test
