// Makes the pairs of transactions of one till's visit, notes the settlements that they mark, and tells of one that
// failed. Used by both phases of the fetch and by the stock counts.
#pragma once

#include <initializer_list>

#include "engine/run/till_visit.h"
#include "inbound/pairs/transaction_pair.h"
#include "logging/log_entry.h"

namespace torvik {

class TillPairs {
public:
    // Notes stand in the folder given, or beside the program.
    TillPairs(const TillVisit& visit, const QString& noteFolder);

    [[nodiscard]] PairSides sides() const;

    // Notes for the pair that it has marked a settlement as fetched: the mark as the till's server has written it.
    void noteSettlement(TransactionPair& pair, qint64 id) const;

    // Rolls the pair back and tells of the failure; the event says as well where the till is ahead of the back office
    // (Kasse_foran), or where that is not known (Uavklart).
    void fail(TransactionPair& pair, const std::exception& failure, const QString& event,
              std::initializer_list<LogArg> values,
              TransactionPair::RollbackLines lines = TransactionPair::RollbackLines::WithFailure) const;

private:
    const TillVisit& visit_;
    PairNotes notes_;
};

}  // namespace torvik
