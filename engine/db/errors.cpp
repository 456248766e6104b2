// See errors.h.
#include "engine/db/errors.h"

#include <QStringList>

namespace torvik::db {

namespace {

QString joined(const QList<ServerMessage>& messages) {
    QStringList lines;
    for (const ServerMessage& message : messages) lines += message.Text;
    return lines.join(u'\n');
}

}  // namespace

Error::Error(const QString& text) : text_(text), what_(text.toUtf8()) {}

Error::Error(const QList<ServerMessage>& messages, const QString& statement) : Error(joined(messages)) {
    Statement = statement;
    Messages = messages;
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

}  // namespace torvik::db
