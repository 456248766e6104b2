// See planned_reads.h.
#include "engine/db/planned_reads.h"

#include "engine/db/errors.h"
#include "engine/db/query.h"

namespace torvik::db {

namespace {

QString textOf(const QStringList& lines) {
    return lines.join(QStringLiteral("\r\n"));
}

}  // namespace

PlannedReads::PlannedReads(Session& session, Within within) : session_(session), within_(within) {}

PlannedReads::~PlannedReads() = default;

void PlannedReads::Plan(const QStringList& text) {
    if (!batch_ || sent_) {
        batch_ = std::make_unique<BatchedReads>(session_);
        sent_ = false;
    }
    batch_->AddRead(textOf(text));
}

DataSet& PlannedReads::Open(Query& query) {
    query.Close();
    if (DataSet* rows = openTogether(query)) return *rows;
    query.Open();
    return query;
}

DataSet* PlannedReads::openTogether(const Query& query) {
    const QString text = textOf(query.SQL);
    if (!batch_ || !batch_->IsNext(text)) {
        batch_.reset();
        return nullptr;
    }
    try {
        if (!sent_) {
            sent_ = true;
            batch_->CommandTimeout = CommandTimeout;
            batch_->Send();
        }
        batch_->OpenNext(text, query.UniDirectional ? BatchedReads::Rows::Streamed : BatchedReads::Rows::Held);
        return batch_.get();
    } catch (const Error& e) {
        batch_.reset();
        if (!isRefusal(e) || (within_ == Within::Transaction && !session_.InTransaction())) throw;
        return nullptr;
    }
}

}  // namespace torvik::db
