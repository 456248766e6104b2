// The repair of credit orders that are missing at the back office: what the command "Hent kredittordrer etter
// kriterier" runs. It opens no transaction: each statement commits by itself. Credit orders of a settlement being
// fetched are SettlementCreditOrders'.
#pragma once

#include <QDateTime>
#include <QStringList>

namespace torvik {

class TTorvikPos;
struct TillVisit;

// Makes the order of one order of the connected till, whether or not there is one. Raises what failed; what was made
// before that stands.
void CreateCreditOrder(const TillVisit& visit, int Or_Id);

// Adds the ids of the connected till's settled credit sales, from a date on, of which the back office lacks a line.
// Where an order looks the same, the operator decides (OnAskOperator); with RunAsService it counts as made, and
// OnAddLog is told.
void CreateCreditOrdersEx(const TillVisit& visit, const QDateTime& FromDate, QStringList& List);

// Both, over all tills of the roster. Lets no exception out; a till that fails is logged and passed over.
void ImportMissingCreditOrders(TTorvikPos& torvikPos, const QDateTime& ADateTime);

}  // namespace torvik
