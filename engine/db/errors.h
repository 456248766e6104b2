// What can go wrong between the program and a SQL Server, as the questions that a caller asks afterwards: is the
// session usable, is it safe to try again, or is the outcome unknown? Thrown by every operation of engine/db.
// Texts are the server's own, first error first; a password is never among them. See docs/sessions.md.
#pragma once

#include <QList>
#include <QString>
#include <exception>

namespace torvik::db {

// One error message of a reply, as the server (or the client library) sent it.
struct ServerMessage {
    QString Text;
    int Number = 0;     // the server's error number; 0 when the client library made the message
    int State = 0;      // 0 with FreeTDS, which does not tell it
    int Severity = 0;   // 0 when the client library made the message
    int Line = 0;       // of the batch or procedure
    QString Procedure;  // empty with FreeTDS, likewise
    QString SqlState;
};

// The root of all failures of the session layer. The fields are those of the first error message.
class Error : public std::exception {
public:
    explicit Error(const QString& text);
    Error(const QList<ServerMessage>& messages, const QString& statement);

    // The texts of all error messages, one a line, first error first.
    [[nodiscard]] const QString& text() const { return text_; }
    [[nodiscard]] const char* what() const noexcept override { return what_.constData(); }

    int Number = 0;
    int State = 0;
    int Severity = 0;
    int Line = 0;
    QString Procedure;
    QString Statement;              // what was sent; empty when nothing was
    QList<ServerMessage> Messages;  // all of the reply's errors

private:
    QString text_;
    QByteArray what_;
};

// The session could not be opened, or is lost: Connected is false, and the server has rolled back what was open.
class ConnectionError : public Error {
public:
    enum class Reason {
        Unreachable,      // unknown host, nobody listens, no answer within ConnectionTimeout
        LoginFailed,      // the server refused the user
        UnknownDatabase,  // the server has no such database, or not for this user
        NoDriver,         // no ODBC driver for SQL Server is installed
        Lost,             // the connection broke during use, or the server ended it
        Refused           // anything else the server or driver objected to while connecting
    };
    ConnectionError(Reason reason, const QString& text);
    ConnectionError(Reason reason, const QList<ServerMessage>& messages, const QString& statement = {});

    Reason Why;
};

// The server refused or aborted a statement: the session is usable; ask InTransaction whether a transaction still is.
class StatementError : public Error {
public:
    using Error::Error;
};

// CommandTimeout passed: the statement was cancelled on the server, the session is usable.
class TimeoutError : public StatementError {
public:
    using StatementError::StatementError;
};

// A commit was sent and no answer came: the work may be committed or not. Never repeat it without looking first.
class CommitInDoubt : public Error {
public:
    using Error::Error;
};

// The caller's mistake, found before anything was sent: a closed query, an unknown field, a setting changed while open.
class UsageError : public Error {
public:
    using Error::Error;
};

}  // namespace torvik::db
