// Phase two of a till's fetch: the open settlements one at a time, each in a pair of transactions of its own: credit
// orders, store sales, the mark on the till. TOppgjor runs it.
#pragma once

#include "engine/db/query.h"
#include "engine/run/till_visit.h"
#include "inbound/pairs/till_pairs.h"
#include "inbound/settlement/butikksalg.h"
#include "inbound/settlement/till_status.h"

namespace torvik {

class SettlementPosting {
public:
    // `general` is a query on the back office.
    SettlementPosting(const TillVisit& visit, const TillPairs& pairs, const TillStatus& status, db::Query& general);

    // Posts the settlements of the till's list, which is open and stands on the one that is posted. Gives how many
    // were. Raises what failed, after its pair has been rolled back.
    int run(db::DataSet& settlements);

private:
    void post(TransactionPair& pair);
    void invoiceCreditSales();
    void postStoreSales();
    void ClearBeholdningstransaksjoner();
    void MarkOppgjorDone(TransactionPair& pair);
    [[nodiscard]] qint64 id() const;

    const TillVisit& visit_;
    const TillPairs& pairs_;
    const TillStatus& status_;
    db::DataSet* settlements_ = nullptr;  // while it runs
    db::Query& FqryGeneralTarget;
    db::Query FqryGeneralSource;
    TButikksalg Butikksalg;
    int FileNameID = 0;
};

}  // namespace torvik
