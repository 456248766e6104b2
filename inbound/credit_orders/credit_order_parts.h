// What the two ways of making a credit order share: the facts of the till's order, the back office's answers, the
// lines. Used by settlement_credit_orders.cpp (the settlement being posted) and credit_order_repair.cpp (one order of a
// till).
#pragma once

#include <QString>

#include "engine/db/query.h"
#include "engine/run/till_visit.h"

namespace torvik {

// The head of a till's sale on credit, read from the current row of a source query.
struct CreditSale {
    explicit CreditSale(const db::Query& row);

    int order;             // OR_ID on the till
    int customer;          // KU_ID on the till
    QString time;          // date literal
    QString ourReference;  // "Bong ... ved ...", single quotes doubled, for Or_VaarRef
    QString requisition;   // single quotes doubled, for Or_DeresRef
    QString department;    // IN_AVDNR
    QString till;          // IN_KASSENR
};

// A query on the back office with the time-out of this work. Its text has no parameters unless ParamCheck is set.
[[nodiscard]] std::unique_ptr<db::Query> creditOrderQuery(const TillVisit& visit, const QStringList& sql);

// The status that every order made gets. `general` is a general query on the back office, left closed.
[[nodiscard]] int importStatus(db::Query& general);

// The customer's number if the back office has it, otherwise that of the collecting customer.
[[nodiscard]] int customerAtBackOffice(const TillVisit& visit, int customer);

// The back-office order that the till's order is linked to, or 0.
[[nodiscard]] int linkedCreditOrder(const TillVisit& visit, int order, const QString& till, const QString& department);
void linkCreditOrder(const TillVisit& visit, const CreditSale& sale, int number);

// Adds the line of the current row to an order; `vat` is the text of the statement's VAT columns, %1 the rate. Raises
// EngineError for an item that neither exists nor can be replaced.
void insertCreditOrderLine(const TillVisit& visit, int number, const db::Query& row, const char* vat);

}  // namespace torvik
