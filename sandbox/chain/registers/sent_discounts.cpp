// See sent_discounts.h.
#include "sandbox/chain/registers/sent_discounts.h"

#include <set>
#include <tuple>

namespace sandbox::chain {

namespace {

constexpr std::size_t kCardNameLength = 30;
constexpr int kOnOrdinaryPriceOnly = 1;  // the back office's matrix does not say; the till takes it for yes

}  // namespace

// A card is never deleted. An inactive one loses its customers, an active one gains those that the till knows.
void sendDiscountCards(const Send& send) {
    KeptTable& cards = send.till["RABATTKORT"];
    KeptTable& holders = send.till["RABATTKORTKUNDE"];
    KeptTable& listed = send.till.replace(
        {"RabattkortImport",
         "*RAI_ID~ RAI_NAVN RAI_GYLDIGTIL RAI_RABATT RAI_AKTIV RAI_KUNPAAORDPRIS *RAI_KU_ID RAI_KU_KREDITT_PROSENT"});
    for (const Row* card : send.office["POSRABATTKORT"].rows()) {
        if (isNull(*card, "Pos_Ra_Navn") || !send.isDue(*card, "Pos_Ra_UpdDato")) continue;
        const std::string name = textOf(*card, "Pos_Ra_Navn").substr(0, kCardNameLength);
        cards.put({{"RA_ID", card->at("Pos_Ra_ID")},
                   {"RA_NAVN", name},
                   {"RA_GYLDIGTIL", card->at("Pos_Ra_GyldigTil")},
                   {"RA_RABATT", card->at("Pos_Ra_Rabatt")},
                   {"RA_AKTIV", card->at("Pos_Ra_Aktiv")},
                   {"RA_KUNPAAORDPRIS", card->at("Pos_Ra_KunPaaOrdPris")}});
        listed.put({{"RAI_ID", card->at("Pos_Ra_ID")},
                    {"RAI_NAVN", name},
                    {"RAI_GYLDIGTIL", card->at("Pos_Ra_GyldigTil")},
                    {"RAI_RABATT", card->at("Pos_Ra_Rabatt")},
                    {"RAI_AKTIV", card->at("Pos_Ra_Aktiv")},
                    {"RAI_KUNPAAORDPRIS", card->at("Pos_Ra_KunPaaOrdPris")},
                    {"RAI_KU_ID", card->at("Pos_Ra_Ku_ID")},
                    {"RAI_KU_KREDITT_PROSENT", card->at("Pos_Ra_Ku_Kreditt_Prosent")}});
        const std::string id = textOf(*card, "Pos_Ra_ID");
        const std::string customer = textOf(*card, "Pos_Ra_Ku_ID");
        if (numberOf(*card, "Pos_Ra_Aktiv") == 0)
            holders.eraseIf([&](const Row& holder) { return textOf(holder, "RAKU_RA_ID") == id; });
        else if (numberOf(*card, "Pos_Ra_Aktiv") == 1 && send.till["KUNDE"].contains(customer))
            holders.put({{"RAKU_RA_ID", id},
                         {"RAKU_KU_ID", card->at("Pos_Ra_Ku_ID")},
                         {"RAKU_KREDITT_PROSENT", card->at("Pos_Ra_Ku_Kreditt_Prosent")}});
    }
}

// A row goes when none of its customer group, item group and lower bound is left at the back office.
void sendDiscountMatrix(const Send& send) {
    KeptTable& mine = send.till["RABATTMATRISE"];
    KeptTable& listed = send.till.replace(
        {"RabattMatriseImport", "*RMI_KG_ID *RMI_Vg_ID *RMI_Fra *RMI_Til RMI_Rabatt RMI_KUNPAAORDPRIS"});
    if (!send.options.pricesAndCustomers) return;
    std::set<std::tuple<std::string, std::string, double>> lowerBounds;
    for (const Row* row : send.office["RabattMatrise"].rows()) {
        listed.put({{"RMI_KG_ID", row->at("Rm_Kg_Id")},
                    {"RMI_Vg_ID", row->at("Rm_Vg_ID")},
                    {"RMI_Fra", row->at("Rm_Fra")},
                    {"RMI_Til", row->at("Rm_Til")},
                    {"RMI_Rabatt", row->at("Rm_Rabatt")}});
        mine.put({{"RM_KG_ID", row->at("Rm_Kg_Id")},
                  {"RM_VGR_ID", row->at("Rm_Vg_ID")},
                  {"RM_FRA", row->at("Rm_Fra")},
                  {"RM_TIL", row->at("Rm_Til")},
                  {"RM_RABATT", row->at("Rm_Rabatt")},
                  {"RM_KUNPAAORDPRIS", integer(kOnOrdinaryPriceOnly)}});
        lowerBounds.emplace(textOf(*row, "Rm_Kg_Id"), textOf(*row, "Rm_Vg_ID"), numberOf(*row, "Rm_Fra"));
    }
    mine.eraseIf([&](const Row& row) {
        return !lowerBounds.contains({textOf(row, "RM_KG_ID"), textOf(row, "RM_VGR_ID"), numberOf(row, "RM_FRA")});
    });
}

}  // namespace sandbox::chain
