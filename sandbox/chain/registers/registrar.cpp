// See registrar.h.
#include "sandbox/chain/registers/registrar.h"

#include "sandbox/chain/chance.h"

namespace sandbox::chain {

namespace {

constexpr int kNorway = 47;
constexpr int kSweden = 46;
constexpr int kFranchiseGroup = 3;
constexpr Moment kLongAgo{1577836800000};    // 2020-01-01
constexpr Moment kLongAhead{4102444800000};  // 2100-01-01

}  // namespace

Registrar::Registrar(const Chain& chain, KeptTables& office, Moment now) : chain_(chain), office_(office), now_(now) {}

void Registrar::work(int day) {
    clearMarks();
    workOnItems(day);
    workOnOffers(day);
    workOnCustomers(day);
    workOnStaff(day);
    workOnDiscounts(day);
    workOnSlips(day);
    workOnSmallRegisters(day);
}

void Registrar::clearMarks() {
    for (Row* item : office_["Vare"].rows()) item->at("Va_SendTilButikkKasser") = integer(0);
}

const std::string& Registrar::item(int number) const {
    return chain_.items[static_cast<std::size_t>(number) % chain_.items.size()].id;
}

Row& Registrar::newItem(const std::string& id) {
    office_["Produkt"].put({{"P_Id", "P" + id},
                            {"P_Navn", "Produkt " + id},
                            {"P_InfoIntern", text("Bestilles på mandag")},
                            {"P_InfoRegel", integer(1)}});
    Row& item = office_["Vare"].put({{"Va_Id", id},
                                     {"Va_Navn", "Ny vare " + id},
                                     {"Va_Kostpris", 40.5},
                                     {"Va_Pris", 99.9},
                                     {"Va_Nummertype", text("EAN13")},
                                     {"Va_Vg_Id", chain_.groups.back().id},
                                     {"Va_Le_Id", integer(1)},
                                     {"Va_P_ID", "P" + id},
                                     {"Va_Fargenavn", text("Lilla")},
                                     {"Va_Storrelsenavn", text("XL")},
                                     {"Va_Minlager", 2.0},
                                     {"Va_Makslager", 12.0},
                                     {"Va_Prislapp", integer(1)},
                                     {"Va_MaksRabatt", integer(30)},
                                     {"Va_SendTilButikkKasser", integer(1)}});
    reprice(id, 1, 99.9);
    reprice(id, 2, 69.5);
    return item;
}

void Registrar::changeItem(const std::string& id) {
    Row& item = *office_["Vare"].find(id);
    item.at("Va_Navn") = textOf(item, "Va_Navn") + " *";
    item.at("Va_Pris") = numberOf(item, "Va_Pris") + 10;
    item.at("Va_VeilPris") = Cell();
    item.at("Va_Utgaatt") = integer(1);
    item.at("Va_SendTilButikkKasser") = integer(1);
}

void Registrar::reprice(const std::string& id, int category, double price) {
    office_["Pris"].put(
        {{"Ps_Va_Id", id}, {"Ps_Pi_Id", integer(category)}, {"Ps_Prisen", price}, {"Ps_UpdDato", now_}});
}

void Registrar::deleteItem(const std::string& id) {
    struct Dependent {
        const char* table;
        const char* column;
    };
    static constexpr Dependent kDependents[] = {
        {"VareAlias", "Vr_Va_Id"}, {"Delvare", "Dv_Hoved_Va_ID"}, {"Delvare", "Dv_Delvare_Va_ID"},
        {"Kundevare", "Kv_Va_Id"}, {"Pris", "Ps_Va_Id"},          {"Pristilbudlinje", "Pl_Va_Id"}};
    for (const Dependent& dependent : kDependents)
        office_[dependent.table].eraseIf([&](const Row& row) { return textOf(row, dependent.column) == id; });
    office_["Vare"].erase(id);
}

Row& Registrar::newCustomer(int id) {
    return office_["Kunde"].put({{"Ku_Id", integer(id)},
                                 {"Ku_Navn", "Ny kunde " + std::to_string(id) + std::string(45, 'x')},
                                 {"Ku_Adresse1", text("Nyveien 1")},
                                 {"Ku_Adresse2", text("Postboks 12")},
                                 {"Ku_Po_Id", text("9990")},
                                 {"Ku_La_Id", integer(kNorway)},
                                 {"Ku_Type", integer(1)},
                                 {"Ku_Pi_Id", integer(2)},
                                 {"Ku_FjernGebyr", integer(1)},
                                 {"Ku_UpdDato", now_}});
}

Row& Registrar::changedCustomer(int id) {
    Row& customer = *office_["Kunde"].find(std::to_string(id));
    customer.at("Ku_UpdDato") = now_;
    return customer;
}

Row& Registrar::clerk(const std::string& id) {
    return *office_["InternKundeAnsatt"].find(id);
}

void Registrar::swapCards(const std::string& one, const std::string& other) {
    std::swap(clerk(one).at("Ika_Kortnummer"), clerk(other).at("Ika_Kortnummer"));
}

void Registrar::issueGiftCard(const std::string& id, const Till& at, double amount) {
    office_["POSGAVEKORT"].put({{"GA_ID", id},
                                {"GA_AVDNR", departmentOf(at)},
                                {"GA_KASSENR", at.number},
                                {"GA_AN_ID", text("100")},
                                {"GA_BELOP", amount},
                                {"GA_GYLDIGTIL", kLongAhead},
                                {"GA_SYNKTIDSPUNKT", now_}});
}

void Registrar::redeemGiftCard(const std::string& id, const Till& soldAt, const Till& redeemedAt) {
    Row& card = *office_["POSGAVEKORT"].find(id, departmentOf(soldAt), soldAt.number);
    card.at("GA_BET_AVDNR") = departmentOf(redeemedAt);
    card.at("GA_BET_KASSENR") = redeemedAt.number;
    card.at("GA_BET_AN_ID") = text("100");
    card.at("GA_BT_ID") = integer(77);
}

void Registrar::issueCreditNote(const std::string& id, const Till& at, double amount) {
    office_["POSTilgodelapp"].put({{"TG_ID", id},
                                   {"TG_AVDNR", departmentOf(at)},
                                   {"TG_KASSENR", at.number},
                                   {"TG_AN_ID", text("100")},
                                   {"TG_OR_ID", integer(9)},
                                   {"TG_BELOP", amount},
                                   {"TG_GYLDIGTIL", kLongAhead},
                                   {"TG_SYNKTIDSPUNKT", now_}});
}

void Registrar::redeemCreditNote(const std::string& id, const Till& givenAt, const Till& redeemedAt) {
    Row& note = *office_["POSTilgodelapp"].find(id, departmentOf(givenAt), givenAt.number);
    note.at("TG_BET_AVDNR") = departmentOf(redeemedAt);
    note.at("TG_BET_KASSENR") = redeemedAt.number;
    note.at("TG_BET_AN_ID") = text("100");
    note.at("TG_BT_ID") = integer(78);
}

void Registrar::workOnItems(int day) {
    const std::string added = "N" + padded(day, 5);
    newItem(added);
    changeItem(item(5 * day));
    changeItem(item(5 * day + 1));
    reprice(item(5 * day + 1), 2, 11.5 + day);
    deleteItem(item(5 * day + 2));
    // A product that has lost its texts, and one that has new ones.
    if (Row* product = office_["Produkt"].find(textOf(*office_["Vare"].find(item(5 * day)), "Va_P_ID"))) {
        product->at("P_InfoIntern") = "Hylle " + std::to_string(day);
        product->at("P_InfoEkstern") = Cell();
    }
    // An alias comes, one gets a name, one goes: its number has become an item's.
    office_["VareAlias"].put({{"Vr_Id", "A" + added}, {"Vr_Va_Id", added}, {"Vr_Navn", text("Ny")}});
    office_["VareAlias"].put({{"Vr_Id", added}, {"Vr_Va_Id", item(5 * day)}});
    for (Row* alias : office_["VareAlias"].rows())
        if (isNull(*alias, "Vr_Navn")) alias->at("Vr_Navn") = "Navn " + std::to_string(day);
    office_["Delvare"].put({{"Dv_Hoved_Va_ID", added},
                            {"Dv_Delvare_Va_ID", item(5 * day)},
                            {"Dv_Antall", 3.0},
                            {"Dv_Pris", 12.5},
                            {"Dv_Utskriftsregel", integer(2)}});
    office_["Varegruppe"].put({{"Vg_Id", padded(900 + day, 4)},
                               {"Vg_Navn", "Ny gruppe " + std::to_string(day)},
                               {"Vg_Hoved_Vg_ID", chain_.groups.front().id},
                               {"Vg_Root_Vg_ID", chain_.groups.front().id}});
    Row& group = *office_["Varegruppe"].find(chain_.groups.back().id);
    group.at("Vg_Navn") = "Sesong " + std::to_string(day);
    group.at("Vg_Hoved_Vg_ID") = Cell();
    Row& supplier = *office_["Leverandor"].find("2");
    supplier.at("Le_PostAdr") = "Industriveien " + std::to_string(day);
    supplier.at("Le_Telefon") = text("22 00 00 00");
    supplier.at("Le_Telefax") = text("22 00 00 01");
    supplier.at("Le_Email") = text("post@leverandor.example");
    supplier.at("Le_Post_La_Id") = integer(kSweden);
    office_["Kundevare"].put({{"Kv_Ik_Ku_Id", integer(chain_.departments.front().id)},
                              {"Kv_Va_Id", added},
                              {"Kv_Kvt_Id", text("EKS")},
                              {"Kv_FraDato", kLongAgo},
                              {"Kv_TilDato", kLongAhead}});
}

void Registrar::workOnOffers(int day) {
    const auto offer = [&](int id, int type, int method, int approved, Moment to) {
        office_["Pristilbud"].put({{"Pr_Id", integer(id)},
                                   {"Pr_Navn", "Tilbud " + std::to_string(id)},
                                   {"Pr_FraDato", kLongAgo},
                                   {"Pr_TilDato", to},
                                   {"Pr_Type", integer(type)},
                                   {"Pr_Beregningsmetode", integer(method)},
                                   {"Pr_Fast_Rabatt", 15.0},
                                   {"Pr_GjelderAlleAvd", integer(0)},
                                   {"Pr_Pst_Id", integer(approved)}});
        for (std::size_t d = 0; d < chain_.departments.size(); d += 2)
            office_["PristilbudInternKunde"].put(
                {{"Pb_Pr_Id", integer(id)}, {"Pb_Ik_Ku_Id", integer(chain_.departments[d].id)}});
        office_["Pristilbudlinje"].put(
            {{"Pl_Pr_Id", integer(id)}, {"Pl_Va_Id", item(5 * day + 1)}, {"Pl_Pris", 49.0 + day}});
    };
    const int first = 5000 + 10 * day;
    offer(first, 1, 4, 2, kLongAhead);
    offer(first + 1, 1, 4, 1, kLongAhead);        // not approved
    offer(first + 2, 3, 2, 2, kLongAhead);        // of a kind that tills do not know
    offer(first + 3, 5, 9, 2, Moment{kLongAgo});  // over
    for (Row* line : office_["Pristilbudlinje"].rows()) line->at("Pl_Pris") = numberOf(*line, "Pl_Pris") + 1;
    // Yesterday's offer has ended.
    if (Row* old = office_["Pristilbud"].find(std::to_string(first - 10))) old->at("Pr_TilDato") = kLongAgo;
}

void Registrar::workOnCustomers(int day) {
    for (const auto& [postcode, country] : {std::pair("9990", kNorway), {"S-411", kSweden}})
        office_["Poststed"].put(
            {{"Po_Id", text(postcode)}, {"Po_La_Id", integer(country)}, {"Po_Navn", text("BÅTSFJORD")}});
    const int first = 40000 + 10 * day;
    newCustomer(first).at("Ku_Sperret") = integer(1);
    office_["KundeKundegruppe"].put({{"Kk_Ku_Id", integer(first)}, {"Kk_Kg_Id", integer(2)}});
    office_["KundeKundegruppe"].put({{"Kk_Ku_Id", integer(first)}, {"Kk_Kg_Id", integer(1)}});
    Row& abroad = newCustomer(first + 1);
    abroad.at("Ku_Po_Id") = text("S-411");
    abroad.at("Ku_La_Id") = integer(kSweden);
    newCustomer(first + 2).at("Ku_Type") = integer(0);
    Row& placeless = newCustomer(first + 3);
    placeless.at("Ku_Po_Id") = Cell();
    placeless.at("Ku_La_Id") = Cell();
    if (chain_.customers.empty()) return;
    Row& known = changedCustomer(chain_.customers[static_cast<std::size_t>(day) % chain_.customers.size()].id);
    known.at("Ku_Navn") = "Nytt navn " + std::to_string(day);
    known.at("Ku_Adresse2") = text("Bakgården");
    known.at("Ku_Sperret") = integer(1);
    known.at("Ku_Pi_Id") = integer(2);
    office_["KundeGruppe"].put({{"Kg_Id", integer(10 + day)}, {"Kg_Navn", "Ny gruppe " + std::to_string(day)}});
    office_["KundeGruppe"].find("2")->at("Kg_Navn") = "Idrett " + std::to_string(day);
}

void Registrar::workOnStaff(int day) {
    const std::string department = std::to_string(chain_.departments.front().id);
    const std::string fresh = "9" + padded(day, 4);
    office_["InternKundeAnsatt"].put({{"Ika_Id", fresh},
                                      {"Ika_Ik_Ku_Id", integer(chain_.departments.back().id)},
                                      {"Ika_Navn", text("Ny ansatt")},
                                      {"Ika_Kortnummer", "K" + fresh},
                                      {"Ika_Rabatt", 5.0},
                                      {"Ika_RabattKunPaaOrdPris", integer(1)},
                                      {"Ika_Nivaa", integer(3)},
                                      {"Ika_AnsattDato", Moment{firstDay()}},
                                      {"Ika_Pos_Tp_Id", integer(2)},
                                      {"Ika_Pi_Id", integer(2)},
                                      {"Ika_Maks_Rabatt", 12.5}});
    const auto& staff = chain_.employees;
    const auto id = [&](int number) { return staff[static_cast<std::size_t>(number) % staff.size()].id; };
    swapCards(id(0), id(1));
    Row& forgotten = clerk(id(2));  // the card stays at the tills
    forgotten.at("Ika_Kortnummer") = Cell();
    forgotten.at("Ika_Aktiv") = integer(day % 2);
    if (staff.size() > 3) clerk(id(3)).at("Ika_Kortnummer") = day % 2 ? text("") : text("K" + id(3));
    if (staff.size() > 4) clerk(id(4)).at("Ika_Kortnummer") = "B" + std::to_string(day);
    clerk(id(0)).at("Ika_Pi_Id") = integer(1 + day % 2);
    clerk(id(1)).at("Ika_Visningsnavn") = Cell();
    office_["POSTIMEPROFIL"].put({{"Pos_Tp_Id", integer(10 + day)},
                                  {"Pos_Tp_Navn", "Profil " + std::to_string(day)},
                                  {"Pos_Tp_Stemplingsregel", integer(day)}});
    office_["POSTIMEPROFIL"].find("2")->at("Pos_Tp_Stemplingsregel") = integer(day);
    if (Row* gone = office_["InternKundeAnsatt"].find("9" + padded(day - 1, 4))) {
        const std::string left = textOf(*gone, "Ika_Id");
        office_["InternKundeAnsatt"].erase(left);
    }
    // From the second day on the last department is a franchise, which sees its own staff alone.
    if (day >= 2)
        office_["KundeKundegruppe"].put(
            {{"Kk_Ku_Id", integer(chain_.departments.back().id)}, {"Kk_Kg_Id", integer(kFranchiseGroup)}});
    Row& receipt = *office_["Internkunde"].find(department);
    receipt.at("Ik_KasseBong3") = "Velkommen igjen " + std::to_string(day);
    office_["Kunde"].find(department)->at("Ku_Telefax") = text("22001199");
}

void Registrar::workOnDiscounts(int day) {
    const auto card = [&](const std::string& id, Cell customer, int active, double percent) {
        office_["POSRABATTKORT"].put({{"Pos_Ra_ID", id},
                                      {"Pos_Ra_Navn", "Rabattkort " + id + std::string(20, 'y')},
                                      {"Pos_Ra_GyldigTil", kLongAhead},
                                      {"Pos_Ra_Rabatt", 7.5},
                                      {"Pos_Ra_Aktiv", integer(active)},
                                      {"Pos_Ra_KunPaaOrdPris", integer(0)},
                                      {"Pos_Ra_Ku_ID", std::move(customer)},
                                      {"Pos_Ra_Ku_Kreditt_Prosent", percent},
                                      {"Pos_Ra_UpdDato", now_}});
    };
    const std::string fresh = "D" + std::to_string(day);
    if (chain_.customers.size() > 1)
        for (std::size_t c = 0; c < 2; ++c)
            card(fresh, integer(chain_.customers[c].id), 1, 2.5 + static_cast<double>(c));
    card("L" + std::to_string(day), Cell(), 1, 0.0);
    // The day before's is taken back.
    for (Row* old : office_["POSRABATTKORT"].rows()) {
        if (textOf(*old, "Pos_Ra_ID") != "D" + std::to_string(day - 1)) continue;
        old->at("Pos_Ra_Aktiv") = integer(0);
        old->at("Pos_Ra_UpdDato") = now_;
    }
    KeptTable& matrix = office_["RabattMatrise"];
    matrix.put({{"Rm_Kg_Id", integer(2)},
                {"Rm_Vg_ID", chain_.groups.front().id},
                {"Rm_Fra", 100.0 * day},
                {"Rm_Til", 100.0 * day + 50},
                {"Rm_Rabatt", 3.0}});
    for (Row* row : matrix.rows())
        if (numberOf(*row, "Rm_Fra") == 0) row->at("Rm_Rabatt") = 5.0 + day;
    matrix.erase("2", chain_.groups.front().id, std::to_string(100 * (day - 1)), std::to_string(100 * (day - 1) + 50));
}

void Registrar::workOnSlips(int day) {
    const auto number = [](const char* kind, int of) { return kind + padded(of, 8); };
    const auto& till = [&](int n) -> const Till& {
        return chain_.tills[static_cast<std::size_t>(n) % chain_.tills.size()];
    };
    issueGiftCard(number("7", 2 * day), till(day), 500);
    issueGiftCard(number("7", 2 * day + 1), till(day + 1), 250);
    issueCreditNote(number("8", day), till(day), 129.5);
    if (day < 1 ||
        !office_["POSGAVEKORT"].contains(number("7", 2 * day - 2), departmentOf(till(day - 1)), till(day - 1).number))
        return;
    redeemGiftCard(number("7", 2 * day - 2), till(day - 1), till(day + 1));
    redeemCreditNote(number("8", day - 1), till(day - 1), till(day + 2));
}

void Registrar::workOnSmallRegisters(int day) {
    office_["Valuta"].put({{"Vu_ID", "X" + padded(day, 2)},
                           {"Vu_Navn", "Valuta " + std::to_string(day)},
                           {"Vu_Kurs", 1.5 + day},
                           {"Vu_Forhold", integer(10)}});
    office_["Valuta"].find("EUR")->at("Vu_Kurs") = 11.5 + day;
    office_["PosGrunn"].put({{"Pos_Gr_Id", integer(20 + day)},
                             {"Pos_Gr_Gt_Id", integer(1)},
                             {"Pos_Gr_Navn", "Grunn " + std::to_string(day)},
                             {"Pos_Gr_Utskriftsflagg", integer(0)}});
    office_["PosGrunn"].find("1")->at("Pos_Gr_Navn") = "Feil størrelse " + std::to_string(day);
    office_["PosBetalingform"].find("1")->at("Pos_Bf_Min_Belop") = 0.5 + day;
    office_["PosBetalingform"].put({{"Pos_Bf_Id", integer(50)},
                                    {"Pos_Bf_Navn", text("Bare i bakkontoret")},
                                    {"Pos_Bf_Aktiv", integer(1)},
                                    {"Pos_Bf_Skuff", integer(0)},
                                    {"Pos_Bf_Synlig", integer(1)},
                                    {"Pos_Bf_Paavirkersalg", integer(1)},
                                    {"Pos_Bf_Vu_Id", text("NOK")},
                                    {"Pos_Bf_Maks_Belop", 100.0},
                                    {"Pos_Bf_Er_Kontant", integer(0)}});
    office_["Priskategori"].put(
        {{"Pi_ID", integer(10 + day)}, {"Pi_Navn", "Kategori " + std::to_string(day)}, {"Pi_InklMva", integer(1)}});
    office_["Priskategori"].erase(std::to_string(9 + day));
    office_["Priskategori"].find("2")->at("Pi_InklMva") = integer(day % 2);
}

}  // namespace sandbox::chain
