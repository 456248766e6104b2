// Phase one of a till's fetch: what the till says of itself, then its changed gift cards and credit notes and the raw
// transfer, all in one pair of transactions. TOppgjor runs it.
#pragma once

#include <optional>
#include <vector>

#include "engine/run/till_visit.h"
#include "inbound/pairs/till_pairs.h"
#include "inbound/settlement/till_status.h"
#include "inbound/transfer/till_schema.h"

namespace torvik {

namespace db {
class PlannedReads;
}
class TdmPOStoTorvik;
struct VoucherKind;

class SettlementTransfer {
public:
    // `general` is a query on the back office whose text it leaves behind.
    SettlementTransfer(const TillVisit& visit, const TillPairs& pairs, const TillStatus& status, db::Query& general);

    // The till's last settlement goes to the status, the number of its unsettled sales there and to the back office.
    void reportTill(db::PlannedReads& reads);
    // What that reads of the till.
    void planReport(db::PlannedReads& reads) const;
    // Raises what failed, after the pair has been rolled back.
    void run();

private:
    void reportLastSettlement(db::PlannedReads& reads);
    void reportUnsettledSales(db::PlannedReads& reads);
    void beginPair(TransactionPair& pair);
    [[nodiscard]] bool importsVouchers() const;
    void importVouchers();
    void importVouchers(const VoucherKind& kind);
    void runDataModule(TdmPOStoTorvik& dm);
    void execute(TdmPOStoTorvik& dm, QString& stage);
    void commit(TransactionPair& pair, const TdmPOStoTorvik& dm);

    const TillVisit& visit_;
    const TillPairs& pairs_;
    const TillStatus& status_;
    db::Query& general_;
    std::vector<TillMark> marks_;  // that it has made on the till
    std::optional<TillSchema> schema_;
};

}  // namespace torvik
