// What each export does at its steps, in the order of the steps. send_steps.cpp tells when; each list stands in the
// file of its entity.
#pragma once

#include "outbound/shape/action.h"

namespace torvik {

// Beginning and end (item_choice.cpp, import_tables.cpp).
extern const Actions kGetGlobalVariables;
extern const Actions kDrawSessionID;
extern const Actions kReadTillVersion;
extern const Actions kPrepareVareEksport;
extern const Actions kCreateImportTables;
extern const Actions kDeleteVareEksport;
extern const Actions kNoteExportTime;

// Items and what belongs to them.
extern const Actions kSendSuppliers;
extern const Actions kSendItemGroups;
extern const Actions kSendItems;
extern const Actions kSendExtraSaleItems;
extern const Actions kSendAliases;
extern const Actions kSendProducts;
extern const Actions kSendItemParts;
extern const Actions kMergeItems;
extern const Actions kDeleteItems;

// Prices.
extern const Actions kCreatePriceTables;
extern const Actions kSendPriceCategories;
extern const Actions kSendPrices;
extern const Actions kMergePrices;
extern const Actions kCreateOfferTables;
extern const Actions kSendOffers;

}  // namespace torvik
