// Says in a line or two what a test needs of a chain:
//   chain().departments(1).tills(2).till(2).withCreditSale().withGiftCard(500).build()
// A chain as its options tell it, and then what the named tills have beside it. What is added goes into the last
// settlement of the till's sales.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "sandbox/chain/chain_model.h"
#include "sandbox/chain/clerk.h"

namespace sandbox::chain {

class ChainBuilder {
public:
    ChainBuilder& departments(int count) { return set(options_.departments, count); }
    ChainBuilder& tills(int count) { return set(options_.tills, count); }
    ChainBuilder& days(int count) { return set(options_.days, count); }
    ChainBuilder& items(int count) { return set(options_.items, count); }
    ChainBuilder& ordersADay(int count) { return set(options_.ordersADay, count); }
    ChainBuilder& seed(unsigned seed) { return set(options_.seed, seed); }
    ChainBuilder& versions(std::vector<int> versions) { return set(options_.versions, std::move(versions)); }
    ChainBuilder& everyKind() { return set(options_.everyKind, true); }

    // Which till what follows is about, counted from 1 as the model holds them; the first where none is named.
    ChainBuilder& till(int number);

    ChainBuilder& withCreditSale();  // to the first customer
    ChainBuilder& withUnpaidSale();  // the same without a payment
    ChainBuilder& withGiftCard(double amount, bool redeemed = false);
    ChainBuilder& withCreditNote(bool redeemed = false);
    ChainBuilder& withPayOut();
    ChainBuilder& withTimeEntry(bool ended = true);
    ChainBuilder& withGoodsReceipt();
    ChainBuilder& withGoodsOrder();
    ChainBuilder& withLogLine(const std::string& remark);
    ChainBuilder& withExtraEmployee();

    // Raises std::invalid_argument for a till that is not there or has settled nothing.
    [[nodiscard]] Chain build() const;

private:
    using Work = std::function<void(Clerk&, Chain&, int settlement)>;

    template <typename T>
    ChainBuilder& set(T& option, T value) {
        option = std::move(value);
        return *this;
    }
    ChainBuilder& add(Work work);

    ChainOptions options_;
    std::size_t till_ = 0;
    std::vector<std::pair<std::size_t, Work>> work_;
};

[[nodiscard]] inline ChainBuilder chain() {
    return {};
}

}  // namespace sandbox::chain
