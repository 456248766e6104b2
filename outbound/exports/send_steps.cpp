#include "outbound/exports/send_steps.h"

#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr int kPriceOffers = 178;  // the schema version that brought them

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
    {29, nullptr, kSendPriceAndCustomer, &kCreatePriceTables},
    {30, "Priskategori", kSendPriceAndCustomer, &kSendPriceCategories},
    {31, "Pris", kSendPriceAndCustomer, &kSendPrices},
    {32, nullptr, kSendPriceAndCustomer, &kMergePrices},
    {37, "Vare", kAlways, &kMergeItems},
    {38, "Opprette Pristilbud tabeller", schemaFrom(kPriceOffers), &kCreateOfferTables},
    {39, "PRISTILBUDLINJE", schemaFrom(kPriceOffers), &kSendOffers},
    {46, "DeleteVare", kDeleteItem, &kDeleteItems},
    {48, nullptr, kAlways, &kDeleteVareEksport},
    {49, "ExportTime", kAlways, &kNoteExportTime},
};

}  // namespace

std::span<const SendStep> sendSteps() {
    return kSteps;
}

}  // namespace torvik
