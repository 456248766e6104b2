// The tables before a fetch, one function a group of tables.
#include "sandbox/chain/chain_rows.h"

#include <set>

namespace sandbox::chain {

namespace {

std::int64_t asInt(bool v) {
    return v ? 1 : 0;
}
std::int64_t asInt(int v) {
    return v;
}

Cell cell(const std::optional<int>& v) {
    return v ? Cell(asInt(*v)) : Cell(std::monostate{});
}
Cell cell(const std::optional<bool>& v) {
    return v ? Cell(asInt(*v)) : Cell(std::monostate{});
}
Cell cell(int v) {
    return asInt(v);
}

// Customers of the back office that are neither a department nor a buyer with a name of their own.
constexpr int kAnonymousCustomer = 500;
constexpr int kClickAndCollectCustomer = 501;
constexpr int kWarehouse = 900;
constexpr int kHeadOffice = 1000;
constexpr int kUnknownCustomer = 12000;

struct SettlementTables {
    TableData heads{"OPPGJOR",
                    {"OP_ID", "OP_AN_ID", "OP_TIDSPUNKT", "OP_OPPDATERTTIDSPUNKT", "OP_TYPE", "OP_STATUS",
                     "OP_TIDSPUNKTFERDIG", "OP_ANTKUNDERINNOM", "OP_NATTSAFE_INNKASTNR"},
                    {}};
    TableData cash{
        "OPPGJORLINJE", {"OPL_ID", "OPL_OP_ID", "OPL_PE_ID", "OPL_VEKSLEPENGER", "OPL_OPPTALT", "OPL_FAKTISK"}, {}};
    TableData payments{"OPPGJORBETALING", {"OB_OP_ID", "OB_BF_ID", "OB_BELOP", "OB_OPPTALT"}, {}};
    TableData attachments{"VEDLEGG", {"VLG_ID", "VLG_OP_ID", "VLG_FILNAVN", "VLG_INNHOLD"}, {}};
    TableData signatures{"OPPGJORSIGNATUR", {"OPSI_OP_ID", "OPSI_SI_ID", "OPSI_SIT_ID"}, {}};
};

struct OrderTables {
    TableData heads{"ORDRE",
                    {"OR_ID", "OR_KU_ID", "OR_OP_ID", "OR_AN_ID", "OR_TIDSPUNKT", "OR_TIDSPUNKTFERDIG", "OR_STATUS",
                     "OR_REKVISISJONSNUMMER", "OR_POSTNR", "OR_TELEFON", "OR_STATISTIKK_AN_ID"},
                    {}};
    TableData lines{"ORDRELINJE",
                    {"OL_ID", "OL_OR_ID", "OL_VA_ID", "OL_ANTALL", "OL_RABATT", "OL_SALGSPRIS", "OL_MVASATS",
                     "OL_KOSTPRIS", "OL_SLETTET", "OL_MERSALG", "OL_STATUS", "OL_VISNINGSVARE", "OL_GJELDENDEPRIS"},
                    {}};
    TableData reasons{"ORDREGRUNN", {"OG_GR_ID", "OG_OR_ID"}, {}};
    TableData lineReasons{"ORDRELINJEGRUNN", {"OLG_GR_ID", "OLG_OL_ID"}, {}};
    TableData texts{"ORDRELINJETEKST", {"OLT_OL_ID", "OLT_NAVN"}, {}};
    TableData vouchers{"KUPONGORDRELINJE", {"KOL_KUP_ID", "KOL_OL_ID"}, {}};
    TableData signatures{"ORDRESIGNATUR", {"ORSI_OR_ID", "ORSI_SI_ID", "ORSI_SIT_ID"}, {}};
    TableData returns{
        "ORDRERETUR", {"ORE_ID", "ORE_OR_ID", "ORE_RETUR_OR_ID", "ORE_RETUR_AVDNR", "ORE_RETUR_KASSENR"}, {}};
};

struct PaymentTables {
    TableData heads{"BETALING", {"BT_ID", "BT_BF_ID", "BT_OR_ID", "BT_BELOP", "BT_VU_KURS"}, {}};
    TableData bank{"BETALINGBANKINFO",
                   {"BBI_ID", "BBI_BT_ID", "BBI_KO_ID", "BBI_KORTDATA", "BBI_TIDSSTEMPEL", "BBI_AVSTEM_SESJONSNUMMER"},
                   {}};
    TableData signatures{"BETALINGSIGNATUR", {"BTSI_BT_ID", "BTSI_SI_ID", "BTSI_SIT_ID"}, {}};
    TableData telephone{"VippsBetaling", {"VIB_BT_ID", "VIB_REFERANSE", "VIB_ORDRENUMMER"}, {}};
};

void addSettlements(const Till& till, SettlementTables& t, TableData& pictures) {
    if (till.version >= 158) t.heads.columns.emplace_back("OP_KOMMENTAR");
    for (const Settlement& s : till.settlements) {
        std::vector<Cell> row{cell(s.id), s.employee, s.time,           std::monostate{},   s.type,
                              cell(0),    s.finished, cell(s.visitors), orNull(s.nightSafe)};
        if (till.version >= 158) row.push_back(orNull(s.comment));
        t.heads.rows.push_back(std::move(row));
        for (const CashLine& c : s.cash)
            t.cash.rows.push_back({cell(c.id), cell(s.id), cell(c.unit), c.change, c.counted, c.actual});
        for (const SettledPayment& p : s.payments)
            t.payments.rows.push_back({cell(s.id), cell(p.form), p.amount, p.counted});
        for (const Attachment& a : s.attachments)
            t.attachments.rows.push_back({cell(a.id), cell(s.id), a.fileName, a.content});
        if (s.signature) {
            pictures.rows.push_back({cell(s.signature->id), s.signature->picture});
            t.signatures.rows.push_back({cell(s.id), cell(s.signature->id), cell(1)});
        }
    }
}

void addPayments(const Till& till, const Order& order, PaymentTables& t, TableData& pictures) {
    for (const Payment& p : order.payments) {
        t.heads.rows.push_back({cell(p.id), cell(p.form), cell(order.id), p.amount, orNull(p.rate)});
        if (p.bank) {
            std::vector<Cell> row{cell(p.bank->id), cell(p.id),    cell(p.bank->issuer),
                                  p.bank->card,     p.bank->stamp, std::string("1")};
            if (till.version >= 178) row.insert(row.end(), {p.bank->transaction, p.bank->authorisation});
            t.bank.rows.push_back(std::move(row));
        }
        if (p.signature) {
            pictures.rows.push_back({cell(p.signature->id), p.signature->picture});
            t.signatures.rows.push_back({cell(p.id), cell(p.signature->id), cell(2)});
        }
        if (p.telephoneReference)
            t.telephone.rows.push_back({cell(p.id), *p.telephoneReference, std::to_string(order.id)});
    }
}

void addOrders(const Till& till, OrderTables& t, PaymentTables& payments, TableData& pictures) {
    if (till.version >= 213) t.heads.columns.insert(t.heads.columns.end(), {"OR_VARETELLING", "OR_EAN13"});
    if (till.version >= 178) payments.bank.columns.insert(payments.bank.columns.end(), {"BBI_TRANID", "BBI_AUTH"});
    for (const Order& o : till.orders) {
        std::vector<Cell> row{cell(o.id),
                              cell(o.customer),
                              cell(o.settlement),
                              o.employee,
                              o.time,
                              o.finished,
                              cell(0),
                              orNull(o.requisition),
                              orNull(o.postcode),
                              orNull(o.telephone),
                              orNull(o.statisticsEmployee)};
        if (till.version >= 213) row.insert(row.end(), {cell(o.stockCount), orNull(o.barcode)});
        t.heads.rows.push_back(std::move(row));
        if (o.reason) t.reasons.rows.push_back({cell(o.reason), cell(o.id)});
        if (o.returned && till.version >= 188)
            t.returns.rows.push_back({cell(o.id), cell(o.id), cell(o.returned), std::string("101"), till.number});
        if (o.signature) {
            pictures.rows.push_back({cell(o.signature->id), o.signature->picture});
            t.signatures.rows.push_back({cell(o.id), cell(o.signature->id), cell(3)});
        }
        for (const OrderLine& l : o.lines) {
            t.lines.rows.push_back({cell(l.id), cell(o.id), l.item, l.quantity, l.discount, l.price, 25.0, l.cost,
                                    cell(0), asInt(l.extraSale), cell(l.status), cell(l.display), l.price});
            if (l.reason) t.lineReasons.rows.push_back({cell(l.reason), cell(l.id)});
            if (l.text) t.texts.rows.push_back({cell(l.id), *l.text});
            if (l.voucher) t.vouchers.rows.push_back({cell(l.voucher), cell(l.id)});
        }
        addPayments(till, o, payments, pictures);
    }
}

}  // namespace

std::vector<TableData> backOfficeTables(const Chain& chain, const std::function<TillAddress(const Till&)>& addressOf) {
    TableData settings{"Innstillinger",
                       {"In_Id", "In_DbVersjon", "In_DagligJobbFlagg", "In_Anonym_Ku_ID", "In_KlikkOgHent_Ku_ID",
                        "In_Hoved_Ik_Ku_Id", "In_Rpos_Or_Status_Import", "In_Direkteordre_Le_ID"},
                       {{cell(1), 1100.0, cell(0), cell(kAnonymousCustomer), cell(kClickAndCollectCustomer),
                         cell(kHeadOffice), cell(2), cell(1)}}};
    TableData customers{"Kunde", {"Ku_Id", "Ku_Navn", "Ku_Adresse1"}, {}};
    TableData departments{
        "Internkunde", {"Ik_Ku_Id", "Ik_Avdelingsnummer", "Ik_AntallKasser", "Ik_Butikktype", "Ik_Foretaksnummer"}, {}};
    TableData tills{"Internkundekasse",
                    {"Ikk_Ik_Ku_Id", "Ikk_Kassenummer", "Ikk_Kt_Id", "Ikk_Server", "Ikk_Database", "Ikk_Brukernavn",
                     "Ikk_Passord", "Ikk_AutentiseringType", "Ikk_Provider"},
                    {}};
    TableData staff{"InternKundeAnsatt", {"Ika_Id", "Ika_Ik_Ku_Id", "Ika_Navn", "Ika_Visningsnavn"}, {}};
    TableData relations{"KundeRelasjon", {"Krl_Fra_Ku_Id", "Krl_Til_Ku_Id", "Krl_Type"}, {}};
    TableData items{"Vare", {"Va_Id", "Va_Navn", "Va_Kostpris", "Va_Pris"}, {}};
    TableData aliases{"VareAlias", {"Vr_Id", "Vr_Va_Id"}, {}};

    const auto text = [](const char* s) { return Cell(std::string(s)); };
    customers.rows = {{cell(kAnonymousCustomer), text("Anonym kunde"), std::monostate{}},
                      {cell(kClickAndCollectCustomer), text("Klikk og hent"), std::monostate{}},
                      {cell(kHeadOffice), text("Torvik hovedkontor AS"), text("Torvik hovedkontor")},
                      {cell(kWarehouse), text("Torvik sentrallager AS"), text("Torvik sentrallager")},
                      {cell(kUnknownCustomer), text("Diverse kredittkunder"), std::monostate{}}};
    departments.rows = {{cell(kHeadOffice), text("100"), cell(0), cell(0), text("910001000")}};
    for (std::size_t d = 0; d < chain.departments.size(); ++d) {
        const Department& department = chain.departments[d];
        relations.rows.push_back({cell(department.id), cell(kWarehouse), text("LAGER")});
        std::int64_t count = 0;
        for (const Till& till : chain.tills) count += asInt(till.department == static_cast<int>(d));
        customers.rows.push_back({cell(department.id), department.name + " AS", department.name});
        departments.rows.push_back(
            {cell(department.id), department.number, count, cell(1), "9" + std::to_string(10000000 + department.id)});
    }
    for (const Till& till : chain.tills) {
        const TillAddress address = addressOf(till);
        tills.rows.push_back({cell(chain.departmentOf(till).id), till.number, cell(1), address.server, address.database,
                              address.user, address.password, cell(0), cell(3)});
    }
    for (const Employee& e : chain.employees)
        staff.rows.push_back(
            {e.id, cell(chain.departments[static_cast<std::size_t>(e.department)].id), e.name, e.name});
    for (const Item& item : chain.items) items.rows.push_back({item.id, item.name, item.cost, item.price});
    aliases.rows.push_back({std::string("7030000000017"), chain.items.front().id});
    return {settings, customers, departments, relations, tills, staff, items, aliases};
}

std::vector<TableData> tillRegisters(const Chain& chain, const Till& till) {
    TableData staff{
        "ANSATT", {"AN_ID", "AN_NAVN", "AN_AKTIV", "AN_RABATT", "AN_RABKUNPAAORDPRIS", "AN_NIVAA", "AN_AVDNR"}, {}};
    for (const Employee& e : chain.employees)
        if (e.department == till.department)
            staff.rows.push_back({e.id, e.name, cell(1), 10.0, cell(0), cell(2), chain.departmentOf(till).number});
    TableData items{"VARE", {"VA_ID", "VA_NAVN", "VA_PRIS", "VA_MVASATS"}, {}};
    for (const Item& item : chain.items) items.rows.push_back({item.id, item.name, item.price, 25.0});

    const auto text = [](const char* s) { return Cell(std::string(s)); };
    return {
        staff,
        items,
        {"KUNDE", {"KU_ID", "KU_NAVN"}, {{cell(1), text("Kontantkunde")}}},
        {"GRUNNTYPE", {"GT_ID", "GT_NAVN"}, {{cell(1), text("Retur")}}},
        {"GRUNN",
         {"GR_ID", "GR_GT_ID", "GR_NAVN", "GR_UTSKRIFTSFLAGG"},
         {{cell(1), cell(1), text("Feil størrelse"), cell(1)},
          {cell(2), cell(1), text("Angret kjøp"), cell(0)},
          {cell(3), cell(1), text("Skadet vare"), cell(0)}}},
        {"PENGEENHET",
         {"PE_ID", "PE_NAVN", "PE_VERDI", "PE_MYNT"},
         {{cell(1), text("10 kroner"), 10.0, cell(1)},
          {cell(2), text("100 kroner"), 100.0, cell(0)},
          {cell(3), text("500 kroner"), 500.0, cell(0)}}},
        {"KORTUTSTEDER", {"KO_ID", "KO_NAVN"}, {{cell(1), text("Bankkort")}, {cell(2), text("Kredittkort")}}},
        {"BETALINGFORM",
         {"BF_ID", "BF_KO_ID", "BF_NAVN", "BF_AKTIV", "BF_SKUFF", "BF_SYNLIG", "BF_PAAVIRKERSALG", "BF_VU_ID"},
         {{cell(1), std::monostate{}, text("Kontant"), cell(1), cell(1), cell(1), cell(1), text("NOK")},
          {cell(2), cell(1), text("Kort"), cell(1), cell(0), cell(1), cell(1), text("NOK")},
          {cell(3), std::monostate{}, text("Telefon"), cell(1), cell(0), cell(1), cell(1), text("NOK")}}},
        {"LOGGTYPE", {"LT_ID", "LT_NAVN"}, {{cell(1), text("Pålogging")}}},
    };
}

std::vector<TableData> tillSales(const Till& till) {
    SettlementTables settlements;
    OrderTables orders;
    PaymentTables payments;
    TableData pictures{"SIGNATUR", {"SI_ID", "SI_BILDE"}, {}};
    TableData vouchers{
        "KUPONG",
        {"KUP_ID", "KUP_PR_ID", "KUP_AKTIVERT", "KUP_OPPR_ANTALL", "KUP_BRUKT_ANTALL", "KUP_MERKET_BRUKT"},
        {}};
    addSettlements(till, settlements, pictures);
    addOrders(till, orders, payments, pictures);
    for (const Voucher& v : till.vouchers)
        vouchers.rows.push_back(
            {cell(v.id), cell(v.product), v.activated, cell(v.issued), cell(v.used), asInt(v.used >= v.issued)});

    std::vector<TableData> tables{settlements.heads, settlements.cash, settlements.payments, orders.heads,
                                  orders.lines,      orders.reasons,   orders.lineReasons,   orders.texts,
                                  payments.heads,    payments.bank};
    if (till.version >= 138) tables.push_back(settlements.attachments);
    if (till.version >= 158)
        tables.insert(tables.end(), {pictures, settlements.signatures, orders.signatures, payments.signatures});
    if (till.version >= 178) tables.insert(tables.end(), {vouchers, orders.vouchers});
    if (till.version >= 188) tables.push_back(orders.returns);
    if (till.version >= 198) tables.push_back(payments.telephone);
    return tables;
}

}  // namespace sandbox::chain
