// How the made-up chain comes about. All chance comes from engines seeded with the options' seed. What was added to the
// chain later draws from an engine of its own, so that what was there stays the same.
#include "sandbox/chain/chain_model.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "sandbox/chain/chance.h"
#include "sandbox/chain/clerk.h"
#include "sandbox/chain/seller.h"

namespace sandbox::chain {

namespace {

constexpr int kFirstDepartmentId = 1001;
constexpr int kFirstCustomerId = 30001;

double kroner(int oere) {
    return static_cast<double>(oere) / 100.0;
}

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
    options.everyKind = true;
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
        else if (word == "tillitems")
            options.tillItems = number(value, word);
        else if (word == "customers")
            options.customers = number(value, word);
        else if (word == "kinds" && (value == "all" || value == "sales"))
            options.everyKind = value == "all";
        else if (word == "orders")
            options.ordersADay = number(value, word);
        else if (word == "versions") {
            options.versions.clear();
            for (const std::string_view version : split(value, '+')) options.versions.push_back(number(version, word));
        } else
            throw std::invalid_argument("a chain has no '" + std::string(piece) + "'");
    }
    if (options.departments < 1 || options.items < 1 || options.tillItems == 0 || options.versions.empty())
        throw std::invalid_argument("a chain needs a department, an item and a version at least");
    return options;
}

namespace {

// What an item is apart from its number and price, suppliers and groups, and who buys: the back office's registers.
void makeRegisters(Chain& chain) {
    static constexpr const char* kStreets[] = {"Storgata", "Kirkeveien", "Åsgata", "Ørneveien"};
    static constexpr const char* kColours[] = {"Rød", "Blå", "Grønn", "Sort"};
    static constexpr std::pair<const char*, const char*> kTowns[] = {
        {"0181", "OSLO"}, {"5003", "BERGEN"}, {"7030", "TRONDHEIM"}, {"6150", "ØRSTA"}};
    Chance chance(chain.options.seed + 1'000'003U);
    const auto pick = [&](const auto& from) {
        return from[static_cast<std::size_t>(chance.below(static_cast<int>(std::size(from))))];
    };
    for (int g = 0; g < 4; ++g)
        chain.groups.push_back({padded(100 * (g + 1), 4), "Gruppe " + std::to_string(g + 1), {}});
    for (int g = 0; g < 8; ++g)
        chain.groups.push_back({padded(100 * (g % 4 + 1) + g / 4 + 1, 4), "Undergruppe " + std::to_string(g + 1),
                                padded(100 * (g % 4 + 1), 4)});
    for (int s = 1; s <= 5; ++s) chain.suppliers.push_back({s, "Leverandør " + std::to_string(s) + " AS"});
    for (std::size_t i = 0; i < chain.items.size(); ++i) {
        Item& item = chain.items[i];
        item.group = chain.groups[4 + static_cast<std::size_t>(chance.below(8))].id;
        item.supplier = 1 + chance.below(5);
        item.product = "P" + padded(static_cast<int>(i / 4), 6);
        item.colour = kColours[i % 4];
        item.changed = chance.oneIn(10);
    }
    chain.serviceItems = {{kGiftCardItem, "Gavekort", 0, 0},
                          {kAccountPaymentItem, "Innbetaling på konto", 0, 0},
                          {kInvoiceFeeItem, "Fakturagebyr", 0, 59},
                          {kReplacementItem, "Utgått vare", 0, 0}};
    for (int c = 0; c < chain.options.customers; ++c) {
        const auto& [postcode, town] = pick(kTowns);
        chain.customers.push_back({kFirstCustomerId + c, "Kunde nr. " + std::to_string(c + 1) + " Næss",
                                   std::string(pick(kStreets)) + " " + std::to_string(1 + chance.below(90)), postcode,
                                   town, 1 + chance.below(2), 1 + chance.below(2)});
    }
}

}  // namespace

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
    makeRegisters(chain);
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
    if (options.everyKind)
        for (Till& till : chain.tills) Clerk(chain, till).workEverySettlement();
    return chain;
}

void addDay(Chain& chain, Till& till) {
    Chance chance(chain.options.seed + static_cast<unsigned>(till.orders.size()));
    std::int64_t last = firstDay();
    for (const Settlement& settlement : till.settlements) last = std::max(last, settlement.time.milliseconds);
    Seller(chain, till, chance).day(last / kDay * kDay + kDay);
    if (chain.options.everyKind) Clerk(chain, till).work(till.settlements.back().id);
}

}  // namespace sandbox::chain
