// The registers that tills and back office have in common, as tables of data: what money, reasons and payments there
// are.
#pragma once

#include <optional>

#include "sandbox/chain/chain_model.h"

namespace sandbox::chain {

struct NamedNumber {
    int id;
    const char* name;
};

struct Reason {
    int id;
    int type;
    const char* name;
    bool printed;
};

struct MoneyUnit {
    int id;
    const char* name;
    double value;
    bool coin;
};

struct PaymentForm {
    int id;
    std::optional<int> issuer;
    const char* name;
    bool drawer;
    std::optional<double> highest;  // what the back office allows, from its next send on
};

struct PriceCategory {
    int id;
    const char* name;
    bool withVat;
    double factor;  // of an item's own price
};

inline constexpr NamedNumber kReasonTypes[] = {{1, "Retur"}};
inline constexpr Reason kReasons[] = {
    {1, 1, "Feil størrelse", true}, {2, 1, "Angret kjøp", false}, {3, 1, "Skadet vare", false}};
inline constexpr MoneyUnit kMoneyUnits[] = {
    {1, "10 kroner", 10, true}, {2, "100 kroner", 100, false}, {3, "500 kroner", 500, false}};
inline constexpr NamedNumber kIssuers[] = {{1, "Bankkort"}, {2, "Kredittkort"}};
inline constexpr PaymentForm kPaymentForms[] = {
    {kCash, {}, "Kontant", true, 40000.0},           {kCard, 1, "Kort", false, {}},
    {kTelephone, {}, "Telefon", false, {}},          {kGiftCard, {}, "Gavekort", false, {}},
    {kCreditNote, {}, "Tilgodelapp", false, {}},     {kCredit, {}, "Kreditt", false, {}},
    {kPayOut, {}, "Utbetaling til konto", false, {}}};
inline constexpr NamedNumber kLogTypes[] = {{1, "Pålogging"}};
inline constexpr PriceCategory kPriceCategories[] = {{1, "Ordinær", true, 1.0}, {2, "Storkunde", false, 0.7}};
inline constexpr NamedNumber kCustomerGroups[] = {{1, "Bedrift"}, {2, "Idrettslag"}, {3, "Franchise"}};
inline constexpr NamedNumber kTimeProfiles[] = {{1, "Fast ansatt"}, {2, "Ekstrahjelp"}};

}  // namespace sandbox::chain
