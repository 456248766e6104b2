// What a till's visit begins with: pairs of transactions that were broken off are resolved before anything is read.
// With this copy's note the marks of a till that committed alone are taken back, so that the ordinary walk fetches it
// all again; without one, this copy's pair never reached the till's commit. A pair of another copy is left to that copy
// or to the operator. docs/failures.md tells the whole.
#pragma once

#include <QStringList>
#include <functional>

#include "inbound/pairs/transaction_pair.h"

namespace torvik {

// A pair of another copy that nobody has resolved, put to the operator.
struct PairQuestion {
    QString Avdeling;        // as the operator knows the till
    QString Kassenr;         //
    QString What;            // "oppgjør 17", "overføring"
    QString Machine;         // whose copy it was
    QString Began;           // the back office's time
    QStringList Till;        // what the till holds of it, a line each
    QStringList BackOffice;  // what the back office holds
    bool CanTakeBack = false;
};

enum class PairDecision {
    Refuse,    // not now: the till is not served
    TakeBack,  // take the marks back on the till, so that it is fetched again; where the question says that it can be
    LetStand   // leave the till as it is and forget the pair
};

// Asked with no transaction open. Unset, or where nobody can answer: Refuse.
using PairDecisionHandler = std::function<PairDecision(const PairQuestion&)>;

// Resolves what stands of the till. Raises UndecidedPair where the till cannot be served yet, and whatever the servers
// raise: then nothing has been struck out, and the next visit begins again. `avdeling` names the till to the operator.
void resolveStandingPairs(const PairSides& sides, const QString& avdeling, const PairDecisionHandler& decide);

}  // namespace torvik
