// Nothing here looks at what the program does: the rules are those of the shop.
#include "sandbox/chain/settled_rows.h"

#include <cmath>
#include <map>
#include <tuple>

#include "sandbox/chain/chance.h"

namespace sandbox::chain {

namespace {

constexpr int kWarehouse = 900;
constexpr int kHeadOffice = 1000;
constexpr int kNobody = 1;  // a till's customer without a name
constexpr double kVat = 25;
constexpr int kOrderStatus = 2;  // In_Rpos_Or_Status_Import
constexpr int kDeliveryForm = 1;
constexpr int kPlainSale = 1;
constexpr int kFetchedTime = 16;

double roundedTo(double value, int decimals) {
    const double factor = std::pow(10, decimals);
    return std::round(value * factor) / factor + 0.0;
}

bool isSale(const Settlement& settlement) {
    return settlement.type == "NORMAL";
}

// Paid by the form "credit", or not paid at all by a customer with a name.
bool isOnCredit(const Order& order) {
    if (order.customer == kNobody || order.brokenOff) return false;
    for (const OrderLine& line : order.lines)
        if (line.item == kAccountPaymentItem) return false;
    for (const Payment& payment : order.payments)
        if (payment.form == kCredit) return true;
    return order.payments.empty();
}

template <typename Do>
void eachOrderOf(const Till& till, const Settlement& settlement, Do act) {
    for (const Order& order : till.orders)
        if (order.settlement == settlement.id) act(order);
}

template <typename Do>
void eachCreditSale(const Till& till, Do act) {
    for (const Settlement& settlement : till.settlements)
        if (isSale(settlement))
            eachOrderOf(till, settlement, [&](const Order& order) {
                if (isOnCredit(order)) act(order);
            });
}

std::string employeeName(const Chain& chain, const std::string& id) {
    for (const Employee& employee : chain.employees)
        if (employee.id == id) return employee.name;
    return {};
}

const Customer& customerOf(const Chain& chain, const Order& order) {
    for (const Customer& customer : chain.customers)
        if (customer.id == order.customer) return customer;
    throw std::invalid_argument("order " + std::to_string(order.id) + " has no customer");
}

class Settled {
public:
    explicit Settled(const Chain& chain) : chain_(chain) {}

    void creditOrders(const Till& till) {
        eachCreditSale(till, [&](const Order& order) {
            const std::string reference =
                "Bong " + std::to_string(order.id) + " ved " + employeeName(chain_, order.employee);
            const Customer& customer = customerOf(chain_, order);
            orders_.rows.push_back({integer(kWarehouse),
                                    integer(customer.priceCategory),
                                    integer(customer.id),
                                    std::string("NR"),
                                    integer(kHeadOffice),
                                    integer(3),
                                    order.time,
                                    integer(kOrderStatus),
                                    integer(1),
                                    kVat,
                                    reference,
                                    order.requisition.value_or(""),
                                    integer(kDeliveryForm),
                                    std::string("NOK"),
                                    integer(0),
                                    integer(0),
                                    integer(0),
                                    integer(1),
                                    integer(0),
                                    integer(0),
                                    integer(0)});
            links_.rows.push_back({integer(chain_.departmentOf(till).id), till.number, integer(order.id), reference,
                                   order.time, integer(customer.id)});
            for (const OrderLine& line : order.lines)
                orderLines_.rows.push_back({reference, order.time, integer(customer.id), itemOf(line),
                                            line.text.value_or(nameOf(line.item)), line.quantity, line.quantity,
                                            roundedTo(line.price / (1 + line.vat / 100), 3), line.discount, line.cost,
                                            line.vat, integer(0), integer(1), integer(1)});
        });
    }

    void sales(const Till& till) {
        const int department = chain_.departmentOf(till).id;
        for (const Settlement& settlement : till.settlements) {
            if (!isSale(settlement)) continue;
            std::map<int, Hour> hours;
            eachOrderOf(till, settlement, [&](const Order& order) {
                if (order.lines.empty() || order.brokenOff) return;
                Hour& hour = hours[static_cast<int>(order.time.milliseconds % kDay / kHour)];
                ++hour.sales;
                for (const OrderLine& line : order.lines) {
                    const double turnover = line.quantity * line.price * (100 - line.discount) / 100;
                    hour.turnover += turnover;
                    Sum& sum = sums_[{department, settlement.time.milliseconds / kDay, itemOf(line),
                                      line.status.value_or(kPlainSale)}];
                    sum.quantity += line.quantity;
                    sum.turnover += turnover;
                    stock_[{department, itemOf(line)}] -= line.quantity;
                }
            });
            for (const auto& [hour, sum] : hours) {
                Hour& all = hours_[{department, settlement.time.milliseconds, hour}];
                all.turnover += sum.turnover;
                all.sales = sum.sales;
            }
        }
    }

    void slips(const Till& till) {
        for (const Slip& card : till.giftCards) cards_.rows.push_back(slip(till, card));
        for (const Slip& note : till.creditNotes) notes_.rows.push_back(slip(till, note));
    }

    void till(const Till& till) {
        std::int64_t unsettled = 0;
        for (const Order& order : till.orders) unsettled += order.settlement || order.brokenOff ? 0 : 1;
        Cell last = std::monostate{};
        for (const Settlement& settlement : till.settlements)
            if (isSale(settlement)) last = settlement.time;
        tills_.rows.push_back({integer(chain_.departmentOf(till).id), till.number, unsettled, last});
        for (const int type : {1, 2, 3, 5, 7})
            log_.rows.push_back(
                {integer(type), integer(chain_.departmentOf(till).id), till.number, integer(1), integer(1)});
        for (const Order& order : till.orders)
            if (order.settlement) counted_.rows.push_back(countedRow(till, order));
    }

    [[nodiscard]] std::vector<TableData> tables() {
        for (const auto& [key, sum] : sums_) {
            const auto& [department, day, item, status] = key;
            sales_.rows.push_back({integer(department), Moment{day * kDay}, item, integer(status), sum.quantity,
                                   roundedTo(sum.turnover, 4)});
        }
        for (const auto& [key, quantity] : stock_)
            stockRows_.rows.push_back({integer(key.first), key.second, quantity + 0.0});
        for (const auto& [key, hour] : hours_) {
            const auto& [department, time, number] = key;
            hourRows_.rows.push_back(
                {integer(department), Moment{time}, integer(number), roundedTo(hour.turnover, 4), integer(hour.sales)});
        }
        return {orders_, orderLines_, links_, sales_, stockRows_, hourRows_, cards_, notes_, tills_, log_, counted_};
    }

private:
    struct Sum {
        double quantity = 0;
        double turnover = 0;
    };
    struct Hour {
        double turnover = 0;
        int sales = 0;
    };

    // Under which number the back office has it.
    [[nodiscard]] const std::string& itemOf(const OrderLine& line) const {
        return line.item == kAlias ? chain_.items.front().id : line.item;
    }
    [[nodiscard]] std::string nameOf(const std::string& item) const {
        if (item == kAlias) return kAliasName;
        for (const std::vector<Item>* list : {&chain_.items, &chain_.serviceItems})
            for (const Item& one : *list)
                if (one.id == item) return one.name;
        return {};
    }

    [[nodiscard]] std::vector<Cell> slip(const Till& till, const Slip& s) const {
        std::vector<Cell> row{
            s.id, chain_.departmentOf(till).number, till.number, s.employee, integer(s.origin), s.amount, s.validTo};
        if (s.redeemed)
            row.insert(row.end(),
                       {s.redeemed->department, s.redeemed->till, s.redeemed->employee, integer(s.redeemed->payment)});
        else
            row.insert(row.end(), 4, std::monostate{});
        row.push_back(integer(1));
        return row;
    }

    [[nodiscard]] std::vector<Cell> countedRow(const Till& till, const Order& order) const {
        bool sale = false;
        for (const Settlement& settlement : till.settlements)
            if (settlement.id == *order.settlement) sale = isSale(settlement);
        return {integer(chain_.departmentOf(till).id), till.number, integer(order.id), integer(sale)};
    }

    const Chain& chain_;
    std::map<std::tuple<int, std::int64_t, std::string, int>, Sum> sums_;  // department, day, item, status
    std::map<std::pair<int, std::string>, double> stock_;
    std::map<std::tuple<int, std::int64_t, int>, Hour> hours_;  // department, settlement's time, hour

    TableData orders_{
        "ORDRE",
        {"Or_Fra_Ik_Ku_ID", "Or_Pi_ID",     "Or_Ku_ID",       "RTRIM(Or_An_ID)", "Or_Eier_Ik_Ku_ID", "Or_Ordretype",
         "Or_Dato",         "Or_Status",    "Or_MvaBeregnes", "Or_MvaSats",      "Or_VaarRef",       "Or_DeresRef",
         "Or_Le_Id",        "Or_Vu_Id",     "Or_Porto",       "Or_Prislapp",     "Or_Rabatt",        "Or_Vu_Kurs",
         "Or_AntKolli",     "Or_Avrunding", "Or_AntPaller"},
        {}};
    TableData orderLines_{
        "ORDRELINJE JOIN ORDRE ON OL_Or_ID = Or_ID",
        {"Or_VaarRef", "Or_Dato", "Or_Ku_ID", "RTRIM(OL_Va_ID)", "OL_Navn", "OL_Bestilt", "OL_Levert",
         "ROUND(OL_Pris, 3)", "OL_Rabatt", "OL_Kostpris", "OL_Mvasats", "OL_Status", "OL_MvaBeregnes", "OL_Utskrift"},
        {}};
    TableData links_{"PosOrdre JOIN ORDRE ON Pos_Or_Kreditt_Or_Id = Or_ID",
                     {"Pos_Or_Ik_Ku_Id", "Pos_Or_KasseNr", "Pos_Or_Id", "Or_VaarRef", "Or_Dato", "Or_Ku_ID"},
                     {}};
    TableData sales_{
        "Butikksalg",
        {"Bs_Ik_Ku_Id", "Bs_Dato", "RTRIM(Bs_Va_Id)", "Bs_Ol_Status", "Bs_Antall + 0", "ROUND(Bs_Omsetning, 4) + 0"},
        {}};
    TableData stockRows_{"Varebeholdning", {"Vbh_Ik_Ku_Id", "RTRIM(Vbh_Va_Id)", "Vbh_Antall + 0"}, {}};
    TableData hourRows_{
        "timesalg", {"Ts_Ik_Ku_ID", "Ts_Dato", "Ts_Time", "ROUND(Ts_Omsetning, 4) + 0", "Ts_AntallSalg"}, {}};
    TableData cards_{"POSGAVEKORT",
                     {"GA_ID", "RTRIM(GA_AVDNR)", "RTRIM(GA_KASSENR)", "RTRIM(GA_AN_ID)", "GA_OL_ID", "GA_BELOP",
                      "GA_GYLDIGTIL", "RTRIM(GA_BET_AVDNR)", "RTRIM(GA_BET_KASSENR)", "RTRIM(GA_BET_AN_ID)", "GA_BT_ID",
                      "CASE WHEN GA_SYNKTIDSPUNKT IS NULL THEN 0 ELSE 1 END"},
                     {}};
    TableData notes_{"POSTilgodelapp",
                     {"TG_ID", "RTRIM(TG_AVDNR)", "RTRIM(TG_KASSENR)", "RTRIM(TG_AN_ID)", "TG_OR_ID", "TG_BELOP",
                      "TG_GYLDIGTIL", "RTRIM(TG_BET_AVDNR)", "RTRIM(TG_BET_KASSENR)", "RTRIM(TG_BET_AN_ID)", "TG_BT_ID",
                      "CASE WHEN TG_SYNKTIDSPUNKT IS NULL THEN 0 ELSE 1 END"},
                     {}};
    TableData tills_{"Internkundekasse",
                     {"Ikk_Ik_Ku_Id", "RTRIM(Ikk_Kassenummer)", "Ikk_AntIkkeOppgjorteSalg", "Ikk_SistHentetOppgjor"},
                     {}};
    TableData log_{"dts_logg", {"dl_dlt_id", "dl_ik_ku_id", "dl_kassenr", "dl_info", "dl_dp_id"}, {}};
    TableData counted_{"PosOrdre",
                       {"Pos_Or_Ik_Ku_Id", "Pos_Or_KasseNr", "Pos_Or_Id",
                        "CASE WHEN Pos_Or_OppdatertBeholdning IS NULL THEN 0 ELSE 1 END"},
                       {}};
};

}  // namespace

std::vector<TableData> settledTables(const Chain& chain, const std::vector<std::size_t>& walk,
                                     const SettledOptions& options) {
    Settled settled(chain);
    for (const std::size_t index : walk) {
        const Till& till = chain.tills.at(index);
        if (options.creditOrders) settled.creditOrders(till);
        settled.sales(till);
        if (options.chainInstallation && options.vouchers) settled.slips(till);
        settled.till(till);
    }
    return settled.tables();
}

std::size_t creditOrderCount(const Chain& chain, const std::vector<std::size_t>& walk) {
    std::size_t count = 0;
    for (const std::size_t index : walk) eachCreditSale(chain.tills.at(index), [&](const Order&) { ++count; });
    return count;
}

std::vector<TableData> markedTables(const Till& till, const SettledOptions& options) {
    TableData settlements{
        "OPPGJOR", {"OP_ID", "OP_TYPE", "OP_STATUS", "CASE WHEN OP_OPPDATERTTIDSPUNKT IS NULL THEN 0 ELSE 1 END"}, {}};
    for (const Settlement& s : till.settlements)
        settlements.rows.push_back({integer(s.id), s.type, integer(isSale(s) && !options.chainInstallation),
                                    integer(isSale(s) && options.chainInstallation)});
    TableData times{"TIMER", {"TI_ID", "RTRIM(TI_AN_ID)", "TI_TIDINN", "TI_TIDUT", "TI_STATUS"}, {}};
    for (const TimeEntry& e : till.timeEntries)
        times.rows.push_back(
            {integer(e.id), e.employee, e.in, orNull(e.out), integer(e.status + (e.out ? kFetchedTime : 0))});
    // The till compares its version with 149.0 as a text, and 149 is the lesser of the two.
    constexpr int kLastWithoutList = 149;
    TableData payOuts{"UTBETALINGIMPORT", {"iUB_BT_ID", "iUB_NAVN", "iUB_KONTO", "iUB_TELEFON", "iUB_EPOST"}, {}};
    for (const Order& order : till.orders)
        for (const Payment& p : order.payments)
            if (order.settlement && p.payOut && till.version > kLastWithoutList)
                payOuts.rows.push_back({integer(p.id), p.payOut->name, p.payOut->account, orNull(p.payOut->telephone),
                                        orNull(p.payOut->email)});
    const bool marked = options.chainInstallation && options.vouchers;
    const auto slips = [&](const std::vector<Slip>& list, const char* table, const std::string& prefix) {
        TableData data{
            table,
            {prefix + "ID", prefix + "BELOP", "CASE WHEN " + prefix + "SYNKTIDSPUNKT IS NULL THEN 0 ELSE 1 END"},
            {}};
        for (const Slip& s : list) data.rows.push_back({s.id, s.amount, integer(marked)});
        return data;
    };
    return {settlements, times, payOuts, slips(till.giftCards, "GAVEKORT", "GA_"),
            slips(till.creditNotes, "TILGODELAPP", "TG_")};
}

}  // namespace sandbox::chain
