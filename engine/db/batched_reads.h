// Reads of one server that travel together: their statements go as one batch, in one round trip, and their row sets are
// read one after the other, each when its turn comes, through this one data set. Behind each read the batch asks for
// @@ERROR, under that read's number, so that a row set counts as whole only when the server has said so.
// docs/sessions.md tells when reads may go so, and what a caller does when they fail.
#pragma once

#include <QPointer>
#include <QStringList>
#include <deque>
#include <exception>
#include <memory>

#include "engine/db/data_set.h"
#include "engine/db/session.h"

namespace torvik::db {

class Error;
class Reply;

class BatchedReads : public DataSet, private Unfinished {
public:
    explicit BatchedReads(Session& session, QObject* parent = nullptr);
    ~BatchedReads() override;  // what is not read is cancelled

    // Seconds, for each wait for the server, as a query's.
    int CommandTimeout = 30;

    // What goes, in this order; texts have no parameters. A read is a statement that gives one row set, a statement
    // gives none. AddBegin begins a transaction: Send raises UsageError where the session had one already.
    void AddRead(const QString& text);
    void AddStatement(const QString& text);
    void AddBegin();
    // Whether a read is the next one to be opened.
    [[nodiscard]] bool IsNext(const QString& text) const { return !reads_.isEmpty() && reads_.first() == text; }

    // Sends it all. A failure is raised here or where it is met, and nothing more can be opened then.
    void Send();
    // Opens the next read in the place of the one before, whose unread rows are passed over. Its text is said again:
    // another than the next read's raises UsageError, so that no rows are taken for another read's. Held rows are on
    // the client, and whole. Streamed ones are read as they are walked, forward only, and are whole at the walk's end;
    // their failure is raised where it is met. Another use of the session meanwhile reads all that is left to the
    // client first; a rollback, or the session's end, drops it.
    enum class Rows { Held, Streamed };
    void OpenNext(const QString& text, Rows rows = Rows::Held);
    // Reads all that is left to the client, where it waits for its turn; so do failures.
    void Hold() { finishWork(); }
    // Forgets what is not read.
    void Close() override;

protected:
    void store(Mode mode, EditBuffer& buffer) override;  // raises UsageError
    bool readOn() override;

private:
    struct Kept;  // a row set that was read before its turn

    void toNextSet();
    void confirmWhole();
    void confirmBegun();
    void openReply(Rows rows);
    void openKept();
    void keepAll();
    void endReply();
    void drop(std::exception_ptr reason) noexcept;
    void finishWork() override;
    void releaseConnection() override { finishWork(); }
    void dropUnread() noexcept override { connectionGone(); }
    void rolledBack() override;
    void connectionGone() noexcept override;

    QPointer<Session> session_;
    QStringList lines_;  // of the batch, until it is sent
    QStringList reads_;  // not opened yet, the next one first
    int count_ = 0;      // of all reads
    int whole_ = 0;      // of those, so many have been read to their end and confirmed
    bool begins_ = false;
    bool endsWithRead_ = false;
    std::unique_ptr<Reply> reply_;  // until the last read is whole
    bool atNext_ = false;           // the reply stands at the next row set already
    bool streaming_ = false;        // the open read has not been read to its end
    bool broken_ = false;           // nor can it be: deferred_ is its failure
    std::deque<std::unique_ptr<Kept>> kept_;
    std::exception_ptr deferred_;  // a failure that was met before its turn
};

// Whether what a failed batch did may be done again, statement by statement, so that the failing one tells itself: the
// server has refused it, still listens, and did not say that the transaction is gone (ask InTransaction).
[[nodiscard]] bool isRefusal(const Error& error);
// The same of a batch outside of any transaction, where a deadlock has cost the batch and no more.
[[nodiscard]] bool isRefusalOutsideTransaction(const Error& error);

}  // namespace torvik::db
