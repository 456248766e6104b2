// Reads of one server that follow each other, made together where that can be: what was planned goes as one batch
// (batched_reads.h) when the first of it is opened. Where the server refuses the batch, that read and all behind it are
// made one by one, so that the failing one fails as it would have by itself. Used by whatever asks a till or the back
// office several things in a row.
#pragma once

#include <QStringList>
#include <memory>

#include "engine/db/batched_reads.h"

namespace torvik::db {

class Query;

class PlannedReads {
public:
    // InTransaction: the reads are part of one, and are not made again where the server has ended it.
    enum class Within { Nothing, Transaction };
    explicit PlannedReads(Session& session, Within within = Within::Nothing);
    ~PlannedReads();
    PlannedReads(const PlannedReads&) = delete;
    PlannedReads& operator=(const PlannedReads&) = delete;

    // Seconds, of the batch; a read made by itself has its query's.
    int CommandTimeout = 30;

    // The texts of the reads to come, in their order.
    void Plan(const QStringList& text);
    // The rows of the query's text, until the next call: the batch's, streamed where the query is unidirectional, or
    // those of the query itself, which is opened where the text is not the next that was planned, or the batch was
    // refused. Raises what else fails.
    [[nodiscard]] DataSet& Open(Query& query);

private:
    [[nodiscard]] DataSet* openTogether(const Query& query);

    Session& session_;
    Within within_;
    std::unique_ptr<BatchedReads> batch_;  // none: nothing is planned, or one by one
    bool sent_ = false;
};

}  // namespace torvik::db
