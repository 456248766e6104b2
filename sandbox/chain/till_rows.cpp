// A till's tables before a fetch, one function a group of tables. Rows are told whole; what the till's version lacks is
// left out at the end.
#include "sandbox/chain/chain_registers.h"
#include "sandbox/chain/chain_rows.h"
#include "sandbox/chain/chance.h"
#include "sandbox/chain/till_versions.h"

namespace sandbox::chain {

namespace {

struct SettlementTables {
    TableData heads{"OPPGJOR",
                    {"OP_ID", "OP_AN_ID", "OP_TIDSPUNKT", "OP_OPPDATERTTIDSPUNKT", "OP_TYPE", "OP_STATUS",
                     "OP_TIDSPUNKTFERDIG", "OP_ANTKUNDERINNOM", "OP_NATTSAFE_INNKASTNR", "OP_KOMMENTAR"},
                    {}};
    TableData cash{"OPPGJORLINJE",
                   {"OPL_ID", "OPL_OP_ID", "OPL_PE_ID", "OPL_VEKSLEPENGER", "OPL_OPPTALT", "OPL_FAKTISK"},
                   {},
                   true};
    TableData payments{"OPPGJORBETALING", {"OB_OP_ID", "OB_BF_ID", "OB_BELOP", "OB_OPPTALT"}, {}};
    TableData attachments{"VEDLEGG", {"VLG_ID", "VLG_OP_ID", "VLG_FILNAVN", "VLG_INNHOLD"}, {}};
    TableData signatures{"OPPGJORSIGNATUR", {"OPSI_OP_ID", "OPSI_SI_ID", "OPSI_SIT_ID"}, {}};
    TableData extraStaff{"EKSTRAANSATTOPPGJOR", {"EAO_ID", "EAO_AN_ID", "EAO_OP_ID", "EAO_NAVN", "EAO_TIDSPUNKT"}, {}};
    TableData log{"LOGG", {"LO_ID", "LO_AN_ID", "LO_LT_ID", "LO_OP_ID", "LO_TIDSPUNKT", "LO_MERKNADER"}, {}};
    TableData receipts{"VAREMOTTAK", {"VM_ID", "VM_AN_ID", "VM_OP_ID", "VM_TIDSPUNKT", "VM_REFERANSE"}, {}};
    TableData receiptLines{"VAREMOTTAKLINJE", {"VML_ID", "VML_VM_ID", "VML_VA_ID", "VML_ANTALL", "VML_PRIS"}, {}};
    TableData goodsOrders{
        "VAREBESTILLING", {"VB_ID", "VB_OP_ID", "VB_AN_ID", "VB_TIDSPUNKT", "VB_REFERANSE", "VB_STATUS"}, {}};
    TableData goodsOrderLines{"VAREBESTILLINGLINJE", {"VBL_ID", "VBL_VB_ID", "VBL_VA_ID", "VBL_ANTALL"}, {}};
};

struct OrderTables {
    TableData heads{
        "ORDRE",
        {"OR_ID", "OR_KU_ID", "OR_OP_ID", "OR_AN_ID", "OR_TIDSPUNKT", "OR_TIDSPUNKTFERDIG", "OR_STATUS",
         "OR_REKVISISJONSNUMMER", "OR_POSTNR", "OR_TELEFON", "OR_STATISTIKK_AN_ID", "OR_VARETELLING", "OR_EAN13"},
        {}};
    TableData lines{"ORDRELINJE",
                    {"OL_ID", "OL_OR_ID", "OL_VA_ID", "OL_ANTALL", "OL_RABATT", "OL_SALGSPRIS", "OL_MVASATS",
                     "OL_KOSTPRIS", "OL_SLETTET", "OL_MERSALG", "OL_STATUS", "OL_VISNINGSVARE", "OL_GJELDENDEPRIS"},
                    {}};
    TableData zones{"ORDRELINJESONER", {"OLS_OL_ID", "OLS_SONER"}, {}};
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
                   {"BBI_ID", "BBI_BT_ID", "BBI_KO_ID", "BBI_KORTDATA", "BBI_TIDSSTEMPEL", "BBI_AVSTEM_SESJONSNUMMER",
                    "BBI_TRANID", "BBI_AUTH"},
                   {}};
    TableData signatures{"BETALINGSIGNATUR", {"BTSI_BT_ID", "BTSI_SI_ID", "BTSI_SIT_ID"}, {}};
    TableData telephone{"VippsBetaling", {"VIB_BT_ID", "VIB_REFERANSE", "VIB_ORDRENUMMER"}, {}};
    TableData payOuts{"UTBETALING", {"UB_BT_ID", "UB_NAVN", "UB_KONTO", "UB_TELEFON", "UB_EPOST"}, {}};
};

void addGoods(const Settlement& s, SettlementTables& t) {
    for (const Goods& g : s.receipts) {
        t.receipts.rows.push_back({integer(g.id), g.employee, integer(s.id), g.time, orNull(g.reference)});
        for (const GoodsLine& l : g.lines)
            t.receiptLines.rows.push_back({integer(l.id), integer(g.id), l.item, l.quantity, l.price});
    }
    for (const Goods& g : s.goodsOrders) {
        t.goodsOrders.rows.push_back(
            {integer(g.id), integer(s.id), g.employee, g.time, orNull(g.reference), integer(0)});
        for (const GoodsLine& l : g.lines)
            t.goodsOrderLines.rows.push_back({integer(l.id), integer(g.id), l.item, l.quantity});
    }
}

void addSettlements(const Till& till, SettlementTables& t, TableData& pictures) {
    for (const Settlement& s : till.settlements) {
        t.heads.rows.push_back({integer(s.id), s.employee, s.time, std::monostate{}, s.type, integer(0), s.finished,
                                integer(s.visitors), orNull(s.nightSafe), orNull(s.comment)});
        for (const CashLine& c : s.cash)
            t.cash.rows.push_back({integer(c.id), integer(s.id), integer(c.unit), c.change, c.counted, c.actual});
        for (const SettledPayment& p : s.payments)
            t.payments.rows.push_back({integer(s.id), integer(p.form), p.amount, p.counted});
        for (const Attachment& a : s.attachments)
            t.attachments.rows.push_back({integer(a.id), integer(s.id), a.fileName, a.content});
        if (s.signature) {
            pictures.rows.push_back({integer(s.signature->id), s.signature->picture});
            t.signatures.rows.push_back({integer(s.id), integer(s.signature->id), integer(1)});
        }
        for (const ExtraEmployee& e : s.extraStaff)
            t.extraStaff.rows.push_back({integer(e.id), e.employee, integer(s.id), e.name, e.time});
        for (const LogEntry& l : s.log)
            t.log.rows.push_back({integer(l.id), l.employee, integer(l.type), integer(s.id), l.time, orNull(l.remark)});
        addGoods(s, t);
    }
}

void addPayments(const Order& order, PaymentTables& t, TableData& pictures) {
    for (const Payment& p : order.payments) {
        t.heads.rows.push_back({integer(p.id), integer(p.form), integer(order.id), p.amount, orNull(p.rate)});
        if (p.bank)
            t.bank.rows.push_back({integer(p.bank->id), integer(p.id), integer(p.bank->issuer), p.bank->card,
                                   p.bank->stamp, text("1"), p.bank->transaction, p.bank->authorisation});
        if (p.signature) {
            pictures.rows.push_back({integer(p.signature->id), p.signature->picture});
            t.signatures.rows.push_back({integer(p.id), integer(p.signature->id), integer(2)});
        }
        if (p.telephoneReference)
            t.telephone.rows.push_back({integer(p.id), *p.telephoneReference, std::to_string(order.id)});
        if (p.payOut)
            t.payOuts.rows.push_back({integer(p.id), p.payOut->name, p.payOut->account, orNull(p.payOut->telephone),
                                      orNull(p.payOut->email)});
    }
}

void addOrders(const Till& till, OrderTables& t, PaymentTables& payments, TableData& pictures) {
    for (const Order& o : till.orders) {
        t.heads.rows.push_back({integer(o.id), integer(o.customer), integer(o.settlement), o.employee, o.time,
                                o.finished, integer(o.brokenOff), orNull(o.requisition), orNull(o.postcode),
                                orNull(o.telephone), orNull(o.statisticsEmployee), integer(o.stockCount),
                                orNull(o.barcode)});
        if (o.reason) t.reasons.rows.push_back({integer(o.reason), integer(o.id)});
        if (o.returned)
            t.returns.rows.push_back({integer(o.id), integer(o.id), integer(o.returned), text("101"), till.number});
        if (o.signature) {
            pictures.rows.push_back({integer(o.signature->id), o.signature->picture});
            t.signatures.rows.push_back({integer(o.id), integer(o.signature->id), integer(3)});
        }
        for (const OrderLine& l : o.lines) {
            t.lines.rows.push_back({integer(l.id), integer(o.id), l.item, l.quantity, l.discount, l.price, l.vat,
                                    l.cost, integer(0), integer(l.extraSale), integer(l.status), integer(l.display),
                                    l.price});
            if (l.reason) t.lineReasons.rows.push_back({integer(l.reason), integer(l.id)});
            if (l.text) t.texts.rows.push_back({integer(l.id), *l.text});
            if (l.voucher) t.vouchers.rows.push_back({integer(l.voucher), integer(l.id)});
            if (l.zones) t.zones.rows.push_back({integer(l.id), *l.zones});
        }
        addPayments(o, payments, pictures);
    }
}

// Gift cards and credit notes have the same columns but for the prefix and what the card came from.
TableData slips(const Chain& chain, const Till& till, const std::vector<Slip>& list, const std::string& table,
                const std::string& prefix, const std::string& origin) {
    TableData data{table,
                   {"ID", "AVDNR", "KASSENR", "AN_ID", origin, "BELOP", "GYLDIGTIL", "BET_AVDNR", "BET_KASSENR",
                    "BET_AN_ID", "BT_ID"},
                   {}};
    for (std::string& column : data.columns) column.insert(0, prefix);
    for (const Slip& s : list) {
        std::vector<Cell> row{
            s.id, chain.departmentOf(till).number, till.number, s.employee, integer(s.origin), s.amount, s.validTo};
        if (s.redeemed)
            row.insert(row.end(),
                       {s.redeemed->department, s.redeemed->till, s.redeemed->employee, integer(s.redeemed->payment)});
        else
            row.resize(data.columns.size());
        data.rows.push_back(std::move(row));
    }
    return data;
}

// The next free number of each series, as the till itself counts.
TableData numberSeries(const Till& till) {
    int line = 0;
    int payment = 0;
    int cash = 0;
    int order = 0;
    int settlement = 0;
    for (const Order& o : till.orders) {
        order = std::max(order, o.id);
        for (const OrderLine& l : o.lines) line = std::max(line, l.id);
        for (const Payment& p : o.payments) payment = std::max(payment, p.id);
    }
    for (const Settlement& s : till.settlements) {
        settlement = std::max(settlement, s.id);
        for (const CashLine& c : s.cash) cash = std::max(cash, c.id);
    }
    return {"LEDIGID",
            {"LI_ATTRIBUTT", "LI_NESTELEDIGEID"},
            {{text("OP_ID"), integer(settlement + 1)},
             {text("OPL_ID"), integer(cash + 1)},
             {text("OR_ID"), integer(order + 1)},
             {text("OL_ID"), integer(line + 1)},
             {text("BT_ID"), integer(payment + 1)}}};
}

bool sellsUnderAlias(const Till& till) {
    for (const Order& order : till.orders)
        for (const OrderLine& line : order.lines)
            if (line.item == kAlias) return true;
    return false;
}

// What hangs on one item beside its sales: keys of the till's screen, and goods moved, counted and complained of.
std::vector<TableData> aroundAnItem(const Chain& chain) {
    constexpr std::size_t kItem = 7;
    const std::string& item = chain.items[kItem % chain.tillItems()].id;
    const std::string& other = chain.items.front().id;
    const Moment when{firstDay()};
    const Cell top;
    return {{"PLU", {"PLU_ID", "PLU_NAVN"}, {{integer(1), text("Hurtigtast")}}},
            {"PLUMEDLEM", {"PLM_PLU_ID", "PLM_VA_ID"}, {{integer(1), item}}},
            {"VAREGRUPPE",
             {"VG_VA_ID", "VG_HOVED_VG_VA_ID"},
             {{chain.serviceItems.front().id, top},
              {item, chain.serviceItems.front().id},
              {chain.serviceItems.back().id, item}}},
            {"INTERNFLYTTING",
             {"IF_ID", "IF_AN_ID", "IF_TIDSPUNKT", "IF_TIL_AVDNR"},
             {{integer(1), chain.employees.front().id, when, text("102")}}},
            {"INTERNFLYTTINGLINJE",
             {"IFL_ID", "IFL_IF_ID", "IFL_VA_ID", "IFL_ANTALL"},
             {{integer(1), integer(1), item, 2.0}, {integer(2), integer(1), other, 1.0}}},
            {"VARETELLING", {"VT_ID", "VT_AN_ID", "VT_TIDSPUNKT"}, {{integer(1), chain.employees.front().id, when}}},
            {"VARETELLINGLINJE", {"VL_ID", "VL_VT_ID", "VL_VA_ID", "VL_ANTALL"}, {{integer(1), integer(1), item, 4.0}}},
            {"BEHOLDNINGSTRANSAKSJONER",
             {"BHT_ID", "BHT_VA_ID", "BHT_ANTALL", "BHT_TIDSPUNKT"},
             {{integer(1), item, 4.0, when}, {integer(2), other, 1.0, when}}},
            {"REKLAMASJON", {"REK_ID", "REK_AN_ID", "REK_TIDSPUNKT"}, {{integer(1), chain.employees.front().id, when}}},
            {"REKLAMASJONLINJE",
             {"REKL_ID", "REKL_REK_ID", "REKL_VA_ID", "REKL_ANTALL"},
             {{integer(1), integer(1), item, 1.0}}}};
}

}  // namespace

std::vector<TableData> tillRegisters(const Chain& chain, const Till& till) {
    TableData groups{"KUNDEGRUPPE", {"KG_ID", "KG_NAVN"}, {}};
    for (const NamedNumber& g : kCustomerGroups) groups.rows.push_back({integer(g.id), text(g.name)});
    TableData customers{"KUNDE", {"KU_ID", "KU_NAVN", "KU_ADRESSE1", "KU_PO_ID", "KU_PO_NAVN", "KU_KG_ID"}, {}};
    for (const Customer& c : chain.customers)
        customers.rows.push_back({integer(c.id), c.name, c.address, c.postcode, c.town, integer(c.group)});
    TableData staff{
        "ANSATT", {"AN_ID", "AN_NAVN", "AN_AKTIV", "AN_RABATT", "AN_RABKUNPAAORDPRIS", "AN_NIVAA", "AN_AVDNR"}, {}};
    for (const Employee& e : chain.employees)
        if (e.department == till.department)
            staff.rows.push_back(
                {e.id, e.name, integer(1), 10.0, integer(0), integer(2), chain.departmentOf(till).number});
    TableData items{"VARE", {"VA_ID", "VA_NAVN", "VA_PRIS", "VA_MVASATS"}, {}};
    for (const Item& item : chain.serviceItems) items.rows.push_back({item.id, item.name, item.price, 25.0});
    for (std::size_t i = 0; i < chain.tillItems(); ++i)
        items.rows.push_back({chain.items[i].id, chain.items[i].name, chain.items[i].price, 25.0});
    if (sellsUnderAlias(till)) items.rows.push_back({text(kAlias), text(kAliasName), chain.items.front().price, 25.0});
    TableData reasonTypes{"GRUNNTYPE", {"GT_ID", "GT_NAVN"}, {}};
    for (const NamedNumber& t : kReasonTypes) reasonTypes.rows.push_back({integer(t.id), text(t.name)});
    TableData reasons{"GRUNN", {"GR_ID", "GR_GT_ID", "GR_NAVN", "GR_UTSKRIFTSFLAGG"}, {}};
    for (const Reason& r : kReasons)
        reasons.rows.push_back({integer(r.id), integer(r.type), text(r.name), integer(r.printed)});
    TableData money{"PENGEENHET", {"PE_ID", "PE_NAVN", "PE_VERDI", "PE_MYNT"}, {}};
    for (const MoneyUnit& u : kMoneyUnits)
        money.rows.push_back({integer(u.id), text(u.name), u.value, integer(u.coin)});
    TableData issuers{"KORTUTSTEDER", {"KO_ID", "KO_NAVN"}, {}};
    for (const NamedNumber& i : kIssuers) issuers.rows.push_back({integer(i.id), text(i.name)});
    TableData forms{
        "BETALINGFORM",
        {"BF_ID", "BF_KO_ID", "BF_NAVN", "BF_AKTIV", "BF_SKUFF", "BF_SYNLIG", "BF_PAAVIRKERSALG", "BF_VU_ID"},
        {}};
    for (const PaymentForm& f : kPaymentForms)
        forms.rows.push_back({integer(f.id), integer(f.issuer), text(f.name), integer(1), integer(f.drawer), integer(1),
                              integer(1), text("NOK")});
    TableData logTypes{"LOGGTYPE", {"LT_ID", "LT_NAVN"}, {}};
    for (const NamedNumber& t : kLogTypes) logTypes.rows.push_back({integer(t.id), text(t.name)});
    std::vector<TableData> all{groups, customers, staff, items,    reasonTypes,       reasons,
                               money,  issuers,   forms, logTypes, numberSeries(till)};
    for (TableData& table : aroundAnItem(chain)) all.push_back(std::move(table));
    return onlyWhatATillHas(till.version, std::move(all));
}

std::vector<TableData> tillSales(const Chain& chain, const Till& till) {
    SettlementTables settlements;
    OrderTables orders;
    PaymentTables payments;
    TableData pictures{"SIGNATUR", {"SI_ID", "SI_BILDE"}, {}};
    TableData vouchers{
        "KUPONG",
        {"KUP_ID", "KUP_PR_ID", "KUP_AKTIVERT", "KUP_OPPR_ANTALL", "KUP_BRUKT_ANTALL", "KUP_MERKET_BRUKT"},
        {}};
    TableData hours{
        "TIMER", {"TI_ID", "TI_AN_ID", "TI_TIDINN", "TI_TIDUT", "TI_TEKST", "TI_INNMETODE", "TI_STATUS"}, {}};
    TableData hourCodes{"TIMERPRKODE", {"TPK_TI_ID", "TPK_TK_ID", "TPK_TID"}, {}};
    addSettlements(till, settlements, pictures);
    addOrders(till, orders, payments, pictures);
    for (const Voucher& v : till.vouchers)
        vouchers.rows.push_back({integer(v.id), integer(v.product), v.activated, integer(v.issued), integer(v.used),
                                 integer(v.used >= v.issued)});
    for (const TimeEntry& e : till.timeEntries) {
        hours.rows.push_back(
            {integer(e.id), e.employee, e.in, orNull(e.out), orNull(e.text), integer(0), integer(e.status)});
        for (const int code : e.codes) hourCodes.rows.push_back({integer(e.id), integer(code), orNull(e.out)});
    }
    return onlyWhatATillHas(till.version, {settlements.heads,
                                           settlements.cash,
                                           settlements.payments,
                                           settlements.extraStaff,
                                           settlements.log,
                                           settlements.receipts,
                                           settlements.receiptLines,
                                           settlements.goodsOrders,
                                           settlements.goodsOrderLines,
                                           orders.heads,
                                           orders.lines,
                                           orders.zones,
                                           orders.reasons,
                                           orders.lineReasons,
                                           orders.texts,
                                           payments.heads,
                                           payments.bank,
                                           payments.payOuts,
                                           settlements.attachments,
                                           pictures,
                                           settlements.signatures,
                                           orders.signatures,
                                           payments.signatures,
                                           vouchers,
                                           orders.vouchers,
                                           orders.returns,
                                           payments.telephone,
                                           hours,
                                           hourCodes,
                                           slips(chain, till, till.giftCards, "GAVEKORT", "GA_", "OL_ID"),
                                           slips(chain, till, till.creditNotes, "TILGODELAPP", "TG_", "OR_ID")});
}

}  // namespace sandbox::chain
