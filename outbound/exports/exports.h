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

// Customers, staff and the till itself.
extern const Actions kSendCustomers;
extern const Actions kSendTimeProfiles;
extern const Actions kCreateStaffTable;
extern const Actions kSendStaff;
extern const Actions kSendTillSettings;
extern const Actions kMergeStaff;
extern const Actions kSendCustomerGroups;

// Discounts, gift cards and credit notes.
extern const Actions kCreateVoucherTables;
extern const Actions kSendGiftCards;
extern const Actions kSendCreditNotes;
extern const Actions kCreateDiscountCardTable;
extern const Actions kSendDiscountCards;
extern const Actions kCreateDiscountMatrixTable;
extern const Actions kSendDiscountMatrix;
extern const Actions kMergeCustomersAndCards;
extern const Actions kMergeDiscountMatrix;
extern const Actions kMergeGiftCards;
extern const Actions kMergeCreditNotes;
extern const Actions kNoteGiftCards;
extern const Actions kNoteCreditNotes;
extern const Actions kDropVoucherTables;

// Reasons, payment forms, currencies.
extern const Actions kSendPaymentForms;
extern const Actions kSendReasons;
extern const Actions kMergeReasons;
extern const Actions kRestartClock;
extern const Actions kMergePaymentForms;
extern const Actions kSendCurrencies;

}  // namespace torvik
