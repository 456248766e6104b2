// See sent_people.h. Nobody is deleted; a card goes with its holder.
#include "sandbox/chain/registers/sent_people.h"

#include <algorithm>
#include <optional>

namespace sandbox::chain {

namespace {

constexpr std::size_t kNameLength = 50;
constexpr const char* kNoDisplayName = "Ikke oppgitt";
constexpr int kUsualTimeProfile = 1;

constexpr ColumnPair kClerkColumns[] = {
    {"AN_AKTIV", "Ika_Aktiv"}, {"AN_RABATT", "Ika_Rabatt"},         {"AN_RABKUNPAAORDPRIS", "Ika_RabattKunPaaOrdPris"},
    {"AN_NIVAA", "Ika_Nivaa"}, {"AN_ANSATTDATO", "Ika_AnsattDato"}, {"AN_MAKS_RABATT", "Ika_Maks_Rabatt"}};

// The till compares its version with 119.0 as a text: 71 is the greater of the two, and 119 the lesser.
bool knowsPriceCategories(const Send& send) {
    return textOf(*send.till["INNSTILLINGER"].find("1"), "IN_DBVERSION") >= "119.0";
}

bool isFranchise(const Send& send) {
    for (const Row* member : send.office["KundeKundegruppe"].rows()) {
        const Row* group = send.office["KundeGruppe"].find(textOf(*member, "Kk_Kg_Id"));
        if (textOf(*member, "Kk_Ku_Id") == std::to_string(send.department) && textOf(*group, "Kg_Navn") == "Franchise")
            return true;
    }
    return false;
}

// A franchise gets its own staff, every other department that of all.
std::vector<Row*> staffOf(const Send& send) {
    std::vector<Row*> staff = send.office["InternKundeAnsatt"].rows();
    if (isFranchise(send))
        std::erase_if(
            staff, [&](const Row* clerk) { return textOf(*clerk, "Ika_Ik_Ku_Id") != std::to_string(send.department); });
    return staff;
}

Cell timeProfile(const Row& clerk) {
    return isNull(clerk, "Ika_Pos_Tp_Id") ? integer(kUsualTimeProfile) : clerk.at("Ika_Pos_Tp_Id");
}

Cell displayName(const Row& clerk) {
    return isNull(clerk, "Ika_Visningsnavn") ? text(kNoDisplayName) : clerk.at("Ika_Visningsnavn");
}

void sendTimeProfiles(const Send& send) {
    KeptTable& listed = send.till.replace({"TIMEPROFILIMPORT", "*Tpi_Id Tpi_Navn Tpi_Stemplingsregel"});
    for (const Row* profile : send.office["POSTIMEPROFIL"].rows()) {
        listed.put({{"Tpi_Id", profile->at("Pos_Tp_Id")},
                    {"Tpi_Navn", profile->at("Pos_Tp_Navn")},
                    {"Tpi_Stemplingsregel", profile->at("Pos_Tp_Stemplingsregel")}});
        send.till["TIMEPROFIL"].put({{"TP_ID", profile->at("Pos_Tp_Id")},
                                     {"TP_NAVN", profile->at("Pos_Tp_Navn")},
                                     {"TP_STEMPLINGSREGEL", profile->at("Pos_Tp_Stemplingsregel")}});
    }
}

void listStaff(const Send& send) {
    KeptTable& listed = send.till.replace(
        {"ANSATTIMPORT",
         "*IKAI_ID~ IKAI_IK_KU_ID IKAI_NAVN IKAI_VISNINGSNAVN IKAI_KORTNUMMER IKAI_AKTIV IKAI_NIVAA IKAI_RABATT "
         "IKAI_RABKUNPAAORDPRIS IKAI_AVDNR~ Ikai_AnsattDato Ikai_Tp_Id Ikai_Pi_Id Ikai_Maks_Rabatt#"});
    static constexpr ColumnPair kColumns[] = {{"IKAI_IK_KU_ID", "Ika_Ik_Ku_Id"},
                                              {"IKAI_NAVN", "Ika_Navn"},
                                              {"IKAI_KORTNUMMER", "Ika_Kortnummer"},
                                              {"IKAI_AKTIV", "Ika_Aktiv"},
                                              {"IKAI_NIVAA", "Ika_Nivaa"},
                                              {"IKAI_RABATT", "Ika_Rabatt"},
                                              {"IKAI_RABKUNPAAORDPRIS", "Ika_RabattKunPaaOrdPris"},
                                              {"Ikai_AnsattDato", "Ika_AnsattDato"},
                                              {"Ikai_Pi_Id", "Ika_Pi_Id"},
                                              {"Ikai_Maks_Rabatt", "Ika_Maks_Rabatt"}};
    for (const Row* clerk : staffOf(send)) {
        Row& row = listed.put({{"IKAI_ID", clerk->at("Ika_Id")},
                               {"IKAI_VISNINGSNAVN", displayName(*clerk)},
                               {"Ikai_Tp_Id", timeProfile(*clerk)}});
        copyColumns(row, *clerk, kColumns);
        row.at("IKAI_AVDNR") =
            send.office["Internkunde"].find(textOf(*clerk, "Ika_Ik_Ku_Id"))->at("Ik_Avdelingsnummer");
    }
}

// Each clerk has one card at most after a send: the one of the back office, or, where that holds none, the one that the
// till knew. An empty number takes the card away.
void sendCards(const Send& send) {
    KeptTable& cards = send.till["ADGANGSKORT"];
    const std::vector<Row*> staff = staffOf(send);
    cards.eraseIf([&](const Row& card) {
        return std::none_of(staff.begin(), staff.end(), [&](const Row* clerk) {
            return textOf(*clerk, "Ika_Id") == textOf(card, "AK_AN_ID") &&
                   (isNull(*clerk, "Ika_Kortnummer") || textOf(*clerk, "Ika_Kortnummer") == textOf(card, "AK_ID"));
        });
    });
    for (const Row* clerk : staff) {
        const std::string number = textOf(*clerk, "Ika_Kortnummer");
        if (!number.empty()) cards.erase(number);
    }
    for (const Row* clerk : staff) {
        if (textOf(*clerk, "Ika_Kortnummer").empty()) continue;
        cards.put({{"AK_ID", clerk->at("Ika_Kortnummer")},
                   {"AK_AN_ID", clerk->at("Ika_Id")},
                   {"AK_AKTIV", clerk->at("Ika_Aktiv")}});
    }
}

bool isDigits(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

// The lowest of the customer's groups.
Cell groupOf(const Send& send, const Row& customer) {
    std::optional<double> lowest;
    for (const Row* member : send.office["KundeKundegruppe"].rows())
        if (textOf(*member, "Kk_Ku_Id") == textOf(customer, "Ku_Id"))
            lowest = std::min(lowest.value_or(numberOf(*member, "Kk_Kg_Id")), numberOf(*member, "Kk_Kg_Id"));
    return lowest ? integer(static_cast<int>(*lowest)) : Cell();
}

Cell cut(const Row& row, const char* column) {
    return isNull(row, column) ? Cell() : text(textOf(row, column).substr(0, kNameLength));
}

// The work table that stays until the next send.
KeptTable& listCustomers(const Send& send) {
    KeptTable& listed = send.till.replace(
        {"KUNDEIMPORT",
         "*KUI_ID KUI_NAVN KUI_ADRESSE1 KUI_ADRESSE2 KUI_PO_ID KUI_PO_NAVN KUI_PI_ID KUI_KG_ID KUI_FJERNGEBYR "
         "KUI_SPERRET"});
    for (const Row* customer : send.office["Kunde"].rows()) {
        const std::string postcode = textOf(*customer, "Ku_Po_Id");
        const Row* place = send.office["Poststed"].find(postcode, textOf(*customer, "Ku_La_Id"));
        if (!isDigits(postcode) || !place || numberOf(*customer, "Ku_Type") == 0 ||
            !send.isDue(*customer, "Ku_UpdDato"))
            continue;
        listed.put({{"KUI_ID", customer->at("Ku_Id")},
                    {"KUI_NAVN", cut(*customer, "Ku_Navn")},
                    {"KUI_ADRESSE1", cut(*customer, "Ku_Adresse1")},
                    {"KUI_ADRESSE2", cut(*customer, "Ku_Adresse2")},
                    {"KUI_PO_ID", postcode},
                    {"KUI_PO_NAVN", place->at("Po_Navn")},
                    {"KUI_PI_ID", customer->at("Ku_Pi_Id")},
                    {"KUI_KG_ID", groupOf(send, *customer)},
                    {"KUI_FJERNGEBYR", customer->at("Ku_FjernGebyr")},
                    {"KUI_SPERRET", customer->at("Ku_Sperret")}});
    }
    return listed;
}

}  // namespace

void sendSettings(const Send& send) {
    const Row* department = send.office["Internkunde"].find(std::to_string(send.department));
    const Row* customer = send.office["Kunde"].find(std::to_string(send.department));
    const Row* till = send.office["Internkundekasse"].find(std::to_string(send.department), send.number);
    Row& mine = *send.till["INNSTILLINGER"].find("1");
    static constexpr ColumnPair kReceiptLines[] = {{"IN_NAVN", "Ik_KasseBong1"},
                                                   {"IN_ADR1", "Ik_KasseBong2"},
                                                   {"IN_ADR2", "Ik_KasseBong3"},
                                                   {"IN_ADR3", "Ik_KasseBong4"}};
    for (const ColumnPair& line : kReceiptLines) mine.at(line.to) = textOf(*department, line.from);
    mine.at("IN_TELEFON") = customer->at("Ku_Telefon");
    mine.at("IN_TELEFAX") = customer->at("Ku_Telefax");
    mine.at("IN_ORGNR") = department->at("Ik_Foretaksnummer");
    mine.at("IN_AVDNR") = department->at("Ik_Avdelingsnummer");
    mine.at("IN_KASSENR") = till->at("Ikk_Kassenummer");
    if (send.till["INNSTILLINGER"].has("IN_APIPASSORD")) mine.at("IN_APIPASSORD") = till->at("Ikk_Passord");
}

void sendStaff(const Send& send) {
    sendTimeProfiles(send);
    listStaff(send);
    KeptTable& mine = send.till["ANSATT"];
    for (const Row* clerk : staffOf(send)) {
        Row* known = mine.find(textOf(*clerk, "Ika_Id"));
        // A new clerk's category follows one send later, and one that the till did not know before this send does too.
        if (known && knowsPriceCategories(send) && send.till["PRISKATEGORI"].contains(textOf(*clerk, "Ika_Pi_Id")))
            known->at("AN_PI_ID") = clerk->at("Ika_Pi_Id");
        Row& row = known ? *known : mine.put({{"AN_ID", clerk->at("Ika_Id")}});
        copyColumns(row, *clerk, kClerkColumns);
        row.at("AN_NAVN") = displayName(*clerk);
        row.at("AN_TP_ID") = timeProfile(*clerk);
        row.at("AN_AVDNR") = send.office["Internkunde"].find(textOf(*clerk, "Ika_Ik_Ku_Id"))->at("Ik_Avdelingsnummer");
        row.at("AN_LONNSKONTO") = {};
        row.at("AN_PERSONNR") = {};
    }
    sendCards(send);
}

void sendCustomerGroups(const Send& send) {
    for (const Row* group : send.office["KundeGruppe"].rows())
        send.till["KUNDEGRUPPE"].put({{"KG_ID", group->at("Kg_Id")}, {"KG_NAVN", group->at("Kg_Navn")}});
}

void sendCustomers(const Send& send) {
    KeptTable& mine = send.till["KUNDE"];
    static constexpr ColumnPair kColumns[] = {{"KU_NAVN", "KUI_NAVN"},
                                              {"KU_ADRESSE1", "KUI_ADRESSE1"},
                                              {"KU_ADRESSE2", "KUI_ADRESSE2"},
                                              {"KU_PO_ID", "KUI_PO_ID"},
                                              {"KU_PO_NAVN", "KUI_PO_NAVN"}};
    for (const Row* customer : listCustomers(send).rows()) {
        const std::string id = textOf(*customer, "KUI_ID");
        Row* known = mine.find(id);
        // A block reaches new customers alone.
        Row& row =
            known ? *known : mine.put({{"KU_ID", customer->at("KUI_ID")}, {"KU_SPERRET", customer->at("KUI_SPERRET")}});
        copyColumns(row, *customer, kColumns);
        row.at("KU_KG_ID") =
            send.till["KUNDEGRUPPE"].contains(textOf(*customer, "KUI_KG_ID")) ? customer->at("KUI_KG_ID") : Cell();
        if (knowsPriceCategories(send) && id != "1")
            row.at("KU_PI_ID") =
                send.till["PRISKATEGORI"].contains(textOf(*customer, "KUI_PI_ID")) ? customer->at("KUI_PI_ID") : Cell();
    }
}

}  // namespace sandbox::chain
