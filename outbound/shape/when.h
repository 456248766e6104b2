// When a step, or a piece of a statement, is for the till that is being sent to.
#pragma once

#include "outbound/shape/send_facts.h"

namespace torvik {

struct When {
    enum class Kind {
        Always,
        SchemaFrom,            // the till's schema version is `schema` or above
        SchemaBelow,           // it is below `schema`
        ChangesOnly,           // ItemUpdateSelection is iusChanged
        NotChangesOnly,        // it is anything else
        SendPriceAndCustomer,  // the property of that name
        DeleteItem,            // likewise
        SendCurrency,          // likewise
        SendVouchers,          // likewise
        TillHasTable,          // `table` was asked for, and the till has it
    };
    Kind kind = Kind::Always;
    int schema = 0;
    const char* table = "";

    [[nodiscard]] bool holds(const SendFacts& facts) const;
};

inline constexpr When kAlways{};
inline constexpr When kChangesOnly{When::Kind::ChangesOnly};
inline constexpr When kNotChangesOnly{When::Kind::NotChangesOnly};
inline constexpr When kSendPriceAndCustomer{When::Kind::SendPriceAndCustomer};
inline constexpr When kDeleteItem{When::Kind::DeleteItem};
inline constexpr When kSendCurrency{When::Kind::SendCurrency};
inline constexpr When kSendVouchers{When::Kind::SendVouchers};
constexpr When schemaFrom(int version) {
    return {When::Kind::SchemaFrom, version};
}
constexpr When schemaBelow(int version) {
    return {When::Kind::SchemaBelow, version};
}
constexpr When tillHas(const char* table) {
    return {When::Kind::TillHasTable, 0, table};
}

}  // namespace torvik
