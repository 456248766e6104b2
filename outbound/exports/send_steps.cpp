#include "outbound/exports/send_steps.h"

#include "outbound/exports/exports.h"

namespace torvik {

namespace {

// The schema versions that brought them.
constexpr int kPriceOffers = 178;
constexpr int kPaymentFormLimits = 213;

constexpr SendStep kSteps[] = {
    {1, nullptr, kAlways, &kGetGlobalVariables},
    {2, nullptr, kAlways, &kDrawSessionID},
    {3, nullptr, kAlways, &kReadTillVersion},
    {4, "Kassevare", kAlways, &kPrepareVareEksport},
    {5, nullptr, kAlways, &kCreateImportTables},
    {6, "LEVERANDOR", kAlways, &kSendSuppliers},
    {7, "VAREGRUPPE", kAlways, &kSendItemGroups},
    {8, "VARE", kAlways, &kSendItems},
    {9, "MersalgVare", kAlways, &kSendExtraSaleItems},
    {10, "VAREALIAS", kAlways, &kSendAliases},
    {11, "Produkt", kAlways, &kSendProducts},
    {12, "Delvareimport", kAlways, &kSendItemParts},
    {13, "BETALINGFORM", schemaFrom(kPaymentFormLimits), &kSendPaymentForms},
    {14, "Kunder", kAlways, &kSendCustomers},
    {15, "Timeprofil", kAlways, &kSendTimeProfiles},
    {16, nullptr, kAlways, &kCreateStaffTable},
    {17, "ANSATT", kAlways, &kSendStaff},
    {18, "Innstillinger", kAlways, &kSendTillSettings},
    {19, "Opprette gavekort- og Tilgodelapptabeller", kAlways, &kCreateVoucherTables},
    {20, "Gavekort", kSendVouchers, &kSendGiftCards},
    {21, "Tilgodelapp", kSendVouchers, &kSendCreditNotes},
    {22, "Rabattkortimport", kAlways, &kCreateDiscountCardTable},
    {23, "Rabattkort", kAlways, &kSendDiscountCards},
    {24, "Rabattmatrise", kAlways, &kCreateDiscountMatrixTable},
    {25, nullptr, kAlways, &kMergeStaff},
    {26, "PosGrunn", kAlways, &kSendReasons},
    {27, "Grunn", kAlways, &kMergeReasons},
    {28, nullptr, kAlways, &kRestartClock},
    {29, nullptr, kSendPriceAndCustomer, &kCreatePriceTables},
    {30, "Priskategori", kSendPriceAndCustomer, &kSendPriceCategories},
    {31, "Pris", kSendPriceAndCustomer, &kSendPrices},
    {32, nullptr, kSendPriceAndCustomer, &kMergePrices},
    {33, "KundeGruppe", kSendPriceAndCustomer, &kSendCustomerGroups},
    {34, "Rabattmatrise", kSendPriceAndCustomer, &kSendDiscountMatrix},
    {35, "Kunde", kAlways, &kMergeCustomersAndCards},
    {36, "Betalingform", schemaFrom(kPaymentFormLimits), &kMergePaymentForms},
    {37, "Vare", kAlways, &kMergeItems},
    {38, "Opprette Pristilbud tabeller", schemaFrom(kPriceOffers), &kCreateOfferTables},
    {39, "PRISTILBUDLINJE", schemaFrom(kPriceOffers), &kSendOffers},
    {40, "Rabattmatrise", kSendPriceAndCustomer, &kMergeDiscountMatrix},
    {41, "Gavekort", kSendVouchers, &kMergeGiftCards},
    {42, "Tilgodelapp", kSendVouchers, &kMergeCreditNotes},
    {43, "Overført Gavekort", kSendVouchers, &kNoteGiftCards},
    {44, "Overført Tilgodelapp", kSendVouchers, &kNoteCreditNotes},
    {45, nullptr, kAlways, &kDropVoucherTables},
    {46, "DeleteVare", kDeleteItem, &kDeleteItems},
    {47, "Valuta", kSendCurrency, &kSendCurrencies},
    {48, nullptr, kAlways, &kDeleteVareEksport},
    {49, "ExportTime", kAlways, &kNoteExportTime},
};

}  // namespace

std::span<const SendStep> sendSteps() {
    return kSteps;
}

}  // namespace torvik
