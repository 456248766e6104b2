// Plain sales at one till: days of orders with discounts, returns and vouchers, each closed by a settlement with its
// attachments and signatures.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/chain/chain_model.h"
#include "sandbox/chain/chance.h"

namespace sandbox::chain {

class Seller {
public:
    // Goes on with the numbers that the till has given out.
    Seller(const Chain& chain, Till& till, Chance& chance);

    void day(std::int64_t midnight);

    // A stock count is a settlement of its own kind, with one order whose lines are what was counted.
    void stockCount(std::int64_t time);

    void sellUnsettled(std::int64_t time);

private:
    Order& newOrder(std::optional<int> settlement, std::int64_t time);
    OrderLine& newLine(Order& order);
    [[nodiscard]] Signature newSignature();
    void sell(std::optional<int> settlement, std::int64_t time);
    [[nodiscard]] int redeem(std::int64_t time);
    void pay(Order& order, double sum);
    void settle(int id, std::int64_t time, std::size_t firstOrder);

    const Chain& chain_;
    Till& till_;
    Chance& chance_;
    std::vector<std::string> employees_;
    int order_ = 0;
    int line_ = 0;
    int payment_ = 0;
    int cash_ = 0;
    int signature_ = 0;
};

}  // namespace sandbox::chain
