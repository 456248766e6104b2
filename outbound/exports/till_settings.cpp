// The till's own row of settings: who it is, and the receipt lines that become its name and address. A row missing on
// either side is no error.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr Piece kSettings[] = {
    {R"(select ku_id,ku_telefon,ku_telefax,Ik_Avdelingsnummer,Ik_Foretaksnummer,Ik_Kassebong1,Ik_Kassebong2,Ik_Kassebong3,Ik_Kassebong4,Ikk_Kassenummer, Ikk_Passord
from internkunde,kunde,Internkundekasse where ik_ku_id=ku_id and Ikk_Ik_Ku_ID=Ik_Ku_Id and ku_id = %d and ikk_kassenummer = '%s')",
     kAlways,
     {Arg::Ik_Ku_ID, Arg::KasseNr}}};

constexpr auto kAsString = CopiedColumn::As::String;
constexpr auto kAsVariant = CopiedColumn::As::Variant;

constexpr CopiedColumn kColumns[] = {
    {"Ik_Kassebong1", "IN_NAVN", kAsString},
    {"Ik_Kassebong2", "IN_ADR1", kAsString},
    {"Ik_Kassebong3", "IN_ADR2", kAsString},
    {"Ik_Kassebong4", "IN_ADR3", kAsString},
    {"Ku_Telefon", "IN_Telefon"},
    {"Ku_Telefax", "IN_Telefax"},
    {"Ik_Foretaksnummer", "IN_Orgnr"},
    {"Ik_Avdelingsnummer", "IN_Avdnr"},
    {"Ikk_Kassenummer", "IN_Kassenr"},
    {"Ikk_Passord", "IN_APIPASSORD", kAsVariant, true},
};

constexpr Action kEdit[] = {
    SetTransformation{"Innstillinger"},
    Report{"Overfører innstillinger", 0, false, 1},
    EditOneRow{kSettings, "Innstillinger", kColumns, ReadWith::OtherRegisters},
    Report{"Overfører innstillinger", 1, true, 1},
};

}  // namespace

constinit const Actions kSendTillSettings{kEdit};

}  // namespace torvik
