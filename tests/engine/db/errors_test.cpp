// What each failure answers to its caller: session, transaction, another try, a commit in doubt.
#include "engine/db/errors.h"

#include <gtest/gtest.h>

#include "tests/support/qt_print.h"

namespace torvik::db {
namespace {

ServerMessage message(int number, int severity = 16) {
    ServerMessage made;
    made.Text = QStringLiteral("melding %1").arg(number);
    made.Number = number;
    made.Severity = severity;
    return made;
}

StatementError refused(int number) {
    return StatementError({message(number)}, QStringLiteral("SELECT 1"));
}

struct Answers {
    bool connectionUsable;
    TransactionAfter transaction;
    bool safeToTryAgain;
    bool outcomeUnknown;
    bool timedOut;

    friend bool operator==(const Answers&, const Answers&) = default;
};

void PrintTo(const Answers& a, std::ostream* out) {
    *out << "usable " << a.connectionUsable << ", transaction " << int(a.transaction) << ", again " << a.safeToTryAgain
         << ", unknown " << a.outcomeUnknown << ", timed out " << a.timedOut;
}

Answers answersOf(const Error& error) {
    return {error.connectionUsable(), error.transaction(), error.safeToTryAgain(), error.outcomeUnknown(),
            error.timedOut()};
}

TEST(Errors, AnswerTheCallersQuestions) {
    using enum TransactionAfter;
    using Reason = ConnectionError::Reason;
    const QString text = QStringLiteral("x");
    EXPECT_EQ(answersOf(ConnectionError(Reason::UnknownHost, text)), (Answers{false, Gone, true, false, false}));
    EXPECT_EQ(answersOf(ConnectionError(Reason::Unreachable, text)), (Answers{false, Gone, true, false, false}));
    EXPECT_EQ(answersOf(ConnectionError(Reason::Lost, text)), (Answers{false, Gone, true, false, false}));
    EXPECT_EQ(answersOf(ConnectionError(Reason::LoginFailed, text)), (Answers{false, Gone, false, false, false}));
    EXPECT_EQ(answersOf(ConnectionError(Reason::UnknownDatabase, text)), (Answers{false, Gone, false, false, false}));
    EXPECT_EQ(answersOf(ConnectionError(Reason::NoDriver, text)), (Answers{false, Gone, false, false, false}));
    EXPECT_EQ(answersOf(ConnectionError(Reason::Refused, text)), (Answers{false, Gone, false, false, false}));
    EXPECT_EQ(answersOf(refused(547)), (Answers{true, Unknown, false, false, false}));
    EXPECT_EQ(answersOf(refused(1205)), (Answers{true, Gone, true, false, false}));
    EXPECT_EQ(answersOf(refused(1222)), (Answers{true, Unknown, true, false, false}));
    EXPECT_EQ(answersOf(TimeoutError(text)), (Answers{true, Unknown, true, false, true}));
    EXPECT_EQ(answersOf(UsageError(text)), (Answers{true, Stands, false, false, false}));
    EXPECT_EQ(answersOf(CommitInDoubt(text, TimeoutError(text), true)), (Answers{true, Unknown, false, true, false}));
    EXPECT_EQ(answersOf(CommitInDoubt(text, ConnectionError(Reason::Lost, text), false)),
              (Answers{false, Unknown, false, true, false}));
}

TEST(Errors, ADeadlockBehindAnotherMessageStillIsOne) {
    const StatementError error({message(3621, 0), message(1205, 13)}, QString());
    EXPECT_TRUE(error.safeToTryAgain());
    EXPECT_EQ(error.transaction(), TransactionAfter::Gone);
}

TEST(Errors, CommitInDoubtKeepsWhatCameInTheAnswersPlace) {
    const StatementError cause({message(4014, 20), message(1, 2)}, QStringLiteral("COMMIT TRANSACTION"));
    const CommitInDoubt doubt(QStringLiteral("ukjent"), cause, false);
    EXPECT_EQ(doubt.text(), QStringLiteral("ukjent"));
    EXPECT_EQ(doubt.Number, 4014);
    EXPECT_EQ(doubt.Severity, 20);
    EXPECT_EQ(doubt.Statement, QStringLiteral("COMMIT TRANSACTION"));
    EXPECT_EQ(doubt.Messages.size(), 2);
}

TEST(Errors, TheFirstMessageIsTheErrorsOwn) {
    const StatementError error({message(547), message(3621)}, QStringLiteral("INSERT"));
    EXPECT_EQ(error.Number, 547);
    EXPECT_EQ(error.text(), QStringLiteral("melding 547\nmelding 3621"));
    EXPECT_STREQ(error.what(), "melding 547\nmelding 3621");
    EXPECT_EQ(error.Statement, QStringLiteral("INSERT"));
}

}  // namespace
}  // namespace torvik::db
