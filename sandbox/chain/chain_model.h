// A made-up retail chain, the same for the same options: what it consists of and what its tills have sold. The one
// source of what is inserted into the tills and of what the back office must hold after a fetch.
#pragma once

#include <algorithm>
#include <cstddef>
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
    std::optional<int> tillItems;         // how many of them stand on a till before the first send; none: all
    int customers = 8;                    // with a name of their own
    int ordersADay = 12;                  // of one till, about
    std::vector<int> versions{149, 213};  // of the tills, dealt out in turn
    bool everyKind = false;               // each settlement also holds one of each kind that Clerk knows
};

// "departments=3,tills=5,days=2,seed=7,items=40,tillitems=40,customers=8,orders=12,versions=149+213,kinds=all"; what is
// not named keeps its default, but for kinds: all, unless it says "sales". Raises std::invalid_argument that names the
// word it does not know.
[[nodiscard]] ChainOptions parseChainOptions(std::string_view text);

struct ItemGroup {
    std::string id;  // 4 characters
    std::string name;
    std::optional<std::string> parent;
};

struct Supplier {
    int id = 0;
    std::string name;
};

struct Item {
    std::string id;
    std::string name;
    double cost = 0;
    double price = 0;
    std::string group;
    int supplier = 0;
    std::string product;
    std::string colour;
    bool changed = false;  // marked to be sent to the tills
};

// A buyer with a name, known to the back office and to every till.
struct Customer {
    int id = 0;
    std::string name;
    std::string address;
    std::string postcode;
    std::string town;
    int group = 1;
    int priceCategory = 1;
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

struct ExtraEmployee {
    int id = 0;
    std::string employee;
    std::string name;
    Moment time;
};

struct LogEntry {
    int id = 0;
    int type = 0;
    std::string employee;
    Moment time;
    std::optional<std::string> remark;
};

struct GoodsLine {
    int id = 0;
    std::string item;
    double quantity = 0;
    double price = 0;
};

// Goods that came in, or that the store wants.
struct Goods {
    int id = 0;
    std::string employee;
    Moment time;  // whole minutes
    std::optional<std::string> reference;
    std::vector<GoodsLine> lines;
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
    std::vector<ExtraEmployee> extraStaff;
    std::vector<LogEntry> log;
    std::vector<Goods> receipts;
    std::vector<Goods> goodsOrders;
};

struct BankInfo {
    int id = 0;
    int issuer = 0;
    std::string card;
    std::string stamp;  // 14 characters
    std::string transaction;
    std::string authorisation;
};

// Money sent to a customer's account instead of handed out.
struct PayOut {
    std::string name;
    std::string account;
    std::optional<std::string> telephone;
    std::optional<std::string> email;
};

struct Payment {
    int id = 0;
    int form = 0;
    double amount = 0;
    std::optional<double> rate;
    std::optional<BankInfo> bank;
    std::optional<Signature> signature;
    std::optional<std::string> telephoneReference;
    std::optional<PayOut> payOut;
};

struct OrderLine {
    int id = 0;
    std::string item;
    double quantity = 0;
    double discount = 0;
    double price = 0;
    double cost = 0;
    double vat = 25;  // per cent
    bool extraSale = false;
    std::optional<int> status;
    std::optional<bool> display;
    std::optional<int> reason;
    std::optional<std::string> text;
    std::optional<int> voucher;
    std::optional<std::string> zones;  // where a counted item was found
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
    bool brokenOff = false;  // begun and given up: no sale
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

// Where and with which payment a gift card or credit note was used.
struct Redemption {
    std::string department;
    std::string till;
    std::string employee;
    int payment = 0;
};

// A gift card or a credit note.
struct Slip {
    std::string id;
    std::string employee;
    int origin = 0;  // the line that sold the card; the order that gave the note
    double amount = 0;
    Moment validTo;
    std::optional<Redemption> redeemed;
};

struct TimeEntry {
    int id = 0;
    std::string employee;
    Moment in;  // whole minutes
    std::optional<Moment> out;
    std::optional<std::string> text;
    int status = 1;
    std::vector<int> codes;  // what the time is paid as
};

struct Till {
    int department = 0;  // index into Chain::departments
    std::string number;
    int version = 0;
    std::string database;
    std::vector<Settlement> settlements;
    std::vector<Order> orders;
    std::vector<Voucher> vouchers;
    std::vector<Slip> giftCards;
    std::vector<Slip> creditNotes;
    std::vector<TimeEntry> timeEntries;
};

struct Chain {
    ChainOptions options;
    std::vector<Department> departments;
    std::vector<Employee> employees;
    std::vector<ItemGroup> groups;
    std::vector<Supplier> suppliers;
    std::vector<Item> items;
    std::vector<Item> serviceItems;  // sold at tills and no goods: see kGiftCardItem and those after it
    std::vector<Customer> customers;
    std::vector<Till> tills;

    // The items that stand on a till before the first send, in front of the others.
    [[nodiscard]] std::size_t tillItems() const {
        return std::min(items.size(), static_cast<std::size_t>(options.tillItems.value_or(options.items)));
    }
    [[nodiscard]] const Department& departmentOf(const Till& till) const {
        return departments[static_cast<std::size_t>(till.department)];
    }
};

inline constexpr const char* kGiftCardItem = "900001";
inline constexpr const char* kAccountPaymentItem = "900002";  // a customer pays what was bought on credit
inline constexpr const char* kInvoiceFeeItem = "900003";
inline constexpr const char* kReplacementItem = "900004";  // stands for items that have been deleted

// Another number of the back office's first item; a till that sells under it has an item of that number.
inline constexpr const char* kAlias = "7030000000017";
inline constexpr const char* kAliasName = "Vare under strekkode";

// Forms of payment.
inline constexpr int kCash = 1;
inline constexpr int kCard = 2;
inline constexpr int kTelephone = 3;
inline constexpr int kGiftCard = 4;
inline constexpr int kCreditNote = 5;
inline constexpr int kCredit = 6;
inline constexpr int kPayOut = 7;

[[nodiscard]] Chain makeChain(const ChainOptions& options);

// One more day of sales on a till, closed by its settlement: a chain that has gone on after a fetch.
void addDay(Chain& chain, Till& till);

}  // namespace sandbox::chain
