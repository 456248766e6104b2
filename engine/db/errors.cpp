// See errors.h.
#include "engine/db/errors.h"

#include <QStringList>
#include <algorithm>

namespace torvik::db {

namespace {

constexpr int kDeadlockVictim = 1205;
constexpr int kLockTimeout = 1222;
constexpr int kSnapshotConflict = 3960;

QString joined(const QList<ServerMessage>& messages) {
    QStringList lines;
    for (const ServerMessage& message : messages) lines += message.Text;
    return lines.join(u'\n');
}

ServerMessage bareMessage(const QString& text) {
    ServerMessage message;
    message.Text = text;
    return message;
}

bool isAmong(const QList<ServerMessage>& messages, std::initializer_list<int> numbers) {
    return std::ranges::any_of(
        messages, [&](const ServerMessage& message) { return std::ranges::count(numbers, message.Number) > 0; });
}

}  // namespace

Error::Error(const QString& text, const QString& statement) : Error({bareMessage(text)}, statement) {}

Error::Error(const QList<ServerMessage>& messages, const QString& statement)
    : Statement(statement), Messages(messages), text_(joined(messages)), what_(text_.toUtf8()) {
    if (messages.isEmpty()) return;
    const ServerMessage& first = messages.first();
    Number = first.Number;
    State = first.State;
    Severity = first.Severity;
    Line = first.Line;
    Procedure = first.Procedure;
}

ConnectionError::ConnectionError(Reason reason, const QString& text) : Error(text), Why(reason) {}

ConnectionError::ConnectionError(Reason reason, const QList<ServerMessage>& messages, const QString& statement)
    : Error(messages, statement), Why(reason) {}

bool ConnectionError::safeToTryAgain() const {
    return Why == Reason::UnknownHost || Why == Reason::Unreachable || Why == Reason::Lost;
}

TransactionAfter StatementError::transaction() const {
    return isAmong(Messages, {kDeadlockVictim, kSnapshotConflict}) ? TransactionAfter::Gone : TransactionAfter::Unknown;
}

bool StatementError::safeToTryAgain() const {
    return isAmong(Messages, {kDeadlockVictim, kSnapshotConflict, kLockTimeout});
}

CommitInDoubt::CommitInDoubt(const QString& text, const Error& cause, bool connectionUsable)
    : Error(text, cause.Statement), connectionUsable_(connectionUsable) {
    Number = cause.Number;
    State = cause.State;
    Severity = cause.Severity;
    Messages = cause.Messages;
}

}  // namespace torvik::db
