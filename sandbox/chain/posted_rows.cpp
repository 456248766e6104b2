// The Pos tables after a fetch, from the model. Nothing here looks at what the program does.
#include "sandbox/chain/posted_rows.h"

#include <algorithm>
#include <map>

namespace sandbox::chain {

namespace {

// char(n) as it comes back.
std::string wide(const std::string& text, std::size_t length) {
    return text + std::string(length - text.size(), ' ');
}

struct Posted {
    TableData settlements{"PosOppgjor",
                          {"Pos_Op_Ik_Ku_Id", "Pos_Op_Kassenr", "Pos_Op_Id", "Pos_Op_Ika_Id", "Pos_Op_Tidspunkt",
                           "Pos_Op_OppdatertTidspunkt", "Pos_Op_Type", "Pos_Op_Status", "Pos_Op_TidspunktFerdig",
                           "Pos_Op_AntKunderInnom", "Pos_Op_Nattsafe_Innkastnr", "Pos_Op_Kommentar"},
                          {}};
    TableData cash{"PosOppgjorlinje",
                   {"Pos_Opl_Ik_Ku_Id", "Pos_Opl_Kassenr", "Pos_Opl_Id", "Pos_Opl_Op_Id", "Pos_Opl_Pe_Id",
                    "Pos_Opl_Vekslepenger", "Pos_Opl_Opptalt", "Pos_Opl_Faktisk"},
                   {}};
    TableData settled{
        "PosOppgjorbetaling",
        {"Pos_Ob_Ik_Ku_Id", "Pos_Ob_Kassenr", "Pos_Ob_Op_Id", "Pos_Ob_Bf_Id", "Pos_Ob_Belop", "Pos_Ob_Opptalt"},
        {}};
    TableData orders{
        "PosOrdre",
        {"Pos_Or_Ik_Ku_Id", "Pos_Or_KasseNr", "Pos_Or_Id", "Pos_Or_Op_Id", "Pos_Or_Ku_Id", "Pos_Or_Ika_Id",
         "Pos_Or_Tidspunkt", "Pos_Or_TidspunktFerdig", "Pos_Or_Status", "Pos_Or_Rekvisisjonsnummer", "Pos_Or_Postnr",
         "Pos_Or_Telefon", "Pos_Or_Varetelling", "Pos_Or_Torvik_Or_Id", "Pos_Or_EAN13", "Pos_Or_Statistikk_Ika_Id"},
        {}};
    TableData lines{"PosOrdrelinje",
                    {"Pos_Ol_Ik_Ku_Id", "Pos_Ol_KasseNr", "Pos_Ol_Id", "Pos_Ol_Or_Id", "Pos_Ol_Va_Id", "Pos_Ol_Antall",
                     "Pos_Ol_Rabatt", "Pos_Ol_Salgspris", "Pos_Ol_Mvasats", "Pos_Ol_Kostpris", "Pos_Ol_Slettet",
                     "Pos_Ol_Mersalg", "Pos_Ol_Status", "Pos_Ol_Visningsvare", "Pos_Ol_GjeldendePris"},
                    {}};
    TableData reasons{"PosOrdregrunn", {"Pos_Og_Ik_Ku_Id", "Pos_Og_KasseNr", "Pos_Og_Gr_Id", "Pos_Og_Or_Id"}, {}};
    TableData lineReasons{
        "PosOrdrelinjegrunn", {"Pos_Olg_Ik_Ku_Id", "Pos_Olg_KasseNr", "Pos_Olg_Gr_Id", "Pos_Olg_Ol_Id"}, {}};
    TableData texts{"PosOrdrelinjetekst", {"Pos_Olt_Ik_Ku_Id", "Pos_Olt_KasseNr", "Pos_Olt_Ol_Id", "Pos_Olt_Navn"}, {}};
    TableData payments{"PosBetaling",
                       {"Pos_Bt_Ik_Ku_Id", "Pos_Bt_KasseNr", "Pos_Bt_Id", "Pos_Bt_Bf_Id", "Pos_Bt_Or_Id",
                        "Pos_Bt_Belop", "Pos_Bt_Vu_Kurs"},
                       {}};
    TableData bank{
        "PosBetalingBankinfo",
        {"Pos_Bbi_Ik_Ku_Id", "Pos_Bbi_KasseNr", "Pos_Bbi_Id", "Pos_Bbi_Bt_Id", "Pos_Bbi_Ko_Id", "Pos_Bbi_Kortdata",
         "Pos_Bbi_Tidsstempel", "Pos_Bbi_Avstem_Sesjonsnummer", "Pos_Bbi_Tranid", "Pos_Bbi_Auth"},
        {}};
    TableData vouchers{"PosKupong",
                       {"Pos_Kup_Ik_Ku_Id", "Pos_Kup_KasseNr", "Pos_Kup_Id", "Pos_Kup_Pr_Id", "Pos_Kup_Aktivert",
                        "Pos_Kup_Oppr_Antall", "Pos_Kup_Brukt_Antall", "Pos_Kup_Merket_Brukt"},
                       {}};
    TableData voucherLines{
        "PosKupongOrdrelinje", {"Pos_Kol_Ik_Ku_Id", "Pos_Kol_KasseNr", "Pos_Kol_Kup_Id", "Pos_Kol_Ol_Id"}, {}};
    TableData signatures{"PosSignatur", {"Pos_Si_Ik_Ku_Id", "Pos_Si_Kassenummer", "Pos_Si_Id", "Pos_Si_Bilde"}, {}};
    TableData paymentSignatures{
        "PosBetalingSignatur",
        {"Pos_Btsi_Ik_Ku_Id", "Pos_Btsi_KasseNr", "Pos_Btsi_Bt_Id", "Pos_Btsi_Si_Id", "Pos_Btsi_Sit_Id"},
        {}};
    TableData orderSignatures{
        "PosOrdreSignatur",
        {"Pos_Orsi_Ik_Ku_Id", "Pos_Orsi_KasseNr", "Pos_Orsi_Or_Id", "Pos_Orsi_Si_Id", "Pos_Orsi_Sit_Id"},
        {}};
    TableData settlementSignatures{
        "PosOppgjorSignatur",
        {"Pos_Opsi_Ik_Ku_Id", "Pos_Opsi_KasseNr", "Pos_Opsi_Op_Id", "Pos_Opsi_Si_Id", "Pos_Opsi_Sit_Id"},
        {}};
    TableData attachments{
        "PosVedlegg",
        {"Pos_Vlg_Ik_Ku_Id", "Pos_Vlg_KasseNr", "Pos_Vlg_Id", "Pos_Vlg_Op_Id", "Pos_Vlg_Filnavn", "Pos_Vlg_Innhold"},
        {}};
    TableData returns{"PosOrdreRetur",
                      {"Pos_Ore_Or_Ik_Ku_Id", "Pos_Ore_Or_KasseNr", "Pos_Ore_Id", "Pos_Ore_Or_Id",
                       "Pos_Ore_Retur_Or_Id", "Pos_Ore_Retur_Avdnr", "Pos_Ore_Retur_Kassenr"},
                      {}};
    TableData telephone{
        "PosVippsBetaling",
        {"Pos_Vib_Bt_Ik_Ku_Id", "Pos_Vib_Bt_KasseNr", "Pos_Vib_Bt_Id", "Pos_Vib_Referanse", "Pos_Vib_Ordrenummer"},
        {}};
    TableData extraStaff{
        "PosEkstraAnsattOppgjor",
        {"Peao_Ik_Ku_Id", "Peao_KasseNr", "Peao_Id", "Peao_Op_Id", "Peao_Ika_Id", "Peao_Navn", "Peao_Tidspunkt"},
        {}};
    TableData log{"PosLogg",
                  {"Plo_Ik_Ku_Id", "Plo_KasseNr", "Plo_Id", "Plo_Op_Id", "Plo_Ika_Id", "Plo_Lt_Id", "Plo_Tidspunkt",
                   "Plo_Merknader"},
                  {}};
    TableData receipts{
        "PosVaremottak",
        {"Pvm_Ik_Ku_Id", "Pvm_KasseNr", "Pvm_Id", "Pvm_Op_Id", "Pvm_Ika_Id", "Pvm_Tidspunkt", "Pvm_Referanse"},
        {}};
    TableData receiptLines{
        "PosVaremottaklinje",
        {"Pvml_Ik_Ku_Id", "Pvml_KasseNr", "Pvml_Id", "Pvml_Vm_Id", "Pvml_Va_Id", "Pvml_Antall", "Pvml_Pris"},
        {}};
    TableData goodsOrders{"PosVarebestilling",
                          {"Pvb_Ik_Ku_Id", "Pvb_KasseNr", "Pvb_Id", "Pvb_Op_Id", "Pvb_Ika_Id", "Pvb_Tidspunkt",
                           "Pvb_Referanse", "Pvb_Status"},
                          {}};
    TableData goodsOrderLines{"PosVarebestillinglinje",
                              {"Pvbl_Ik_Ku_Id", "Pvbl_KasseNr", "Pvbl_Id", "Pvbl_Vb_Id", "Pvbl_Va_Id", "Pvbl_Antall"},
                              {}};
    TableData payOuts{"PosUtbetaling",
                      {"Pub_Ik_Ku_Id", "Pub_KasseNr", "Pub_Bt_Id", "Pub_Kundenavn", "Pub_Telefon", "Pub_Epost",
                       "Pub_Konto", "Pub_Status"},
                      {}};
    TableData hours{"PosTimer",
                    {"Pti_Ik_Ku_Id", "Pti_KasseNr", "Pti_Id", "Pti_Ika_Id", "Pti_TidInn", "Pti_TidUt", "Pti_Tekst",
                     "Pti_InnMetode", "Pti_Status"},
                    {}};
    TableData hourCodes{
        "PosTimerPrKode", {"Ptpk_Ik_Ku_Id", "Ptpk_KasseNr", "Ptpk_Ti_Id", "Ptpk_Tk_Id", "Ptpk_Tid"}, {}};
};

// Posts one till's sales.
class Poster {
public:
    Poster(const Chain& chain, const Till& till, Posted& posted)
        : till_(till), posted_(posted), department_(integer(chain.departmentOf(till).id)), number_(till.number) {}

    void post() {
        std::map<int, std::string> types;
        for (const Settlement& s : till_.settlements) {
            types[s.id] = s.type;
            settlement(s);
        }
        std::set<int> usedVouchers;
        for (const Order& o : till_.orders)
            if (o.settlement) order(o, types.at(*o.settlement), usedVouchers);
        for (const Voucher& v : till_.vouchers)
            if (usedVouchers.contains(v.id))
                add(posted_.vouchers, {integer(v.id), integer(v.product), v.activated, integer(v.issued),
                                       integer(v.used), integer(v.used >= v.issued)});
        // Time entries come when they are ended, whatever settlement is open.
        for (const TimeEntry& e : till_.timeEntries)
            if (e.out) {
                add(posted_.hours,
                    {integer(e.id), wide(e.employee, 10), e.in, *e.out, orNull(e.text), integer(0), integer(e.status)});
                for (const int code : e.codes) add(posted_.hourCodes, {integer(e.id), integer(code), *e.out});
            }
    }

private:
    void add(TableData& table, std::vector<Cell> rest) {
        std::vector<Cell> row{department_, number_};
        row.insert(row.end(), std::make_move_iterator(rest.begin()), std::make_move_iterator(rest.end()));
        table.rows.push_back(std::move(row));
    }

    void signature(TableData& link, int owner, const std::optional<Signature>& signature, int kind) {
        if (!signature || till_.version < 158) return;
        add(posted_.signatures, {integer(signature->id), signature->picture});
        add(link, {integer(owner), integer(signature->id), integer(kind)});
    }

    void settlement(const Settlement& s) {
        add(posted_.settlements, {integer(s.id), wide(s.employee, 10), s.time, std::monostate{}, s.type, integer(0),
                                  s.finished, integer(s.visitors), orNull(s.nightSafe),
                                  till_.version >= 158 ? orNull(s.comment) : Cell(std::monostate{})});
        for (const CashLine& c : s.cash)
            add(posted_.cash, {integer(c.id), integer(s.id), integer(c.unit), c.change, c.counted, c.actual});
        for (const SettledPayment& p : s.payments)
            add(posted_.settled, {integer(s.id), integer(p.form), p.amount, p.counted});
        if (till_.version >= 138)
            for (const Attachment& a : s.attachments)
                add(posted_.attachments, {integer(a.id), integer(s.id), a.fileName, a.content});
        signature(posted_.settlementSignatures, s.id, s.signature, 1);
        for (const ExtraEmployee& e : s.extraStaff)
            add(posted_.extraStaff, {integer(e.id), integer(s.id), wide(e.employee, 10), e.name, e.time});
        for (const LogEntry& l : s.log)
            add(posted_.log,
                {integer(l.id), integer(s.id), wide(l.employee, 10), integer(l.type), l.time, orNull(l.remark)});
        for (const Goods& g : s.receipts) {
            add(posted_.receipts, {integer(g.id), integer(s.id), wide(g.employee, 10), g.time, orNull(g.reference)});
            for (const GoodsLine& l : g.lines)
                add(posted_.receiptLines, {integer(l.id), integer(g.id), wide(l.item, 15), l.quantity, l.price});
        }
        for (const Goods& g : s.goodsOrders) {
            add(posted_.goodsOrders,
                {integer(g.id), integer(s.id), wide(g.employee, 10), g.time, orNull(g.reference), integer(0)});
            for (const GoodsLine& l : g.lines)
                add(posted_.goodsOrderLines, {integer(l.id), integer(g.id), wide(l.item, 15), l.quantity});
        }
    }

    void order(const Order& o, const std::string& type, std::set<int>& usedVouchers) {
        const bool flagged = till_.version >= 213 && o.stockCount.has_value();
        const bool stockCount = flagged ? *o.stockCount : type == "VARETELLING";
        add(posted_.orders,
            {integer(o.id), integer(*o.settlement), integer(o.customer), wide(o.employee, 10), o.time, o.finished,
             integer(o.brokenOff), orNull(o.requisition), orNull(o.postcode), orNull(o.telephone), integer(stockCount),
             std::monostate{}, till_.version >= 213 ? orNull(o.barcode) : Cell(std::monostate{}),
             orNull(o.statisticsEmployee)});
        if (o.reason) add(posted_.reasons, {integer(*o.reason), integer(o.id)});
        if (o.returned && till_.version >= 188)
            add(posted_.returns,
                {integer(o.id), integer(o.id), integer(*o.returned), std::string("101"), till_.number});
        signature(posted_.orderSignatures, o.id, o.signature, 3);
        for (const OrderLine& l : o.lines) {
            line(o, l);
            if (l.voucher) usedVouchers.insert(*l.voucher);
        }
        for (const Payment& p : o.payments) payment(o, p);
    }

    void line(const Order& o, const OrderLine& l) {
        const Cell display = till_.version >= 194 ? integer(l.display.value_or(false)) : Cell(std::monostate{});
        // The back office's posting knows the cost of its own numbers alone.
        const double cost = l.item == kAlias ? 0 : l.cost;
        add(posted_.lines, {integer(l.id), integer(o.id), wide(l.item, 15), l.quantity, l.discount, l.price, l.vat,
                            cost, integer(0), integer(l.extraSale), integer(l.status), display, l.price});
        if (l.reason) add(posted_.lineReasons, {integer(*l.reason), integer(l.id)});
        if (l.text) add(posted_.texts, {integer(l.id), *l.text});
        if (l.voucher) add(posted_.voucherLines, {integer(*l.voucher), integer(l.id)});
    }

    void payment(const Order& o, const Payment& p) {
        add(posted_.payments, {integer(p.id), integer(p.form), integer(o.id), p.amount, orNull(p.rate)});
        if (p.bank) {
            const bool told = till_.version >= 178;
            add(posted_.bank, {integer(p.bank->id), integer(p.id), integer(p.bank->issuer), p.bank->card, p.bank->stamp,
                               std::string("1"), told ? Cell(p.bank->transaction) : Cell(std::monostate{}),
                               told ? Cell(p.bank->authorisation) : Cell(std::monostate{})});
        }
        signature(posted_.paymentSignatures, p.id, p.signature, 2);
        if (p.payOut && till_.version >= 149)
            add(posted_.payOuts, {integer(p.id), p.payOut->name, orNull(p.payOut->telephone), orNull(p.payOut->email),
                                  p.payOut->account, integer(0)});
        if (p.telephoneReference && till_.version >= 198)
            add(posted_.telephone, {integer(p.id), *p.telephoneReference, std::to_string(o.id)});
    }

    const Till& till_;
    Posted& posted_;
    Cell department_;
    Cell number_;
};

}  // namespace

std::vector<TableData> postedTables(const Chain& chain, const std::set<std::size_t>& fetched) {
    Posted p;
    for (const std::size_t index : fetched) Poster(chain, chain.tills.at(index), p).post();
    return {p.settlements,
            p.cash,
            p.settled,
            p.orders,
            p.lines,
            p.reasons,
            p.lineReasons,
            p.texts,
            p.payments,
            p.bank,
            p.vouchers,
            p.voucherLines,
            p.signatures,
            p.paymentSignatures,
            p.orderSignatures,
            p.settlementSignatures,
            p.attachments,
            p.returns,
            p.telephone,
            p.extraStaff,
            p.log,
            p.receipts,
            p.receiptLines,
            p.goodsOrders,
            p.goodsOrderLines,
            p.payOuts,
            p.hours,
            p.hourCodes};
}

std::vector<TableData> postedTables(const Chain& chain) {
    std::set<std::size_t> all;
    for (std::size_t i = 0; i < chain.tills.size(); ++i) all.insert(i);
    return postedTables(chain, all);
}

}  // namespace sandbox::chain
