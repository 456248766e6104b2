// Brings the stock count of one till into the back office's: the counted items go through a stage of two tables, and
// the back office takes them from there. In a pair of transactions, like a settlement. The run over the tills is
// stock_count_run.h; docs/till-operations.md tells the whole.
#pragma once

#include <QString>
#include <functional>

#include "engine/run/till_visit.h"
#include "inbound/pairs/till_pairs.h"

namespace torvik {

namespace db {
class Query;
}
class TTorvikPos;

class TVaretelling {
public:
    // The till is connected to. Notes of the pair stand in the folder given, or beside the program.
    explicit TVaretelling(const TillVisit& visit, const QString& noteFolder = {});

    TTorvikPos& TorvikPOS;  // the engine

    // Raises what failed, a till without a count too, after both transactions have been rolled back.
    void Execute(const QString& Periode);

private:
    void bring(TransactionPair& pair, const QString& period);
    void openCounted(db::Query& counted) const;
    [[nodiscard]] int takeNumber() const;
    void stageHead(int head, const QString& department, int key);
    void stageLines(int head, db::Query& counted);
    void tellStaged() const;
    void handOver(const QString& period, int key);
    void markFetched(TransactionPair& pair, db::Query& counted) const;
    void warnOfFailures() const;

    // A failure is an error line, and the count goes on.
    void attempt(const std::function<void()>& work);
    void onTill(const QStringList& sql) const;
    void atBackOffice(const QStringList& sql) const;

    TillVisit visit_;
    TillPairs pairs_;
    int failures_ = 0;  // told and passed over
};

}  // namespace torvik
