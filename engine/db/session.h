// A connection to one database of one SQL Server: where it is, how to log in, its one transaction. Queries, table
// objects and the rest are bound to a session and never outlive its use. One thread; see docs/sessions.md.
#pragma once

#include <QObject>
#include <QString>
#include <memory>

#include "engine/db/connect_string.h"

namespace torvik::db {

class Connection;

// Something with work open on a session: a table object with rows not sent, a query that still reads. The session
// calls it before anything else uses the connection.
class Unfinished {
public:
    virtual void finishWork() = 0;               // sends and reads the rest; may raise
    virtual void releaseConnection() = 0;        // reads the rest, sends nothing
    virtual void dropUnread() noexcept = 0;      // the session closes: nobody reads the rest any more
    virtual void rolledBack() = 0;               // the transaction goes: rows not sent or not read go with it
    virtual void connectionGone() noexcept = 0;  // nothing can be finished any more

protected:
    ~Unfinished() = default;
};

class Session : public QObject {
public:
    explicit Session(QObject* parent = nullptr);
    ~Session() override;  // closes; an open transaction is rolled back

    // Each setter raises UsageError while the session is open.
    [[nodiscard]] const QString& Server() const { return settings_.Server; }
    void SetServer(const QString& server);
    [[nodiscard]] const QString& Database() const { return settings_.Database; }
    void SetDatabase(const QString& database);
    [[nodiscard]] const QString& Username() const { return settings_.Username; }
    void SetUsername(const QString& username);
    [[nodiscard]] const QString& Password() const { return settings_.Password; }
    void SetPassword(const QString& password);
    [[nodiscard]] Auth Authentication() const { return settings_.Authentication; }
    void SetAuthentication(Auth authentication);
    [[nodiscard]] ProviderKind Provider() const { return settings_.Provider; }
    void SetProvider(ProviderKind provider);
    [[nodiscard]] bool LoginPrompt() const { return false; }
    void SetLoginPrompt(bool on);  // raises UsageError for true: this system never asks for a login
    [[nodiscard]] bool MultipleActiveResultSets() const { return mars_; }
    void SetMultipleActiveResultSets(bool on);  // open queries hold their rows here, so any number works either way
    [[nodiscard]] bool TrustServerCertificate() const { return settings_.TrustServerCertificate; }
    void SetTrustServerCertificate(bool trust);
    [[nodiscard]] int ConnectionTimeout() const { return settings_.ConnectionTimeout; }
    void SetConnectionTimeout(int seconds);  // for the whole of Open; 15 unless set
    [[nodiscard]] const QString& ApplicationName() const { return settings_.ApplicationName; }
    void SetApplicationName(const QString& name);

    // OLE DB text. Assigning sets all of the values above; reading gives the assigned text back, or, when a value was
    // set since, a text made of the values.
    [[nodiscard]] QString ConnectString() const;
    void SetConnectString(const QString& text);

    // All of these values at once.
    [[nodiscard]] const ConnectSettings& Settings() const { return settings_; }
    void SetSettings(const ConnectSettings& settings);

    // Raises ConnectionError, with the server's text where it gave one. Opening an open session does nothing. A cancel
    // of the thread's statements (meanwhile.h) ends the wait with its error.
    void Open();
    // Opens it by a connection that was made with its values ahead of time (login_ahead.h). False, and closed, when
    // that has not lasted.
    [[nodiscard]] bool OpenBy(std::unique_ptr<Connection> made);
    // Rows posted and not yet sent are sent first; rows of a unidirectional query not yet read are dropped; an open
    // transaction is rolled back. Closing a closed one does nothing.
    void Close();
    // False before Open, after Close, and once the connection is known to be lost.
    [[nodiscard]] bool Connected() const;

    // One transaction per session: StartTransaction within one raises UsageError. What StartTransaction, Rollback and
    // InTransaction ask of the server waits for nothing there, so it gets as long as a login: ConnectionTimeout. A
    // server that has not answered Rollback or InTransaction by then has lost the connection.
    void StartTransaction();
    // Raises CommitInDoubt when no answer came; StatementError when the server had already rolled back.
    void Commit();
    // Afterwards nothing of the transaction stands. Without one, or with a lost connection, does nothing.
    void Rollback();
    // What the server says: true also when a statement began one, false when an error rolled it back. Sends no rows
    // that a table object still holds.
    [[nodiscard]] bool InTransaction();
    // The same, asked of the server in any case: also finds a connection that was lost meanwhile.
    [[nodiscard]] bool StillInTransaction();

    // For the classes of engine/db: the open connection, with all other work on it finished first. Raises UsageError
    // when the session is closed, ConnectionError when it is lost.
    [[nodiscard]] Connection& use(const Unfinished* by = nullptr);
    // After a statement that surely left the transaction as it was, or that told of it last: saves InTransaction its
    // question.
    void transactionUnchanged();
    void transactionIs(bool open);
    void add(Unfinished* work);
    void remove(Unfinished* work);

private:
    template <typename T>
    void set(T& member, const T& value, const char* name);
    void requireClosed(const char* setting) const;
    [[nodiscard]] Connection& connection() const;
    void remember(bool inTransaction);

    ConnectSettings settings_;
    QString connectString_;  // as assigned; empty once a value was set
    bool mars_ = true;
    std::unique_ptr<Connection> connection_;
    QList<Unfinished*> unfinished_;
    bool inTransaction_ = false;    // as the server last said,
    quint64 knownAtStatement_ = 0;  // when it had run so many statements
};

}  // namespace torvik::db
