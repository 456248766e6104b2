// See item_deletion.h.
#include "sandbox/chain/registers/item_deletion.h"

namespace sandbox::chain {

namespace {

enum class Action { Move, Delete };

// What hangs on items: its kind in the log, and what becomes of it.
struct Hanging {
    const char* table;
    const char* item;
    int kind;
    const char* reference;
    Action action;
    bool keptByAlias = true;
};

constexpr Hanging kHanging[] = {
    {"INTERNFLYTTINGLINJE", "IFL_VA_ID", 1, "IFL_ID", Action::Move},
    {"ORDRELINJE", "OL_VA_ID", 2, "OL_ID", Action::Move},
    {"VAREBESTILLINGLINJE", "VBL_VA_ID", 3, "VBL_ID", Action::Move},
    {"VAREMOTTAKLINJE", "VML_VA_ID", 4, "VML_ID", Action::Move},
    {"VARETELLINGLINJE", "VL_VA_ID", 5, "VL_ID", Action::Move},
    {"BEHOLDNINGSTRANSAKSJONER", "BHT_VA_ID", 4, "BHT_ID", Action::Delete, false},
    {"DELVARE", "DV_HOVED_VA_ID", 6, "DV_DELVARE_VA_ID", Action::Delete},
    {"DELVARE", "DV_DELVARE_VA_ID", 7, "DV_HOVED_VA_ID", Action::Delete},
    {"MERSALGVARE", "MSV_VA_ID", 8, "MSV_VA_ID", Action::Delete},
    {"PLUMEDLEM", "PLM_VA_ID", 9, "PLM_VA_ID", Action::Delete},
    {"VAREGRUPPE", "VG_VA_ID", 10, "VG_HOVED_VG_VA_ID", Action::Delete},
    {"VAREGRUPPE", "VG_HOVED_VG_VA_ID", 11, "VG_VA_ID", Action::Delete},
    {"REKLAMASJONLINJE", "REKL_VA_ID", 13, "REKL_ID", Action::Delete},
};

bool isAlias(const Send& send, const std::string& item) {
    for (const Row* alias : send.till["VAREALIAS"].rows())
        if (textOf(*alias, "VR_ID") == item) return true;
    return false;
}

void note(const Send& send, const std::string& item, int kind, const Cell& reference) {
    KeptTable& log = send.till["VareDeleteLogg"];
    const std::string key = cellText(reference);
    if (Row* known = log.find(item, std::to_string(kind), key))
        known->at("COUNT(*)") = integer(static_cast<int>(numberOf(*known, "COUNT(*)")) + 1);
    else
        log.put({{"Vdl_Va_Id", item},
                 {"Vdl_Vdlt_Id", integer(kind)},
                 {"Vdl_Reference", std::holds_alternative<std::monostate>(reference) ? Cell() : text(key)},
                 {"COUNT(*)", integer(1)}});
}

}  // namespace

void deleteItems(const Send& send) {
    const std::string replacement = textOf(*send.office["Innstillinger"].find("1"), "In_Slett_Va_ID");
    if (replacement.empty()) return;
    if (!send.till.has("VareDeleteLogg"))
        send.till.add({"VareDeleteLogg", "*Vdl_Va_Id~ *Vdl_Vdlt_Id *Vdl_Reference~ COUNT(*)",
                       " GROUP BY Vdl_Va_Id, Vdl_Vdlt_Id, Vdl_Reference"});
    const auto gone = [&](const std::string& item) { return !item.empty() && !send.office["Vare"].contains(item); };
    for (const Hanging& hanging : kHanging) {
        KeptTable& table = send.till[hanging.table];
        const auto touched = [&](const Row& row) {
            const std::string item = textOf(row, hanging.item);
            return gone(item) && !(hanging.keptByAlias && isAlias(send, item));
        };
        for (Row* row : table.rows()) {
            if (!touched(*row)) continue;
            note(send, textOf(*row, hanging.item), hanging.kind, row->at(hanging.reference));
            if (hanging.action == Action::Move) row->at(hanging.item) = replacement;
        }
        if (hanging.action == Action::Delete) table.eraseIf(touched);
    }
    KeptTable& items = send.till["VARE"];
    for (const Row* item : items.rows())
        if (const std::string id = textOf(*item, "VA_ID"); gone(id) && !isAlias(send, id)) note(send, id, 12, text(id));
    items.eraseIf([&](const Row& item) {
        const std::string id = textOf(item, "VA_ID");
        return gone(id) && !isAlias(send, id) && !send.till["GAVEKORTVARE"].contains(id);
    });
}

}  // namespace sandbox::chain
