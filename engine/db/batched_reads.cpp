// See batched_reads.h.
#include "engine/db/batched_reads.h"

#include <algorithm>
#include <utility>

#include "engine/db/connection.h"
#include "engine/db/errors.h"
#include "engine/db/reply.h"

namespace torvik::db {

namespace {

// The rows of a streamed read that are held at a time, at least.
constexpr qsizetype kForwardRows = 500;

QString nameOfProof(int read) {
    return QStringLiteral("Lest_%1").arg(read);
}

}  // namespace

struct BatchedReads::Kept {
    std::vector<FieldInfo> columns;
    RowStore rows;
};

BatchedReads::BatchedReads(Session& session, QObject* parent) : DataSet(parent), session_(&session) {}

BatchedReads::~BatchedReads() {
    endReply();
}

// Only the statement right before it sets what @@ERROR gives.
void BatchedReads::AddRead(const QString& text) {
    reads_ << text;
    lines_ << text << QStringLiteral("SELECT @@ERROR %1, @@TRANCOUNT").arg(nameOfProof(++count_));
    endsWithRead_ = true;
}

void BatchedReads::AddStatement(const QString& text) {
    lines_ << text;
    endsWithRead_ = false;
}

void BatchedReads::AddBegin() {
    begins_ = true;
    lines_ << beginTransactionText();
}

void BatchedReads::Send() {
    if (!session_) throw UsageError(QStringLiteral("The batch has no connection"));
    if (reads_.isEmpty()) throw UsageError(QStringLiteral("The batch has no reads"));
    try {
        reply_ = std::make_unique<Reply>(
            session_->use(this),
            Request{std::exchange(lines_, {}).join(QStringLiteral("\r\n")), {}, CommandTimeout, true});
        session_->add(this);
        reply_->raiseErrors();
        atNext_ = true;
        if (begins_) confirmBegun();
    } catch (...) {
        Close();
        throw;
    }
}

// From one row set of the batch to the next; an error on the way is one of the statements between.
void BatchedReads::toNextSet() {
    if (!std::exchange(atNext_, false)) {
        reply_->nextRowSet();
        reply_->raiseErrors();
    }
    if (!reply_->hasRows()) throw StatementError(QStringLiteral("The statement did not return rows"));
}

// The rows of the present read have been fetched; what follows them must be its own proof. A driver that looks ahead
// may meet the next statement's error behind the proof: that is told with the next row set.
void BatchedReads::confirmWhole() {
    toNextSet();
    RowStore proof(reply_->columns());
    const QString name = reply_->columns().front().Name;
    while (reply_->fetch(proof)) {
    }
    ++whole_;
    if (name != nameOfProof(whole_) || proof.rowCount() != 1 || proof.value(0, 0).toInt() != 0) {
        reply_->raiseErrors();
        throw StatementError(QStringLiteral("The rows of read %1 of the batch are not whole").arg(whole_));
    }
    if (whole_ < count_) return;
    reply_->finish();
    endReply();
    if (endsWithRead_) session_->transactionIs(proof.value(0, 1).toInt() > 0);
}

void BatchedReads::confirmBegun() {
    toNextSet();
    RowStore depth(reply_->columns());
    while (reply_->fetch(depth)) {
    }
    reply_->raiseErrors();
    if (depth.rowCount() != 1 || depth.value(0, 0).toInt() != 0)
        throw UsageError(QStringLiteral("The session already has a transaction"));
}

void BatchedReads::OpenNext(const QString& text, Rows rows) {
    if (!IsNext(text)) throw UsageError(QStringLiteral("The next read of the batch is not this one: %1").arg(text));
    if (!lines_.isEmpty()) throw UsageError(QStringLiteral("The batch has not been sent"));
    reads_.removeFirst();
    DataSet::Close();
    try {
        if (std::exchange(streaming_, false)) confirmWhole();
        if (!kept_.empty())
            openKept();
        else if (deferred_)
            std::rethrow_exception(deferred_);
        else
            openReply(rows);
        First();
    } catch (...) {
        Close();
        throw;
    }
}

void BatchedReads::openReply(Rows rows) {
    toNextSet();
    activate(reply_->columns());
    if (rows == Rows::Streamed) {
        streaming_ = true;
        return;
    }
    while (reply_->fetch(this->rows())) {
    }
    reply_->raiseErrors();
    confirmWhole();
}

void BatchedReads::openKept() {
    const std::unique_ptr<Kept> next = std::move(kept_.front());
    kept_.pop_front();
    activate(std::move(next->columns));
    rows() = std::move(next->rows);
}

void BatchedReads::Close() {
    endReply();
    lines_.clear();
    reads_.clear();
    kept_.clear();
    deferred_ = nullptr;
    count_ = whole_ = 0;
    begins_ = streaming_ = broken_ = false;
    DataSet::Close();
}

void BatchedReads::store(Mode, EditBuffer&) {
    throw UsageError(QStringLiteral("The rows of a batch of reads cannot be edited"));
}

// Rows with a text or bytes of any length are read one by one.
bool BatchedReads::readOn() {
    if (!streaming_) {
        if (broken_) std::rethrow_exception(deferred_);
        return false;
    }
    try {
        const qsizetype most = std::ranges::any_of(reply_->columns(), &FieldInfo::Long) ? 1 : kForwardRows;
        if (rows().rowCount() >= most) dropRows();
        const qsizetype before = rows().rowCount();
        while (rows().rowCount() - before < most && reply_->fetch(rows())) {
        }
        reply_->raiseErrors();
        if (rows().rowCount() > before) return true;
        streaming_ = false;
        confirmWhole();
        return false;
    } catch (...) {
        streaming_ = false;
        endReply();
        throw;
    }
}

void BatchedReads::endReply() {
    reply_.reset();
    atNext_ = false;
    if (session_) session_->remove(this);
}

void BatchedReads::keepAll() {
    if (streaming_) {
        while (reply_->fetch(rows())) {
        }
        reply_->raiseErrors();
        confirmWhole();
        streaming_ = false;
        rowsChanged();
    }
    while (reply_) {
        toNextSet();
        auto next = std::make_unique<Kept>(Kept{reply_->columns(), RowStore(reply_->columns())});
        while (reply_->fetch(next->rows)) {
        }
        reply_->raiseErrors();
        confirmWhole();
        kept_.push_back(std::move(next));
    }
}

// A failure belongs to who reads these rows, not to who needed the session meanwhile.
void BatchedReads::finishWork() {
    if (!reply_) return;
    try {
        keepAll();
    } catch (const Error&) {
        drop(std::current_exception());
    }
    endReply();
}

void BatchedReads::drop(std::exception_ptr reason) noexcept {
    broken_ = std::exchange(streaming_, false);
    deferred_ = std::move(reason);
    reply_.reset();
    atNext_ = false;
}

void BatchedReads::rolledBack() {
    if (!reply_) return;
    drop(std::make_exception_ptr(
        StatementError(QStringLiteral("The transaction was rolled back before all rows were read"))));
    endReply();
}

void BatchedReads::connectionGone() noexcept {
    if (!reply_) return;
    drop(std::make_exception_ptr(ConnectionError(ConnectionError::Reason::Lost,
                                                 QStringLiteral("The session was closed before all rows were read"))));
}

bool isRefusal(const Error& error) {
    return isRefusalOutsideTransaction(error) && error.transaction() != TransactionAfter::Gone;
}

bool isRefusalOutsideTransaction(const Error& error) {
    return dynamic_cast<const StatementError*>(&error) != nullptr && !error.timedOut() && error.connectionUsable();
}

}  // namespace torvik::db
