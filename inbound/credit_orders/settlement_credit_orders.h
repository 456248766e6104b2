// Credit orders of the settlement being posted: each sale on credit of the till becomes an order of the back office
// that can be invoiced, with its lines, linked to the till's order. Runs inside the settlement's pair of transactions.
#pragma once

#include <QString>

#include "engine/run/till_visit.h"

namespace torvik {

struct CreditSale;

class SettlementCreditOrders {
public:
    // `general` is a query on the back office, left with the text of the last setting that is read.
    SettlementCreditOrders(const TillVisit& visit, db::Query& general, qint64 settlement)
        : visit_(visit), general_(general), settlement_(settlement) {}

    // Raises what failed, an item that cannot be resolved among it.
    void create();

private:
    [[nodiscard]] QString setting(const char* sql);
    // The order that was made of this sale before, known by date and references or by the till order's link; or 0.
    [[nodiscard]] int knownOrder(const CreditSale& sale);
    void reportKnown(const CreditSale& sale, int known);
    [[nodiscard]] int newNumber(const CreditSale& sale);
    [[nodiscard]] int createHead(const CreditSale& sale);

    const TillVisit& visit_;
    db::Query& general_;
    qint64 settlement_;
    int status_ = 0;
};

}  // namespace torvik
