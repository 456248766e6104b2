// Gift cards and credit notes that have changed on the till: brought to the back office's central copies in phase one's
// pair of transactions, and marked on the till. docs/settlements.md tells the rules and their risk.
#pragma once

#include <QHash>
#include <QStringList>
#include <vector>

#include "engine/db/query.h"
#include "engine/run/till_visit.h"

#include "inbound/vouchers/voucher_kind.h"
#include "inbound/vouchers/voucher_row.h"

namespace torvik {

class VoucherImport {
public:
    // Both sessions have a transaction.
    VoucherImport(const VoucherKind& kind, const TillVisit& visit, int timeout);

    // What it has marked on the till. Raises what failed; a full batch that the back office refuses by itself is given
    // up instead, with an error in the log that names its cards.
    [[nodiscard]] std::vector<TillMark> run();

private:
    void copyChanged();
    void mark();
    [[nodiscard]] std::vector<TillMark> copyWhatChangedMeanwhile();
    void add(const VoucherRow& row);
    void dropOrSend();
    void send();
    void runBatch();
    void warnOfRedeemed();

    const VoucherKind& kind_;
    const TillVisit& visit_;
    db::Query onTill_;
    db::Query batch_;                     // its text, until it is sent
    QStringList batchNames_;              // of its cards
    QStringList batchUnused_;             // conditions of those that the till holds as unused
    QHash<QString, QStringList> copied_;  // the statements of each card that was sent or given up, by its name
    QString markedSince_;                 // a moment of the till's server, not after the mark
    qint64 marked_ = 0;                   // cards
    int timeout_;
};

}  // namespace torvik
