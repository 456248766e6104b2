// How a till comes by its plain sales.
#include "sandbox/chain/seller.h"

#include <algorithm>

namespace sandbox::chain {

namespace {

constexpr int kVoucherProduct = 4711;

}  // namespace

Seller::Seller(const Chain& chain, Till& till, Chance& chance) : chain_(chain), till_(till), chance_(chance) {
    for (const Employee& e : chain.employees)
        if (e.department == till.department) employees_.push_back(e.id);
    for (const Order& order : till.orders)
        for (const OrderLine& line : order.lines) line_ = std::max(line_, line.id);
    for (const Order& order : till.orders) order_ = std::max(order_, order.id);
    for (const Order& order : till.orders)
        for (const Payment& p : order.payments) payment_ = std::max(payment_, p.id);
    for (const Settlement& s : till.settlements)
        for (const CashLine& c : s.cash) cash_ = std::max(cash_, c.id);
    signature_ = payment_ + line_ + static_cast<int>(till.settlements.size());
}

void Seller::day(std::int64_t midnight) {
    const int settlement = nextId(till_.settlements, [](const Settlement& s) { return s.id; });
    const std::size_t first = till_.orders.size();
    const int orders = chain_.options.ordersADay + chance_.below(5) - 2;
    for (int i = 0; i < std::max(orders, 1); ++i)
        sell(settlement, midnight + 9 * 60 * kMinute + i * 7 * kMinute + chance_.below(60000));
    settle(settlement, midnight + 21 * 60 * kMinute, first);
}

void Seller::stockCount(std::int64_t time) {
    const int id = nextId(till_.settlements, [](const Settlement& s) { return s.id; });
    Order& order = newOrder(id, time);
    for (int i = 0; i < 3; ++i) newLine(order).quantity = 10 + chance_.below(20);
    Settlement settlement;
    settlement.id = id;
    settlement.employee = order.employee;
    settlement.time = {time + 5 * kMinute};
    settlement.finished = {time + 6 * kMinute};
    settlement.type = "VARETELLING";
    till_.settlements.push_back(std::move(settlement));
}

void Seller::sellUnsettled(std::int64_t time) {
    sell(std::nullopt, time);
}

Order& Seller::newOrder(std::optional<int> settlement, std::int64_t time) {
    Order order;
    order.id = ++order_;
    order.customer = 1;
    order.settlement = settlement;
    order.employee = employees_[static_cast<std::size_t>(chance_.below(static_cast<int>(employees_.size())))];
    order.time = {time / 1000 * 1000};
    order.finished = {order.time.milliseconds + 40000};
    till_.orders.push_back(std::move(order));
    return till_.orders.back();
}

OrderLine& Seller::newLine(Order& order) {
    const Item& item = chain_.items[static_cast<std::size_t>(chance_.below(static_cast<int>(chain_.tillItems())))];
    OrderLine line;
    line.id = ++line_;
    line.item = item.id;
    line.quantity = 1 + chance_.below(3);
    line.price = item.price;
    line.cost = item.cost;
    order.lines.push_back(std::move(line));
    return order.lines.back();
}

Signature Seller::newSignature() {
    return {++signature_, bytes(chance_, 40)};
}

void Seller::sell(std::optional<int> settlement, std::int64_t time) {
    const bool returns = settlement && chance_.oneIn(8) && till_.orders.size() > 1;
    const int returned =
        returns ? till_.orders[static_cast<std::size_t>(chance_.below(static_cast<int>(till_.orders.size())))].id : 0;
    Order& order = newOrder(settlement, time);
    if (chance_.oneIn(5)) order.postcode = padded(chance_.below(9999), 4);
    if (chance_.oneIn(7)) order.requisition = "Rekv. " + std::to_string(100 + chance_.below(900)) + "/Ødegård";
    if (chance_.oneIn(7)) order.telephone = "9" + padded(chance_.below(9999999), 7);
    if (chance_.oneIn(6)) order.statisticsEmployee = order.employee;
    if (chance_.oneIn(6)) order.barcode = "20" + padded(order.id, 11);
    if (chance_.oneIn(9)) order.stockCount = false;
    if (returns) {
        order.returned = returned;
        order.reason = 1 + chance_.below(2);
    }
    double sum = 0;
    for (int i = 0, lines = 1 + chance_.below(4); i < lines; ++i) {
        OrderLine& line = newLine(order);
        if (returns) line.quantity = -line.quantity;
        if (chance_.oneIn(4)) line.discount = 5 * (1 + chance_.below(4));
        if (chance_.oneIn(3)) line.status = 1 + chance_.below(2);
        if (chance_.oneIn(5)) line.display = chance_.oneIn(2);
        if (returns) line.reason = 3;
        if (chance_.oneIn(6)) line.text = "Gaveinnpakning, rød sløyfe";
        line.extraSale = chance_.oneIn(5);
        if (till_.version >= 178 && chance_.oneIn(10)) line.voucher = redeem(time);
        sum += line.quantity * line.price * (100 - line.discount) / 100;
    }
    pay(order, rounded(sum));
    if (till_.version >= 158 && returns) order.signature = newSignature();
}

int Seller::redeem(std::int64_t time) {
    if (!till_.vouchers.empty() && chance_.oneIn(2)) {
        Voucher& voucher = till_.vouchers.back();
        ++voucher.used;
        return voucher.id;
    }
    const int id = nextId(till_.vouchers, [](const Voucher& v) { return v.id; });
    till_.vouchers.push_back({id, kVoucherProduct, {(time - kDay) / kDay * kDay}, 5, 1});
    return id;
}

void Seller::pay(Order& order, double sum) {
    Payment payment;
    payment.id = ++payment_;
    payment.amount = sum;
    payment.form = sum > 0 && chance_.oneIn(2) ? kCard : kCash;
    if (till_.version >= 198 && sum > 0 && chance_.oneIn(5)) payment.form = kTelephone;
    if (payment.form == kCard) {
        payment.bank = BankInfo{payment.id,
                                1 + chance_.below(2),
                                "**** **** **** " + padded(chance_.below(9999), 4),
                                "20260302" + padded(chance_.below(999999), 6),
                                "T" + padded(payment.id, 8),
                                padded(chance_.below(999999), 6)};
        if (till_.version >= 158 && chance_.oneIn(4)) payment.signature = newSignature();
    }
    if (payment.form == kTelephone) payment.telephoneReference = "vipps-" + padded(payment.id, 6);
    if (payment.form == kCash && chance_.oneIn(9)) payment.rate = 11.42;
    order.payments.push_back(std::move(payment));
}

void Seller::settle(int id, std::int64_t time, std::size_t firstOrder) {
    Settlement settlement;
    settlement.id = id;
    settlement.employee = employees_.front();
    settlement.time = {time};
    settlement.finished = {time + 10 * kMinute};
    settlement.type = "NORMAL";
    settlement.visitors = 50 + chance_.below(100);
    if (chance_.oneIn(2)) settlement.nightSafe = "NS" + padded(chance_.below(9999), 4);
    if (till_.version >= 158 && chance_.oneIn(2)) settlement.comment = "Kassen stemte på øret";
    for (int form : {kCash, kCard, kTelephone}) {
        double amount = 0;
        for (std::size_t i = firstOrder; i < till_.orders.size(); ++i)
            for (const Payment& p : till_.orders[i].payments)
                if (p.form == form) amount += p.amount;
        if (amount != 0) settlement.payments.push_back({form, rounded(amount), rounded(amount)});
    }
    for (int unit = 1; unit <= 3; ++unit) {
        const double counted = 10.0 * chance_.below(40);
        settlement.cash.push_back({++cash_, unit, 100.0 * unit, counted, counted});
    }
    if (chance_.oneIn(2))
        settlement.attachments.push_back({id, "bilag " + std::to_string(id) + ".pdf", bytes(chance_, 200)});
    if (till_.version >= 158) settlement.signature = newSignature();
    till_.settlements.push_back(std::move(settlement));
}

}  // namespace sandbox::chain
