// What both ends hold of a pair of transactions whose note is on another machine: shown to the operator who decides,
// and the marks that taking it back would touch. Used by the resolution of standing pairs alone.
#pragma once

#include <QStringList>
#include <optional>
#include <vector>

#include "inbound/pairs/transaction_pair.h"

namespace torvik {

struct PairEvidence {
    QStringList till;        // a line each
    QStringList backOffice;  //
    PairNote note;           // made of what the till holds now
    bool canTakeBack = false;
};

// Reads both ends. The sessions are open and without transactions.
[[nodiscard]] PairEvidence gatherEvidence(const PairIntent& intent, const PairSides& sides);

}  // namespace torvik
