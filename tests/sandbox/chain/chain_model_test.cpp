// The made-up chain itself: the same for the same options, of any size, and with what a test asks for.
#include <gtest/gtest.h>

#include <set>

#include "sandbox/chain/chain_builder.h"
#include "sandbox/chain/chain_rows.h"
#include "sandbox/chain/posted_rows.h"

namespace sandbox::chain {
namespace {

// Everything that goes into the databases, as the statements that put it there.
std::string written(const Chain& chain) {
    std::string all;
    const auto add = [&](const std::vector<TableData>& tables) {
        for (const TableData& table : tables)
            for (const std::string& batch : insertBatches(table)) all += batch + "\n";
    };
    add(backOfficeTables(chain, [](const Till&) { return TillAddress{}; }));
    for (const Till& till : chain.tills) {
        add(tillRegisters(chain, till));
        add(tillSales(chain, till));
    }
    return all;
}

const TableData* find(const std::vector<TableData>& tables, const std::string& name) {
    for (const TableData& table : tables)
        if (table.table == name) return &table;
    return nullptr;
}

std::string column(const TableData& table, std::size_t row, const std::string& name) {
    for (std::size_t i = 0; i < table.columns.size(); ++i)
        if (table.columns[i] == name) return cellText(table.rows.at(row).at(i));
    return "no column " + name;
}

TEST(ChainModel, SameSeedMakesTheSameChain) {
    const auto make = [](unsigned seed) { return written(chain().seed(seed).everyKind().build()); };
    EXPECT_EQ(make(7), make(7));
    EXPECT_NE(make(7), make(8));
}

TEST(ChainModel, HasTheSizeThatWasAskedFor) {
    const Chain made =
        makeChain(parseChainOptions("departments=3,tills=5,days=2,items=100,tillitems=20,customers=9,versions=71+229"));
    EXPECT_EQ(made.departments.size(), 3u);
    EXPECT_EQ(made.items.size(), 100u);
    EXPECT_EQ(made.customers.size(), 9u);
    std::vector<std::string> tills;
    for (const Till& till : made.tills)
        tills.push_back(made.departmentOf(till).number + "/" + till.number + " " + std::to_string(till.version));
    EXPECT_EQ(tills, (std::vector<std::string>{"101/1 71", "102/1 229", "103/1 71", "101/2 229", "102/2 71"}));
    for (const Till& till : made.tills) {
        EXPECT_EQ(till.settlements.size(), 3u) << "two days and a stock count";
        EXPECT_EQ(find(tillRegisters(made, till), "VARE")->rows.size(), 20 + made.serviceItems.size() + 1)
            << "and one of a number that the back office has as an alias";
    }
}

TEST(ChainModel, OptionsThatMakeNoChainAreRefused) {
    for (const char* text :
         {"departments=0", "items=0", "tillitems=0", "shops=3", "kinds=some", "tills=two", "versions="})
        EXPECT_THROW((void)parseChainOptions(text), std::invalid_argument) << text;
}

TEST(ChainModel, EveryKindLeavesNoTableOfATillWithoutRows) {
    const Chain made = chain().departments(1).tills(1).days(3).ordersADay(60).versions({229}).everyKind().build();
    for (const TableData& table : tillSales(made, made.tills.front())) EXPECT_FALSE(table.rows.empty()) << table.table;
}

TEST(ChainModel, SettlementsCountThePaymentsOfTheirOrders) {
    const Chain made = chain().everyKind().build();
    for (const Till& till : made.tills)
        for (const Settlement& settlement : till.settlements) {
            double paid = 0;
            double settled = 0;
            for (const Order& order : till.orders)
                if (order.settlement == settlement.id && settlement.type == "NORMAL")
                    for (const Payment& payment : order.payments) paid += payment.amount;
            for (const SettledPayment& payment : settlement.payments) settled += payment.amount;
            EXPECT_NEAR(paid, settled, 0.005) << till.database << " settlement " << settlement.id;
        }
}

TEST(ChainModel, NumbersOfATillAreGivenOnce) {
    const Chain made = chain().everyKind().build();
    for (const Till& till : made.tills) {
        std::multiset<int> orders;
        std::multiset<int> lines;
        std::multiset<int> payments;
        for (const Order& order : till.orders) {
            orders.insert(order.id);
            for (const OrderLine& line : order.lines) lines.insert(line.id);
            for (const Payment& payment : order.payments) payments.insert(payment.id);
        }
        for (const auto* ids : {&orders, &lines, &payments})
            for (const int id : *ids) EXPECT_EQ(ids->count(id), 1u) << till.database << " " << id;
    }
}

TEST(ChainBuilder, CreditSaleIsPaidOnCreditByANamedCustomer) {
    const Chain plain = chain().tills(2).build();
    const Chain made = chain().tills(2).till(2).withCreditSale().build();
    EXPECT_EQ(made.tills[0].orders.size(), plain.tills[0].orders.size());
    ASSERT_EQ(made.tills[1].orders.size(), plain.tills[1].orders.size() + 1);
    const Order& order = made.tills[1].orders.back();
    EXPECT_EQ(order.customer, made.customers.front().id);
    ASSERT_EQ(order.payments.size(), 1u);
    EXPECT_EQ(order.payments.front().form, kCredit);
    EXPECT_TRUE(order.settlement.has_value());
}

TEST(ChainBuilder, UnpaidSaleHasNoPayment) {
    const Chain made = chain().tills(1).withUnpaidSale().build();
    EXPECT_TRUE(made.tills.front().orders.back().payments.empty());
}

TEST(ChainBuilder, RedeemedGiftCardTellsWhereItWasUsed) {
    const Chain made = chain().tills(1).withGiftCard(500).withGiftCard(250, true).build();
    const auto tables = tillSales(made, made.tills.front());
    const TableData& cards = *find(tables, "GAVEKORT");
    ASSERT_EQ(cards.rows.size(), 2u);
    EXPECT_EQ(column(cards, 0, "GA_BELOP"), "500");
    EXPECT_EQ(column(cards, 0, "GA_BT_ID"), "NULL");
    EXPECT_EQ(column(cards, 1, "GA_BET_AVDNR"), "101");
    EXPECT_EQ(column(cards, 1, "GA_BET_KASSENR"), "1");
    EXPECT_NE(column(cards, 0, "GA_ID"), column(cards, 1, "GA_ID"));
}

TEST(ChainBuilder, TimeEntryThatIsNotEndedIsNotPosted) {
    const Chain made = chain().tills(1).versions({229}).withTimeEntry().withTimeEntry(false).build();
    EXPECT_EQ(find(tillSales(made, made.tills.front()), "TIMER")->rows.size(), 2u);
    EXPECT_EQ(find(postedTables(made), "PosTimer")->rows.size(), 1u);
}

TEST(ChainBuilder, TillThatIsNotThereIsRefused) {
    EXPECT_THROW((void)chain().tills(2).till(3).withPayOut().build(), std::invalid_argument);
    EXPECT_THROW((void)chain().tills(2).days(0).till(1).withPayOut().build(), std::invalid_argument);
}

}  // namespace
}  // namespace sandbox::chain
