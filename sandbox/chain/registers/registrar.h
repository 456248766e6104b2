// What goes on at the back office between two sends: new, changed and deleted items, prices, aliases, parts, offers,
// customers, staff and their cards, discounts, currencies, gift cards and credit notes of other tills. Works on the
// registers in memory; KeptTables::changesTo makes the database follow.
#pragma once

#include <string>

#include "sandbox/chain/chain_model.h"
#include "sandbox/chain/registers/kept_table.h"

namespace sandbox::chain {

class Registrar {
public:
    // `now` is the moment that changes bear. Nothing is marked to be sent to the tills until it is changed.
    Registrar(const Chain& chain, KeptTables& office, Moment now);

    // One of each kind of change, others on each day.
    void work(int day);

    // Marks of earlier changes of items are taken off.
    void clearMarks();

    Row& newItem(const std::string& id);
    void changeItem(const std::string& id);
    void reprice(const std::string& id, int category, double price);
    void deleteItem(const std::string& id);  // with all that hangs on it at the back office

    Row& newCustomer(int id);
    Row& changedCustomer(int id);  // to be changed further
    Row& clerk(const std::string& id);
    // Each gets the other's card.
    void swapCards(const std::string& one, const std::string& other);

    // A gift card or credit note that the till named has sold; and one that was redeemed there.
    void issueGiftCard(const std::string& id, const Till& at, double amount);
    void redeemGiftCard(const std::string& id, const Till& soldAt, const Till& redeemedAt);
    void issueCreditNote(const std::string& id, const Till& at, double amount);
    void redeemCreditNote(const std::string& id, const Till& givenAt, const Till& redeemedAt);

private:
    void workOnItems(int day);
    void workOnOffers(int day);
    void workOnCustomers(int day);
    void workOnStaff(int day);
    void workOnDiscounts(int day);
    void workOnSlips(int day);
    void workOnSmallRegisters(int day);
    [[nodiscard]] const std::string& departmentOf(const Till& till) const { return chain_.departmentOf(till).number; }
    [[nodiscard]] const std::string& item(int number) const;

    const Chain& chain_;
    KeptTables& office_;
    Moment now_;
};

}  // namespace sandbox::chain
