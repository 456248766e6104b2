// How the made-up chain comes about. All chance comes from one engine seeded with the options' seed, and is drawn with
// plain remainders, so that every platform makes the same chain.
#include "sandbox/chain/chain_model.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <random>
#include <stdexcept>

namespace sandbox::chain {

namespace {

constexpr std::int64_t kDay = 24LL * 60 * 60 * 1000;
constexpr std::int64_t kMinute = 60LL * 1000;
constexpr int kFirstDepartmentId = 1001;
constexpr int kCash = 1;
constexpr int kCard = 2;
constexpr int kTelephone = 3;
constexpr int kVoucherProduct = 4711;

// The first day of sales: 2 March 2026.
std::int64_t firstDay() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(sys_days{2026y / March / 2}.time_since_epoch()).count();
}

class Chance {
public:
    explicit Chance(unsigned seed) : engine_(seed) {}
    int below(int n) { return static_cast<int>(engine_() % static_cast<unsigned>(n)); }
    bool oneIn(int n) { return below(n) == 0; }

private:
    std::mt19937 engine_;
};

std::string padded(int number, std::size_t width) {
    const std::string digits = std::to_string(number);
    return std::string(width - std::min(width, digits.size()), '0') + digits;
}

Blob bytes(Chance& chance, int size) {
    Blob blob;
    for (int i = 0; i < size; ++i) blob.bytes += static_cast<char>(chance.below(256));
    return blob;
}

double kroner(int oere) {
    return static_cast<double>(oere) / 100.0;
}

double rounded(double amount) {
    return std::round(amount * 100.0) / 100.0;
}

template <typename Range, typename Id>
int nextId(const Range& range, Id id) {
    int last = 0;
    for (const auto& item : range) last = std::max(last, id(item));
    return last + 1;
}

// Adds sales to one till, going on with the numbers that the till has given out.
class Seller {
public:
    Seller(const Chain& chain, Till& till, Chance& chance) : chain_(chain), till_(till), chance_(chance) {
        for (const Employee& e : chain.employees)
            if (e.department == till.department) employees_.push_back(e.id);
        for (const Order& order : till.orders)
            for (const OrderLine& line : order.lines) line_ = std::max(line_, line.id);
        for (const Order& order : till.orders)
            for (const Payment& p : order.payments) payment_ = std::max(payment_, p.id);
        for (const Settlement& s : till.settlements)
            for (const CashLine& c : s.cash) cash_ = std::max(cash_, c.id);
        signature_ = payment_ + line_ + static_cast<int>(till.settlements.size());
    }

    void day(std::int64_t midnight) {
        const int settlement = nextId(till_.settlements, [](const Settlement& s) { return s.id; });
        const std::size_t first = till_.orders.size();
        const int orders = chain_.options.ordersADay + chance_.below(5) - 2;
        for (int i = 0; i < std::max(orders, 1); ++i)
            sell(settlement, midnight + 9 * 60 * kMinute + i * 7 * kMinute + chance_.below(60000));
        settle(settlement, midnight + 21 * 60 * kMinute, first);
    }

    // A stock count is a settlement of its own kind, with one order whose lines are what was counted.
    void stockCount(std::int64_t time) {
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

    void sellUnsettled(std::int64_t time) { sell(std::nullopt, time); }

private:
    Order& newOrder(std::optional<int> settlement, std::int64_t time) {
        Order order;
        order.id = nextId(till_.orders, [](const Order& o) { return o.id; });
        order.customer = 1;
        order.settlement = settlement;
        order.employee = employees_[static_cast<std::size_t>(chance_.below(static_cast<int>(employees_.size())))];
        order.time = {time / 1000 * 1000};
        order.finished = {order.time.milliseconds + 40000};
        till_.orders.push_back(std::move(order));
        return till_.orders.back();
    }

    OrderLine& newLine(Order& order) {
        const Item& item = chain_.items[static_cast<std::size_t>(chance_.below(static_cast<int>(chain_.items.size())))];
        OrderLine line;
        line.id = ++line_;
        line.item = item.id;
        line.quantity = 1 + chance_.below(3);
        line.price = item.price;
        line.cost = item.cost;
        order.lines.push_back(std::move(line));
        return order.lines.back();
    }

    Signature newSignature() { return {++signature_, bytes(chance_, 40)}; }

    void sell(std::optional<int> settlement, std::int64_t time) {
        const bool returns = settlement && chance_.oneIn(8) && till_.orders.size() > 1;
        const int returned =
            returns ? till_.orders[static_cast<std::size_t>(chance_.below(static_cast<int>(till_.orders.size())))].id
                    : 0;
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

    int redeem(std::int64_t time) {
        if (!till_.vouchers.empty() && chance_.oneIn(2)) {
            Voucher& voucher = till_.vouchers.back();
            ++voucher.used;
            return voucher.id;
        }
        const int id = nextId(till_.vouchers, [](const Voucher& v) { return v.id; });
        till_.vouchers.push_back({id, kVoucherProduct, {(time - kDay) / kDay * kDay}, 5, 1});
        return id;
    }

    void pay(Order& order, double sum) {
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

    void settle(int id, std::int64_t time, std::size_t firstOrder) {
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

    const Chain& chain_;
    Till& till_;
    Chance& chance_;
    std::vector<std::string> employees_;
    int line_ = 0;
    int payment_ = 0;
    int cash_ = 0;
    int signature_ = 0;
};

int number(std::string_view text, std::string_view word) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < 0)
        throw std::invalid_argument("'" + std::string(text) + "' is not a number for '" + std::string(word) + "'");
    return value;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    while (!text.empty()) {
        const std::size_t at = std::min(text.find(separator), text.size());
        pieces.push_back(text.substr(0, at));
        text.remove_prefix(std::min(at + 1, text.size()));
    }
    return pieces;
}

}  // namespace

ChainOptions parseChainOptions(std::string_view text) {
    ChainOptions options;
    for (const std::string_view piece : split(text, ',')) {
        const std::size_t equals = piece.find('=');
        const std::string_view word = piece.substr(0, equals);
        const std::string_view value = equals == std::string_view::npos ? std::string_view() : piece.substr(equals + 1);
        if (word == "departments")
            options.departments = number(value, word);
        else if (word == "tills")
            options.tills = number(value, word);
        else if (word == "days")
            options.days = number(value, word);
        else if (word == "seed")
            options.seed = static_cast<unsigned>(number(value, word));
        else if (word == "items")
            options.items = number(value, word);
        else if (word == "orders")
            options.ordersADay = number(value, word);
        else if (word == "versions") {
            options.versions.clear();
            for (const std::string_view version : split(value, '+')) options.versions.push_back(number(version, word));
        } else
            throw std::invalid_argument("a chain has no '" + std::string(word) + "'");
    }
    if (options.departments < 1 || options.items < 1 || options.versions.empty())
        throw std::invalid_argument("a chain needs a department, an item and a version at least");
    return options;
}

Chain makeChain(const ChainOptions& options) {
    static constexpr const char* kTowns[] = {"Åmot", "Bærum", "Førde", "Grünerløkka", "Hønefoss", "Kolbotn", "Ørsta"};
    static constexpr const char* kNames[] = {"Kari Ødegård", "Ole Åsen", "Siri Bø", "Per Lunde", "Anne Sætre"};
    Chain chain;
    chain.options = options;
    Chance chance(options.seed);
    for (int d = 0; d < options.departments; ++d) {
        chain.departments.push_back({kFirstDepartmentId + d, std::to_string(101 + d),
                                     std::string("Torvik ") + kTowns[static_cast<std::size_t>(d) % std::size(kTowns)]});
        for (int e = 0; e < 3; ++e)
            chain.employees.push_back(
                {std::to_string(100 * (d + 1) + e), d,
                 kNames[static_cast<std::size_t>(chance.below(static_cast<int>(std::size(kNames))))]});
    }
    for (int i = 0; i < options.items; ++i) {
        const int price = 1990 + 100 * chance.below(400);
        chain.items.push_back(
            {padded(100000 + i, 6), "Vare nr. " + std::to_string(i + 1), kroner(price / 2), kroner(price)});
    }
    for (int t = 0; t < options.tills; ++t) {
        Till till;
        till.department = t % options.departments;
        till.number = std::to_string(t / options.departments + 1);
        till.version = options.versions[static_cast<std::size_t>(t) % options.versions.size()];
        till.database = "TorvikPOS_" + chain.departmentOf(till).number + "_" + till.number;
        Seller seller(chain, till, chance);
        for (int day = 0; day < options.days; ++day) seller.day(firstDay() + day * kDay);
        seller.stockCount(firstDay() + options.days * kDay + 8 * 60 * kMinute);
        seller.sellUnsettled(firstDay() + options.days * kDay + 10 * 60 * kMinute);
        chain.tills.push_back(std::move(till));
    }
    return chain;
}

void addDay(Chain& chain, Till& till) {
    Chance chance(chain.options.seed + static_cast<unsigned>(till.orders.size()));
    std::int64_t last = firstDay();
    for (const Settlement& settlement : till.settlements) last = std::max(last, settlement.time.milliseconds);
    Seller(chain, till, chance).day(last / kDay * kDay + kDay);
}

}  // namespace sandbox::chain
