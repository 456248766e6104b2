// How each of these comes about.
#include "sandbox/chain/clerk.h"

#include <algorithm>
#include <map>
#include <stdexcept>

namespace sandbox::chain {

namespace {

constexpr int kSlipDays = 3650;  // good for ten years, so that no chain outlives its slips
constexpr int kManySlips = 17;
constexpr int kOwnMoment = 10;  // milliseconds between the same sale of two tills

double sumOf(const Order& order) {
    double sum = 0;
    for (const OrderLine& line : order.lines) sum += line.quantity * line.price * (100 - line.discount) / 100;
    return rounded(sum);
}

}  // namespace

Clerk::Clerk(Chain& chain, Till& till)
    : chain_(chain), till_(till), chance_(chain.options.seed + 7'919U * static_cast<unsigned>(till.orders.size() + 1)) {
    for (const Order& order : till.orders) {
        order_ = std::max(order_, order.id);
        for (const OrderLine& line : order.lines) line_ = std::max(line_, line.id);
        for (const Payment& payment : order.payments) payment_ = std::max(payment_, payment.id);
    }
    for (const Settlement& s : till.settlements) {
        for (const Goods& goods : s.receipts) {
            receipt_ = std::max(receipt_, goods.id);
            for (const GoodsLine& line : goods.lines) receiptLine_ = std::max(receiptLine_, line.id);
        }
        for (const Goods& goods : s.goodsOrders) {
            goodsOrder_ = std::max(goodsOrder_, goods.id);
            for (const GoodsLine& line : goods.lines) goodsOrderLine_ = std::max(goodsOrderLine_, line.id);
        }
        for (const LogEntry& entry : s.log) logEntry_ = std::max(logEntry_, entry.id);
        for (const ExtraEmployee& extra : s.extraStaff) extra_ = std::max(extra_, extra.id);
    }
}

void Clerk::workEverySettlement() {
    for (std::size_t i = 0; i < till_.settlements.size(); ++i) work(till_.settlements[i].id);
}

void Clerk::work(int settlement) {
    if (settlementOf(settlement).type != "NORMAL") {
        zones(settlement);
        return;
    }
    if (chain_.customers.size() > 1) {
        creditSale(settlement, chain_.customers[0]);
        unpaidSale(settlement, chain_.customers[1]);
    }
    sellGiftCard(settlement, 500);
    redeemGiftCard(settlement, sellGiftCard(settlement, 250));
    giveCreditNote(settlement);
    redeemCreditNote(settlement, giveCreditNote(settlement));
    payOut(settlement);
    const std::int64_t day = settlementOf(settlement).time.milliseconds / kDay * kDay;
    clockIn(day + 8 * kHour, 450).codes = {1, 2};
    clockIn(day + 15 * kHour, std::nullopt);
    receiveGoods(settlement);
    orderGoods(settlement);
    log(settlement, "Skuff åpnet uten salg");
    extraEmployee(settlement);
    brokenOff(settlement);
    if (till_.number == "1" && settlement == till_.settlements.front().id) manySlips(settlement);
}

Order& Clerk::creditSale(int settlement, const Customer& customer) {
    Order& order = unpaidSale(settlement, customer);
    pay(order, kCredit, sumOf(order));
    recount(settlementOf(settlement));
    return order;
}

Order& Clerk::unpaidSale(int settlement, const Customer& customer) {
    Order& order = newOrder(settlement);
    order.customer = customer.id;
    // Till and all: an order of the back office is known again by time, receipt and requisition.
    order.requisition = "Best. " + till_.number + "-" + std::to_string(order.id);
    for (int i = 0; i < 2; ++i) {
        const Item& item = chain_.items[static_cast<std::size_t>(chance_.below(static_cast<int>(chain_.tillItems())))];
        newLine(order, item, 1 + chance_.below(3), item.price);
    }
    if (chain_.options.everyKind) oddLines(order);
    return order;
}

// What a line can be beside plain goods: at another rate of VAT and with a discount, under an alias, taken back, given
// away, struck out.
void Clerk::oddLines(Order& order) {
    const Item& first = chain_.items.front();
    const Item& other = chain_.items[static_cast<std::size_t>(order.id) % chain_.tillItems()];
    OrderLine& food = newLine(order, other, 2, other.price);
    food.vat = 15;
    food.discount = 20;
    OrderLine& alias = newLine(order, first, 1, first.price);
    alias.item = kAlias;
    alias.vat = 12;
    alias.discount = 12.5;
    newLine(order, other, -1, other.price);
    newLine(order, first, 1, 0).vat = 0;
    newLine(order, other, 0, other.price);
}

Order& Clerk::brokenOff(int settlement) {
    Order& order = newOrder(settlement);
    order.brokenOff = true;
    const Item& item = chain_.items[static_cast<std::size_t>(order.id) % chain_.tillItems()];
    newLine(order, item, 7, item.price);
    return order;
}

void Clerk::manySlips(int settlement) {
    for (int i = 0; i < kManySlips; ++i) {
        sellGiftCard(settlement, 100 + i);
        giveCreditNote(settlement);
    }
}

Slip& Clerk::sellGiftCard(int settlement, double amount) {
    Order& order = newOrder(settlement);
    const OrderLine& line = newLine(order, chain_.serviceItems.front(), 1, amount);
    pay(order, kCash, amount);
    recount(settlementOf(settlement));
    till_.giftCards.push_back({slipId(static_cast<int>(till_.giftCards.size())),
                               order.employee,
                               line.id,
                               amount,
                               {order.time.milliseconds / kDay * kDay + kSlipDays * kDay},
                               std::nullopt});
    return till_.giftCards.back();
}

Slip& Clerk::giveCreditNote(int settlement) {
    Order& order = returnOfGoods(settlement);
    const double amount = -sumOf(order);
    pay(order, kCreditNote, -amount);
    recount(settlementOf(settlement));
    till_.creditNotes.push_back({slipId(500 + static_cast<int>(till_.creditNotes.size())),
                                 order.employee,
                                 order.id,
                                 amount,
                                 {order.time.milliseconds / kDay * kDay + kSlipDays * kDay},
                                 std::nullopt});
    return till_.creditNotes.back();
}

void Clerk::redeemGiftCard(int settlement, Slip& card) {
    redeem(settlement, card, kGiftCard);
}

void Clerk::redeemCreditNote(int settlement, Slip& note) {
    redeem(settlement, note, kCreditNote);
}

void Clerk::redeem(int settlement, Slip& slip, int form) {
    Order& order = newOrder(settlement);
    const Item& item = chain_.items[static_cast<std::size_t>(chance_.below(static_cast<int>(chain_.tillItems())))];
    newLine(order, item, 1, slip.amount);
    const int payment = pay(order, form, slip.amount).id;
    recount(settlementOf(settlement));
    slip.redeemed = Redemption{chain_.departmentOf(till_).number, till_.number, order.employee, payment};
}

Order& Clerk::payOut(int settlement) {
    Order& order = returnOfGoods(settlement);
    pay(order, kPayOut, sumOf(order)).payOut = PayOut{"Berit Sjøli", "15031234567", "90012345", std::nullopt};
    recount(settlementOf(settlement));
    return order;
}

TimeEntry& Clerk::clockIn(std::int64_t time, std::optional<int> minutes) {
    const int id = nextId(till_.timeEntries, [](const TimeEntry& e) { return e.id; });
    TimeEntry entry{id, employee().id, {time / kMinute * kMinute}, std::nullopt, std::nullopt, 1, {}};
    if (minutes) {
        entry.out = Moment{entry.in.milliseconds + *minutes * kMinute};
        entry.text = "Vakt på gulvet";
    }
    till_.timeEntries.push_back(std::move(entry));
    return till_.timeEntries.back();
}

Goods& Clerk::receiveGoods(int settlement) {
    Settlement& s = settlementOf(settlement);
    ++receipt_;
    s.receipts.push_back(newGoods(receipt_, s, "Pakkseddel " + std::to_string(receipt_), receiptLine_));
    return s.receipts.back();
}

Goods& Clerk::orderGoods(int settlement) {
    Settlement& s = settlementOf(settlement);
    ++goodsOrder_;
    s.goodsOrders.push_back(newGoods(goodsOrder_, s, "Bestilling " + std::to_string(goodsOrder_), goodsOrderLine_));
    return s.goodsOrders.back();
}

LogEntry& Clerk::log(int settlement, const std::string& remark) {
    Settlement& s = settlementOf(settlement);
    s.log.push_back({++logEntry_, 1, employee().id, {s.time.milliseconds - kHour}, remark});
    return s.log.back();
}

ExtraEmployee& Clerk::extraEmployee(int settlement) {
    Settlement& s = settlementOf(settlement);
    s.extraStaff.push_back({++extra_, employee().id, "Ekstrahjelp Åse", {s.time.milliseconds - 2 * kHour}});
    return s.extraStaff.back();
}

void Clerk::zones(int settlement) {
    int zone = 0;
    for (Order& order : till_.orders)
        if (order.settlement == settlement)
            for (OrderLine& line : order.lines) line.zones = "Sone " + std::to_string(++zone);
}

Settlement& Clerk::settlementOf(int id) {
    for (Settlement& s : till_.settlements)
        if (s.id == id) return s;
    throw std::invalid_argument("till " + till_.number + " has no settlement " + std::to_string(id));
}

const Employee& Clerk::employee() const {
    for (const Employee& e : chain_.employees)
        if (e.department == till_.department) return e;
    throw std::invalid_argument("department " + chain_.departmentOf(till_).number + " has no staff");
}

// Unique in the chain by department and till, as tills print it: 13 digits.
std::string Clerk::slipId(int number) const {
    return "29" + padded(std::stoi(chain_.departmentOf(till_).number), 4) + padded(std::stoi(till_.number), 3) +
           padded(number + 1, 4);
}

Order& Clerk::newOrder(int settlement) {
    Order order;
    order.id = ++order_;
    order.customer = 1;
    order.settlement = settlement;
    order.employee = employee().id;
    // Each till has moments of its own: the back office knows a credit order again by its time and its references.
    const auto till = &till_ - chain_.tills.data();
    order.time = {settlementOf(settlement).time.milliseconds - 90 * kMinute + order.id * 1000 + till * kOwnMoment};
    order.finished = {order.time.milliseconds + 30000};
    till_.orders.push_back(std::move(order));
    return till_.orders.back();
}

OrderLine& Clerk::newLine(Order& order, const Item& item, double quantity, double price) {
    OrderLine line;
    line.id = ++line_;
    line.item = item.id;
    line.quantity = quantity;
    line.price = price;
    line.cost = item.cost;
    order.lines.push_back(std::move(line));
    return order.lines.back();
}

Payment& Clerk::pay(Order& order, int form, double amount) {
    Payment payment;
    payment.id = ++payment_;
    payment.form = form;
    payment.amount = amount;
    order.payments.push_back(std::move(payment));
    return order.payments.back();
}

Order& Clerk::returnOfGoods(int settlement) {
    Order& order = newOrder(settlement);
    order.reason = 1;
    const Item& item = chain_.items[static_cast<std::size_t>(chance_.below(static_cast<int>(chain_.tillItems())))];
    newLine(order, item, -1, item.price).reason = 3;
    return order;
}

Goods Clerk::newGoods(int id, const Settlement& settlement, const std::string& reference, int& line) {
    Goods goods{id, employee().id, {(settlement.time.milliseconds - 3 * kHour) / kMinute * kMinute}, reference, {}};
    for (int i = 0; i < 2; ++i) {
        const Item& item = chain_.items[static_cast<std::size_t>(chance_.below(static_cast<int>(chain_.tillItems())))];
        goods.lines.push_back({++line, item.id, 5.0 * (1 + chance_.below(4)), item.cost});
    }
    return goods;
}

void Clerk::recount(Settlement& settlement) {
    std::map<int, double> sums;
    for (const Order& order : till_.orders)
        if (order.settlement == settlement.id)
            for (const Payment& payment : order.payments) sums[payment.form] += payment.amount;
    settlement.payments.clear();
    for (const auto& [form, sum] : sums)
        if (sum != 0) settlement.payments.push_back({form, rounded(sum), rounded(sum)});
}

}  // namespace sandbox::chain
