// A made-up retail chain, the same for the same options: what it consists of and what its tills have sold. The one
// source of what is inserted into the tills and of what the back office must hold after a fetch.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/chain/table_data.h"

namespace sandbox::chain {

struct ChainOptions {
    int departments = 3;
    int tills = 5;  // in all, dealt out over the departments
    int days = 2;   // of sales, each closed by one settlement
    unsigned seed = 7;
    int items = 40;
    int ordersADay = 12;                  // of one till, about
    std::vector<int> versions{149, 213};  // of the tills, dealt out in turn
};

// "departments=3,tills=5,days=2,seed=7,items=40,orders=12,versions=149+213"; what is not named keeps its default.
// Raises std::invalid_argument that names the word it does not know.
[[nodiscard]] ChainOptions parseChainOptions(std::string_view text);

struct Item {
    std::string id;
    std::string name;
    double cost = 0;
    double price = 0;
};

struct Department {
    int id = 0;          // Ku_Id
    std::string number;  // Ik_Avdelingsnummer
    std::string name;
};

struct Employee {
    std::string id;
    int department = 0;
    std::string name;
};

struct CashLine {
    int id = 0;
    int unit = 0;
    double change = 0;
    double counted = 0;
    double actual = 0;
};

struct SettledPayment {
    int form = 0;
    double amount = 0;
    double counted = 0;
};

struct Attachment {
    int id = 0;
    std::string fileName;
    Blob content;
};

struct Signature {
    int id = 0;
    Blob picture;
};

struct Settlement {
    int id = 0;
    std::string employee;
    Moment time;
    std::string type;  // NORMAL, VARETELLING
    Moment finished;
    int visitors = 0;
    std::optional<std::string> nightSafe;
    std::optional<std::string> comment;
    std::vector<CashLine> cash;
    std::vector<SettledPayment> payments;
    std::vector<Attachment> attachments;
    std::optional<Signature> signature;
};

struct BankInfo {
    int id = 0;
    int issuer = 0;
    std::string card;
    std::string stamp;  // 14 characters
    std::string transaction;
    std::string authorisation;
};

struct Payment {
    int id = 0;
    int form = 0;
    double amount = 0;
    std::optional<double> rate;
    std::optional<BankInfo> bank;
    std::optional<Signature> signature;
    std::optional<std::string> telephoneReference;
};

struct OrderLine {
    int id = 0;
    std::string item;
    double quantity = 0;
    double discount = 0;
    double price = 0;
    double cost = 0;
    bool extraSale = false;
    std::optional<int> status;
    std::optional<bool> display;
    std::optional<int> reason;
    std::optional<std::string> text;
    std::optional<int> voucher;
};

struct Order {
    int id = 0;
    int customer = 0;
    std::optional<int> settlement;  // none: sold after the last settlement
    std::string employee;
    Moment time;
    Moment finished;
    std::optional<std::string> requisition;
    std::optional<std::string> postcode;
    std::optional<std::string> telephone;
    std::optional<std::string> statisticsEmployee;
    std::optional<bool> stockCount;  // Or_Varetelling
    std::optional<std::string> barcode;
    std::optional<int> reason;
    std::optional<int> returned;  // the order that this one takes back
    std::optional<Signature> signature;
    std::vector<OrderLine> lines;
    std::vector<Payment> payments;
};

struct Voucher {
    int id = 0;
    int product = 0;
    Moment activated;
    int issued = 0;
    int used = 0;
};

struct Till {
    int department = 0;  // index into Chain::departments
    std::string number;
    int version = 0;
    std::string database;
    std::vector<Settlement> settlements;
    std::vector<Order> orders;
    std::vector<Voucher> vouchers;
};

struct Chain {
    ChainOptions options;
    std::vector<Department> departments;
    std::vector<Employee> employees;
    std::vector<Item> items;
    std::vector<Till> tills;

    [[nodiscard]] const Department& departmentOf(const Till& till) const {
        return departments[static_cast<std::size_t>(till.department)];
    }
};

[[nodiscard]] Chain makeChain(const ChainOptions& options);

// One more day of sales on a till, closed by its settlement: a chain that has gone on after a fetch.
void addDay(Chain& chain, Till& till);

}  // namespace sandbox::chain
