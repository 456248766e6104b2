// See sent_items.h. Nothing but aliases, parts and extra-sale items goes away by a send.
#include "sandbox/chain/registers/sent_items.h"

namespace sandbox::chain {

namespace {

constexpr std::size_t kCategoryLength = 50;

constexpr ColumnPair kSupplierColumns[] = {{"LE_NAVN", "Le_Navn"},         {"LE_ADRESSE", "Le_PostAdr"},
                                           {"LE_POSTNR", "Le_PostPostnr"}, {"LE_POSTSTED", "Le_PostSted"},
                                           {"LE_TELEFON", "Le_Telefon"},   {"LE_TELEFAX", "Le_Telefax"},
                                           {"LE_EPOST", "Le_Email"}};

constexpr ColumnPair kItemColumns[] = {{"VA_NAVN", "Va_Navn"},
                                       {"VA_PRIS", "Va_Pris"},
                                       {"VA_UTGAATT", "Va_Utgaatt"},
                                       {"VA_MVASATS", "Va_Mvasats"},
                                       {"VA_KOSTPRIS", "Va_Kostpris"},
                                       {"VA_LE_ID", "Va_Le_Id"},
                                       {"VA_MINLAGER", "Va_Minlager"},
                                       {"VA_MAKSLAGER", "Va_Makslager"},
                                       {"VA_VGR_ID", "Va_Vg_Id"},
                                       {"VA_PRISLAPP", "Va_Prislapp"},
                                       {"VA_MAKSRABATT", "Va_MaksRabatt"}};

void sendGroups(const Send& send) {
    KeptTable& groups = send.till["VAREGRP"];
    for (const Row* group : send.office["Varegruppe"].rows()) {
        const std::string id = textOf(*group, "Vg_Id");
        Row* known = groups.find(id);
        Row& mine = known ? *known : groups.put({{"VGR_ID", group->at("Vg_Id")}});
        mine.at("VGR_NAVN") = group->at("Vg_Navn");
    }
    if (send.version < 211) return;
    // A link changes where the group that it leads to is on the till; one taken away stays as it was.
    static constexpr ColumnPair kLinks[] = {{"VGR_HOVED_VGR_ID", "Vg_Hoved_Vg_ID"},
                                            {"VGR_ROOT_VGR_ID", "Vg_Root_Vg_ID"}};
    for (const Row* group : send.office["Varegruppe"].rows())
        for (const ColumnPair& link : kLinks)
            if (groups.contains(textOf(*group, link.from)))
                groups.find(textOf(*group, "Vg_Id"))->at(link.to) = group->at(link.from);
}

void sendSuppliers(const Send& send) {
    KeptTable& suppliers = send.till["LEVERANDOR"];
    for (const Row* supplier : send.office["Leverandor"].rows()) {
        Row* known = suppliers.find(textOf(*supplier, "Le_Id"));
        Row& mine = known ? *known : suppliers.put({{"LE_ID", supplier->at("Le_Id")}});
        copyColumns(mine, *supplier, kSupplierColumns);
        const Row* country = send.office["Land"].find(textOf(*supplier, "Le_Post_La_Id"));
        mine.at("LE_LAND") = country ? country->at("La_Navn") : Cell();
    }
}

// The group's name after its parent's.
std::string category(const Send& send, const Row& item) {
    const Row* group = send.office["Varegruppe"].find(textOf(item, "Va_Vg_Id"));
    if (!group) return {};
    const Row* parent = send.office["Varegruppe"].find(textOf(*group, "Vg_Hoved_Vg_ID"));
    return ((parent ? textOf(*parent, "Vg_Navn") + "/" : "") + textOf(*group, "Vg_Navn")).substr(0, kCategoryLength);
}

// Internal text lands in the column for external text and the other way round. A product without any text changes
// nothing.
void setProductTexts(const Row& product, Row& mine) {
    if (isNull(product, "P_InfoIntern") && isNull(product, "P_InfoEkstern") && isNull(product, "P_InfoRegel")) return;
    mine.at("VA_INFOEKSTERN") = product.at("P_InfoIntern");
    mine.at("VA_INFOINTERN") = product.at("P_InfoEkstern");
    mine.at("VA_INFOREGEL") = product.at("P_InfoRegel");
}

void sendChosenItems(const Send& send) {
    KeptTable& items = send.till["VARE"];
    for (const std::string& id : chosenItems(send)) {
        const Row& item = *send.office["Vare"].find(id);
        Row* known = items.find(id);
        Row& mine = known ? *known : items.put({{"VA_ID", id}});
        copyColumns(mine, item, kItemColumns);
        mine.at("VA_KATEGORI") = category(send, item);
        mine.at("VA_VEILPRIS") = numberOf(item, "Va_VeilPris");
        const Row* product = send.office["Produkt"].find(textOf(item, "Va_P_ID"));
        if (product) setProductTexts(*product, mine);
        if (items.has("VA_SLETTET")) mine.at("VA_SLETTET") = item.at("Va_Slettet");
        if (send.version < 225) continue;
        mine.at("VA_P_NAVN") = product ? product->at("P_Navn") : Cell();
        mine.at("VA_FARGENAVN") = item.at("Va_Fargenavn");
        mine.at("VA_STORRELSENAVN") = item.at("Va_Storrelsenavn");
    }
}

// All of the chain go each time; one that is the number of an item does not.
void sendAliases(const Send& send) {
    KeptTable& mine = send.till["VAREALIAS"];
    mine.clear();
    for (const Row* alias : send.office["VareAlias"].rows())
        if (!send.office["Vare"].contains(textOf(*alias, "Vr_Id")) &&
            send.till["VARE"].contains(textOf(*alias, "Vr_Va_Id")))
            mine.put({{"VR_VA_ID", alias->at("Vr_Va_Id")},
                      {"VR_ID", alias->at("Vr_Id")},
                      {"VR_NAVN", alias->at("Vr_Navn")}});
}

// Those of which either side was chosen replace what the till has.
void sendParts(const Send& send) {
    const std::set<std::string> chosen = chosenItems(send);
    KeptTable& mine = send.till["DELVARE"];
    mine.clear();
    for (const Row* part : send.office["Delvare"].rows()) {
        const std::string whole = textOf(*part, "Dv_Hoved_Va_ID");
        const std::string piece = textOf(*part, "Dv_Delvare_Va_ID");
        if (!chosen.contains(whole) && !chosen.contains(piece)) continue;
        if (!send.till["VARE"].contains(whole) || !send.till["VARE"].contains(piece)) continue;
        Row& row = mine.put({{"DV_HOVED_VA_ID", whole},
                             {"DV_DELVARE_VA_ID", piece},
                             {"DV_ANTALL", part->at("Dv_Antall")},
                             {"DV_PRIS", part->at("Dv_Pris")}});
        if (send.version >= 192) row.at("DV_UTSKRIFTSREGEL") = part->at("Dv_Utskriftsregel");
    }
}

}  // namespace

std::set<std::string> chosenItems(const Send& send) {
    std::set<std::string> chosen;
    for (const Row* item : send.office["Vare"].rows())
        if (send.options.items == ItemsSent::All ||
            (send.options.items == ItemsSent::Changed && numberOf(*item, "Va_SendTilButikkKasser") != 0))
            chosen.insert(textOf(*item, "Va_Id"));
    return chosen;
}

void sendExtraSaleItems(const Send& send) {
    KeptTable& mine = send.till["MERSALGVARE"];
    mine.clear();
    for (const Row* item : send.office["Kundevare"].rows()) {
        const std::int64_t from = std::get<Moment>(item->at("Kv_FraDato")).milliseconds;
        const std::int64_t to = std::get<Moment>(item->at("Kv_TilDato")).milliseconds + 24 * 3600 * 1000 - 1000;
        if (textOf(*item, "Kv_Kvt_Id") == "EKS" && textOf(*item, "Kv_Ik_Ku_Id") == std::to_string(send.department) &&
            from <= send.now.milliseconds && send.now.milliseconds <= to)
            mine.put({{"MSV_VA_ID", item->at("Kv_Va_Id")}});
    }
}

void sendItems(const Send& send) {
    sendGroups(send);
    sendSuppliers(send);
    sendChosenItems(send);
    sendAliases(send);
    sendParts(send);
}

}  // namespace sandbox::chain
