// The back office's registers, one function a group of tables.
#include <iterator>
#include <set>

#include "sandbox/chain/chain_registers.h"
#include "sandbox/chain/chain_rows.h"
#include "sandbox/chain/chance.h"

namespace sandbox::chain {

namespace {

// Customers of the back office that are neither a department nor a buyer with a name of their own.
constexpr int kAnonymousCustomer = 500;
constexpr int kClickAndCollectCustomer = 501;
constexpr int kWarehouse = 900;
constexpr int kHeadOffice = 1000;
constexpr int kUnknownCustomer = 12000;

constexpr int kNorway = 47;
constexpr int kSaleOffer = 4710;     // of all departments
constexpr int kVoucherOffer = 4711;  // what the tills' vouchers come from

constexpr Moment kLongAgo{1577836800000};    // 2020-01-01
constexpr Moment kLongAhead{4102444800000};  // 2100-01-01

using Tables = std::vector<TableData>;

void append(Tables& to, Tables tables) {
    to.insert(to.end(), std::make_move_iterator(tables.begin()), std::make_move_iterator(tables.end()));
}

Tables settings() {
    return {{"Innstillinger",
             {"In_Id", "In_DbVersjon", "In_DagligJobbFlagg", "In_Anonym_Ku_ID", "In_KlikkOgHent_Ku_ID",
              "In_Hoved_Ik_Ku_Id", "In_Rpos_Or_Status_Import", "In_Direkteordre_Le_ID", "In_Fakturagebyr_Va_ID",
              "In_Gavekort_Va_ID", "In_SendValutaTilkasse"},
             {{integer(1), 1100.0, integer(0), integer(kAnonymousCustomer), integer(kClickAndCollectCustomer),
               integer(kHeadOffice), integer(2), integer(1), text(kInvoiceFeeItem), text(kGiftCardItem), integer(1)}}}};
}

// What names and prices refer to.
Tables common() {
    TableData categories{"Priskategori", {"Pi_ID", "Pi_Navn", "Pi_InklMva"}, {}};
    for (const PriceCategory& c : kPriceCategories)
        categories.rows.push_back({integer(c.id), text(c.name), integer(c.withVat)});
    TableData groups{"KundeGruppe", {"Kg_Id", "Kg_Navn"}, {}};
    for (const NamedNumber& g : kCustomerGroups) groups.rows.push_back({integer(g.id), text(g.name)});
    TableData profiles{"POSTIMEPROFIL", {"Pos_Tp_Id", "Pos_Tp_Navn", "Pos_Tp_Stemplingsregel"}, {}};
    for (const NamedNumber& p : kTimeProfiles) profiles.rows.push_back({integer(p.id), text(p.name), integer(0)});
    return {{"Land", {"La_Id", "La_Navn"}, {{integer(kNorway), text("Norge")}, {integer(46), text("Sverige")}}},
            {"Valuta",
             {"Vu_ID", "Vu_Navn", "Vu_Kurs", "Vu_Forhold"},
             {{text("NOK"), text("Norske kroner"), 100.0, integer(100)},
              {text("SEK"), text("Svenske kroner"), 101.5, integer(100)},
              {text("EUR"), text("Euro"), 11.42, integer(1)}}},
            categories,
            groups,
            profiles};
}

Tables tillRegistersOfTheChain() {
    TableData logTypes{"PosLoggtype", {"Pos_Lt_Id", "Pos_Lt_Navn"}, {}};
    for (const NamedNumber& t : kLogTypes) logTypes.rows.push_back({integer(t.id), text(t.name)});
    TableData reasonTypes{"PosGrunntype", {"Pos_Gt_Id", "Pos_Gt_Navn"}, {}};
    for (const NamedNumber& t : kReasonTypes) reasonTypes.rows.push_back({integer(t.id), text(t.name)});
    TableData reasons{
        "PosGrunn", {"Pos_Gr_Id", "Pos_Gr_Gt_Id", "Pos_Gr_Navn", "Pos_Gr_Utskriftsflagg", "Pos_Gr_Synlig_Kasse"}, {}};
    for (const Reason& r : kReasons)
        reasons.rows.push_back({integer(r.id), integer(r.type), text(r.name), integer(r.printed), integer(1)});
    reasons.rows.push_back({integer(4), integer(1), text("Reklamasjon"), integer(1), integer(1)});
    TableData money{"PosPengeenhet", {"Pos_Pe_Id", "Pos_Pe_Vu_Id", "Pos_Pe_Navn", "Pos_Pe_Verdi", "Pos_Pe_Mynt"}, {}};
    for (const MoneyUnit& u : kMoneyUnits)
        money.rows.push_back({integer(u.id), text("NOK"), text(u.name), u.value, integer(u.coin)});
    TableData issuers{"PosKortutsteder", {"Pos_Ko_Id", "Pos_Ko_Navn"}, {}};
    for (const NamedNumber& i : kIssuers) issuers.rows.push_back({integer(i.id), text(i.name)});
    TableData forms{"PosBetalingform",
                    {"Pos_Bf_Id", "Pos_Bf_Ko_Id", "Pos_Bf_Navn", "Pos_Bf_Aktiv", "Pos_Bf_Skuff", "Pos_Bf_Synlig",
                     "Pos_Bf_Paavirkersalg", "Pos_Bf_Vu_Id", "Pos_Bf_Maks_Belop", "Pos_Bf_Er_Kontant"},
                    {}};
    for (const PaymentForm& f : kPaymentForms)
        forms.rows.push_back({integer(f.id), integer(f.issuer), text(f.name), integer(1), integer(f.drawer), integer(1),
                              integer(1), text("NOK"), orNull(f.highest), integer(f.id == kCash)});
    return {logTypes, reasonTypes, reasons, money, issuers, forms};
}

Tables customersAndDepartments(const Chain& chain) {
    TableData places{"Poststed", {"Po_Id", "Po_La_Id", "Po_Navn"}, {}};
    TableData customers{
        "Kunde",
        {"Ku_Id", "Ku_Navn", "Ku_Adresse1", "Ku_Po_Id", "Ku_La_Id", "Ku_Telefon", "Ku_Type", "Ku_Pi_Id", "Ku_UpdDato"},
        {}};
    TableData memberships{"KundeKundegruppe", {"Kk_Ku_Id", "Kk_Kg_Id"}, {}};
    TableData relations{"KundeRelasjon", {"Krl_Fra_Ku_Id", "Krl_Til_Ku_Id", "Krl_Type"}, {}};
    TableData departments{"Internkunde",
                          {"Ik_Ku_Id", "Ik_Avdelingsnummer", "Ik_AntallKasser", "Ik_Butikktype", "Ik_Foretaksnummer",
                           "Ik_KasseBong1", "Ik_KasseBong2"},
                          {}};
    const auto nameless = std::monostate{};
    const auto addOwn = [&](int id, const char* name, Cell address) {
        customers.rows.push_back({integer(id), text(name), std::move(address), nameless, nameless, nameless, integer(0),
                                  nameless, kLongAgo});
    };
    addOwn(kAnonymousCustomer, "Anonym kunde", nameless);
    addOwn(kClickAndCollectCustomer, "Klikk og hent", nameless);
    addOwn(kHeadOffice, "Torvik hovedkontor AS", text("Torvik hovedkontor"));
    addOwn(kWarehouse, "Torvik sentrallager AS", text("Torvik sentrallager"));
    addOwn(kUnknownCustomer, "Diverse kredittkunder", nameless);
    departments.rows.push_back(
        {integer(kHeadOffice), text("100"), integer(0), integer(0), text("910001000"), nameless, nameless});
    for (std::size_t d = 0; d < chain.departments.size(); ++d) {
        const Department& department = chain.departments[d];
        std::int64_t tills = 0;
        for (const Till& till : chain.tills) tills += till.department == static_cast<int>(d) ? 1 : 0;
        customers.rows.push_back({integer(department.id), department.name + " AS", department.name, nameless, nameless,
                                  Cell("2200" + department.number), integer(0), nameless, kLongAgo});
        relations.rows.push_back({integer(department.id), integer(kWarehouse), text("LAGER")});
        departments.rows.push_back({integer(department.id), department.number, tills, integer(1),
                                    "9" + std::to_string(10000000 + department.id), department.name,
                                    text("Åpent 10-20")});
    }
    std::set<std::string> known;
    for (const Customer& c : chain.customers) {
        if (known.insert(c.postcode).second) places.rows.push_back({c.postcode, integer(kNorway), c.town});
        customers.rows.push_back({integer(c.id), c.name, c.address, c.postcode, integer(kNorway), nameless, integer(1),
                                  integer(c.priceCategory), kLongAgo});
        memberships.rows.push_back({integer(c.id), integer(c.group)});
    }
    return {places, customers, memberships, relations, departments};
}

Tables tillsAndStaff(const Chain& chain, const std::function<TillAddress(const Till&)>& addressOf) {
    TableData tills{"Internkundekasse",
                    {"Ikk_Ik_Ku_Id", "Ikk_Kassenummer", "Ikk_Kt_Id", "Ikk_Server", "Ikk_Database", "Ikk_Brukernavn",
                     "Ikk_Passord", "Ikk_AutentiseringType", "Ikk_Provider"},
                    {}};
    for (const Till& till : chain.tills) {
        const TillAddress address = addressOf(till);
        tills.rows.push_back({integer(chain.departmentOf(till).id), till.number, integer(1), address.server,
                              address.database, address.user, address.password, integer(0), integer(3)});
    }
    TableData staff{
        "InternKundeAnsatt", {"Ika_Id", "Ika_Ik_Ku_Id", "Ika_Navn", "Ika_Visningsnavn", "Ika_Kortnummer"}, {}};
    for (const Employee& e : chain.employees)
        staff.rows.push_back(
            {e.id, integer(chain.departments[static_cast<std::size_t>(e.department)].id), e.name, e.name, "K" + e.id});
    return {tills, staff};
}

Tables items(const Chain& chain) {
    TableData suppliers{"Leverandor", {"Le_Id", "Le_Navn", "Le_PostPostnr", "Le_PostSted", "Le_Post_La_Id"}, {}};
    for (const Supplier& s : chain.suppliers)
        suppliers.rows.push_back({integer(s.id), s.name, text("0181"), text("OSLO"), integer(kNorway)});
    TableData groups{"Varegruppe", {"Vg_Id", "Vg_Navn", "Vg_Hoved_Vg_ID", "Vg_Root_Vg_ID"}, {}};
    for (const ItemGroup& g : chain.groups) groups.rows.push_back({g.id, g.name, orNull(g.parent), orNull(g.parent)});
    TableData products{"Produkt", {"P_Id", "P_Navn", "P_InfoIntern", "P_InfoEkstern"}, {}};
    TableData rows{"Vare",
                   {"Va_Id", "Va_Navn", "Va_Kostpris", "Va_Pris", "Va_VeilPris", "Va_Vg_Id", "Va_Le_Id", "Va_P_ID",
                    "Va_Fargenavn", "Va_SendTilButikkKasser"},
                   {}};
    TableData aliases{"VareAlias", {"Vr_Id", "Vr_Va_Id"}, {{text(kAlias), chain.items.front().id}}};
    TableData prices{"Pris", {"Ps_Va_Id", "Ps_Pi_Id", "Ps_Prisen", "Ps_UpdDato"}, {}};
    TableData parts{"Delvare", {"Dv_Hoved_Va_ID", "Dv_Delvare_Va_ID", "Dv_Antall", "Dv_Utskriftsregel"}, {}};
    const auto none = std::monostate{};
    for (const Item& i : chain.serviceItems)
        rows.rows.push_back({i.id, i.name, i.cost, i.price, none, none, none, none, none, integer(0)});
    for (std::size_t n = 0; n < chain.items.size(); ++n) {
        const Item& i = chain.items[n];
        if (products.rows.empty() || std::get<std::string>(products.rows.back().front()) != i.product)
            products.rows.push_back(
                {i.product, "Produkt " + i.product, text("Står på hylle 4"), text("Vaskes på 40°")});
        rows.rows.push_back({i.id, i.name, i.cost, i.price, i.price, i.group, integer(i.supplier), i.product, i.colour,
                             integer(i.changed)});
        for (const PriceCategory& c : kPriceCategories)
            prices.rows.push_back(
                {i.id, integer(c.id), static_cast<double>(static_cast<int>(i.price * c.factor)), kLongAgo});
        if (n % 50 == 1) parts.rows.push_back({i.id, chain.items[n - 1].id, 2.0, integer(1)});
    }
    return {suppliers, groups, products, rows, aliases, prices, parts};
}

Tables offersAndDiscounts(const Chain& chain) {
    TableData extraSale{"Kundevare", {"Kv_Ik_Ku_Id", "Kv_Va_Id", "Kv_Kvt_Id", "Kv_FraDato", "Kv_TilDato"}, {}};
    for (const Department& d : chain.departments)
        extraSale.rows.push_back({integer(d.id), chain.items.back().id, text("EKS"), kLongAgo, kLongAhead});
    TableData cards{"POSRABATTKORT",
                    {"Pos_Ra_ID", "Pos_Ra_Navn", "Pos_Ra_GyldigTil", "Pos_Ra_Rabatt", "Pos_Ra_Aktiv",
                     "Pos_Ra_KunPaaOrdPris", "Pos_Ra_Ku_ID", "Pos_Ra_UpdDato"},
                    {}};
    for (std::size_t c = 0; c < chain.customers.size(); c += 2)
        cards.rows.push_back({"R" + std::to_string(chain.customers[c].id), chain.customers[c].name, kLongAhead, 10.0,
                              integer(1), integer(1), integer(chain.customers[c].id), kLongAgo});
    TableData matrix{"RabattMatrise", {"Rm_Kg_Id", "Rm_Vg_ID", "Rm_Fra", "Rm_Til", "Rm_Rabatt"}, {}};
    for (std::size_t g = 4; g < chain.groups.size(); ++g) {
        matrix.rows.push_back({integer(1), chain.groups[g].id, 0.0, 1000.0, 5.0});
        matrix.rows.push_back({integer(1), chain.groups[g].id, 1000.0, 100000.0, 10.0});
    }
    return {{"Pristilbud",
             {"Pr_Id", "Pr_Navn", "Pr_FraDato", "Pr_TilDato", "Pr_Type", "Pr_Beregningsmetode", "Pr_Fast_Rabatt",
              "Pr_GjelderAlleAvd", "Pr_Pst_Id"},
             {{integer(kSaleOffer), text("Vårsalg"), kLongAgo, kLongAhead, integer(0), integer(0), std::monostate{},
               integer(1), integer(2)},
              {integer(kVoucherOffer), text("Klippekort"), kLongAgo, kLongAhead, integer(4), integer(0), 20.0,
               integer(0), integer(2)}}},
            {"Pristilbudlinje",
             {"Pl_Pr_Id", "Pl_Va_Id", "Pl_Pris"},
             {{integer(kSaleOffer), chain.items.front().id, rounded(chain.items.front().price * 0.8)}}},
            {"PristilbudInternKunde",
             {"Pb_Pr_Id", "Pb_Ik_Ku_Id"},
             {{integer(kVoucherOffer), integer(chain.departments.front().id)}}},
            extraSale,
            cards,
            matrix};
}

}  // namespace

std::vector<TableData> backOfficeTables(const Chain& chain, const std::function<TillAddress(const Till&)>& addressOf) {
    Tables all = common();
    append(all, tillRegistersOfTheChain());
    append(all, customersAndDepartments(chain));
    append(all, tillsAndStaff(chain, addressOf));
    append(all, items(chain));
    append(all, offersAndDiscounts(chain));
    append(all, settings());
    return all;
}

}  // namespace sandbox::chain
