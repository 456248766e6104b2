// Procedures of one export that the step of another installs and runs. Those of the item register go together
// (item_merge.cpp), since each needs the ones before it: items their groups and suppliers, aliases and parts their
// items. Discount cards (discount_cards.cpp) follow their customers.
#pragma once

#include "outbound/exports/exports.h"

namespace torvik {

extern const Procedure kInsertVaregruppe;
extern const Procedure kInsertLeverandor;
extern const Procedure kInsertVare;
extern const Procedure kInsertVareAlias;
extern const Procedure kInsertDelvare;
extern const Procedure kInsertKunde;

}  // namespace torvik
