// What can go wrong between the program and a SQL Server, as the questions that a caller asks afterwards: is the
// session usable, is its transaction, is it safe to try again, is the outcome of a commit unknown? Thrown by every
// operation of engine/db. Texts are the server's own, first error first; a password is never among them. A table of the
// types: docs/sessions.md.
#pragma once

#include <QList>
#include <QString>
#include <exception>

namespace torvik::db {

// One error message of a reply, as the server (or the client library) sent it.
struct ServerMessage {
    QString Text;
    int Number = 0;     // the server's error number; 0 when the client library made the message
    int State = 0;      // 0 with FreeTDS, which does not report it
    int Severity = 0;   // 0 when the client library made the message
    int Line = 0;       // of the batch or procedure
    QString Procedure;  // empty with FreeTDS, likewise
    QString SqlState;
};

// What a failure has left of the session's transaction.
enum class TransactionAfter {
    Stands,   // as it was: the failure did not touch it
    Gone,     // rolled back by the server, with all its work
    Unknown,  // Session::InTransaction asks the server; of a commit in doubt nobody can say
};

// The root of all failures of the session layer. The fields are those of the first error message.
class Error : public std::exception {
public:
    explicit Error(const QString& text, const QString& statement = {});
    Error(const QList<ServerMessage>& messages, const QString& statement);

    // The texts of all error messages, one a line, first error first.
    [[nodiscard]] const QString& text() const { return text_; }
    [[nodiscard]] const char* what() const noexcept override { return what_.constData(); }

    // Whether the session still is connected: false means that Open comes before anything else.
    [[nodiscard]] virtual bool connectionUsable() const { return true; }
    [[nodiscard]] virtual TransactionAfter transaction() const { return TransactionAfter::Unknown; }
    // Whether the same work, from the beginning of its transaction, may succeed if it is simply tried again, and cannot
    // be done twice by that. Of a single statement outside a transaction no connection that was lost can say so.
    [[nodiscard]] virtual bool safeToTryAgain() const { return false; }
    // Whether a commit was sent whose answer is missing: look before anything is done again.
    [[nodiscard]] virtual bool outcomeUnknown() const { return false; }
    // Whether the time was up, as against a refusal.
    [[nodiscard]] virtual bool timedOut() const { return false; }

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
        UnknownHost,      // the server's name leads to no address
        Unreachable,      // nobody listens, no answer within ConnectionTimeout
        LoginFailed,      // the server refused the user
        UnknownDatabase,  // the server has no such database, or not for this user
        NoDriver,         // no ODBC driver for SQL Server is installed
        Lost,             // the connection broke during use, or the server ended it
        Refused           // anything else the server or driver objected to while connecting
    };
    ConnectionError(Reason reason, const QString& text);
    ConnectionError(Reason reason, const QList<ServerMessage>& messages, const QString& statement = {});

    [[nodiscard]] bool connectionUsable() const override { return false; }
    [[nodiscard]] TransactionAfter transaction() const override { return TransactionAfter::Gone; }
    [[nodiscard]] bool safeToTryAgain() const override;

    Reason Why;
};

// The server refused or aborted a statement: the session is usable.
class StatementError : public Error {
public:
    using Error::Error;

    // Gone for those errors that always end it, a deadlock's victim above all.
    [[nodiscard]] TransactionAfter transaction() const override;
    // For a refusal that lay in the moment: a deadlock's victim, a lock not granted in time.
    [[nodiscard]] bool safeToTryAgain() const override;
};

// CommandTimeout passed: the statement was cancelled on the server, the session is usable.
class TimeoutError : public StatementError {
public:
    using StatementError::StatementError;

    [[nodiscard]] bool safeToTryAgain() const override { return true; }
    [[nodiscard]] bool timedOut() const override { return true; }
};

// A commit was sent and no answer came: the work may be committed or not. Never repeat it without looking first.
class CommitInDoubt : public Error {
public:
    // cause: what came in the answer's place, whose number and messages are kept.
    CommitInDoubt(const QString& text, const Error& cause, bool connectionUsable);

    [[nodiscard]] bool connectionUsable() const override { return connectionUsable_; }
    [[nodiscard]] bool outcomeUnknown() const override { return true; }

private:
    bool connectionUsable_;
};

// The caller's mistake, found before anything was sent: a closed query, an unknown field, a setting changed while open.
class UsageError : public Error {
public:
    using Error::Error;

    [[nodiscard]] TransactionAfter transaction() const override { return TransactionAfter::Stands; }
};

}  // namespace torvik::db
