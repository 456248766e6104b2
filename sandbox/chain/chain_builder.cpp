// Keeping what is to be added until the chain is made.
#include "sandbox/chain/chain_builder.h"

#include <stdexcept>

namespace sandbox::chain {

namespace {

const Settlement& lastSales(const Till& till) {
    for (auto s = till.settlements.rbegin(); s != till.settlements.rend(); ++s)
        if (s->type == "NORMAL") return *s;
    throw std::invalid_argument("till " + till.number + " has settled nothing");
}

}  // namespace

ChainBuilder& ChainBuilder::till(int number) {
    till_ = static_cast<std::size_t>(number - 1);
    return *this;
}

ChainBuilder& ChainBuilder::withCreditSale() {
    return add([](Clerk& clerk, Chain& c, int settlement) { clerk.creditSale(settlement, c.customers.at(0)); });
}

ChainBuilder& ChainBuilder::withUnpaidSale() {
    return add([](Clerk& clerk, Chain& c, int settlement) { clerk.unpaidSale(settlement, c.customers.at(0)); });
}

ChainBuilder& ChainBuilder::withGiftCard(double amount, bool redeemed) {
    return add([=](Clerk& clerk, Chain&, int settlement) {
        Slip& card = clerk.sellGiftCard(settlement, amount);
        if (redeemed) clerk.redeemGiftCard(settlement, card);
    });
}

ChainBuilder& ChainBuilder::withCreditNote(bool redeemed) {
    return add([=](Clerk& clerk, Chain&, int settlement) {
        Slip& note = clerk.giveCreditNote(settlement);
        if (redeemed) clerk.redeemCreditNote(settlement, note);
    });
}

ChainBuilder& ChainBuilder::withPayOut() {
    return add([](Clerk& clerk, Chain&, int settlement) { clerk.payOut(settlement); });
}

ChainBuilder& ChainBuilder::withTimeEntry(bool ended) {
    return add([=](Clerk& clerk, Chain&, int) {
        clerk.clockIn(firstDay() + 8 * kHour, ended ? std::optional(450) : std::nullopt);
    });
}

ChainBuilder& ChainBuilder::withGoodsReceipt() {
    return add([](Clerk& clerk, Chain&, int settlement) { clerk.receiveGoods(settlement); });
}

ChainBuilder& ChainBuilder::withGoodsOrder() {
    return add([](Clerk& clerk, Chain&, int settlement) { clerk.orderGoods(settlement); });
}

ChainBuilder& ChainBuilder::withLogLine(const std::string& remark) {
    return add([=](Clerk& clerk, Chain&, int settlement) { clerk.log(settlement, remark); });
}

ChainBuilder& ChainBuilder::withExtraEmployee() {
    return add([](Clerk& clerk, Chain&, int settlement) { clerk.extraEmployee(settlement); });
}

ChainBuilder& ChainBuilder::add(Work work) {
    work_.emplace_back(till_, std::move(work));
    return *this;
}

Chain ChainBuilder::build() const {
    Chain made = makeChain(options_);
    for (const auto& [index, work] : work_) {
        if (index >= made.tills.size())
            throw std::invalid_argument("the chain has no till " + std::to_string(index + 1));
        Till& till = made.tills[index];
        Clerk clerk(made, till);
        work(clerk, made, lastSales(till).id);
    }
    return made;
}

}  // namespace sandbox::chain
