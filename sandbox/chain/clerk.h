// All that goes on at a till beside plain sales: credit sales, gift cards and credit notes, pay-outs, time entries,
// goods that come in and are wanted, log lines, extra staff, zones of a stock count. Used where every kind is asked
// for, and by whoever builds a chain for one test.
#pragma once

#include <optional>
#include <string>

#include "sandbox/chain/chain_model.h"
#include "sandbox/chain/chance.h"

namespace sandbox::chain {

// Adds to a till whose settlements are made. What is sold goes into the settlement named, an hour and a half before it
// was closed, and what the settlement counts is put right. Same till, same additions.
class Clerk {
public:
    Clerk(Chain& chain, Till& till);

    // One of each kind; a stock count gets zones.
    void work(int settlement);
    void workEverySettlement();

    // A sale to a named customer, paid by the form of payment "credit", or not paid at all.
    Order& creditSale(int settlement, const Customer& customer);
    Order& unpaidSale(int settlement, const Customer& customer);

    Slip& sellGiftCard(int settlement, double amount);
    Slip& giveCreditNote(int settlement);  // for goods taken back
    // Begun and given up before anything was paid.
    Order& brokenOff(int settlement);
    // Gift cards and credit notes for more than one batch of a fetch, which takes them by sixteen.
    void manySlips(int settlement);
    void redeemGiftCard(int settlement, Slip& card);
    void redeemCreditNote(int settlement, Slip& note);

    // Goods taken back, their price sent to an account.
    Order& payOut(int settlement);

    // Ended if `minutes` is given.
    TimeEntry& clockIn(std::int64_t time, std::optional<int> minutes);
    Goods& receiveGoods(int settlement);
    Goods& orderGoods(int settlement);
    LogEntry& log(int settlement, const std::string& remark);
    ExtraEmployee& extraEmployee(int settlement);
    void zones(int settlement);

private:
    [[nodiscard]] Settlement& settlementOf(int id);
    [[nodiscard]] const Employee& employee() const;
    [[nodiscard]] std::string slipId(int number) const;
    Order& newOrder(int settlement);
    void oddLines(Order& order);
    OrderLine& newLine(Order& order, const Item& item, double quantity, double price);
    Payment& pay(Order& order, int form, double amount);
    Order& returnOfGoods(int settlement);
    void redeem(int settlement, Slip& slip, int form);
    Goods newGoods(int id, const Settlement& settlement, const std::string& reference, int& line);
    void recount(Settlement& settlement);

    Chain& chain_;
    Till& till_;
    Chance chance_;
    int order_ = 0;
    int line_ = 0;
    int payment_ = 0;
    int receipt_ = 0;
    int receiptLine_ = 0;
    int goodsOrder_ = 0;
    int goodsOrderLine_ = 0;
    int logEntry_ = 0;
    int extra_ = 0;
};

}  // namespace sandbox::chain
