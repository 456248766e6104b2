// One SQL value outside of SQLite: literals, variables, parameters, cells on their way to and from the wire.
// The Type that says how to read it travels beside it (Typed), or is known from the column.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "sandbox/store/values/type.h"

namespace sandbox {

struct Null {
    friend bool operator==(Null, Null) { return true; }
};

// Up to 38 digits: value = unscaled / 10^scale of the type.
struct Decimal {
    __extension__ __int128 unscaled = 0;
    std::uint8_t scale = 0;
    friend bool operator==(const Decimal&, const Decimal&) = default;
};

using Bytes = std::vector<std::uint8_t>;
using Guid =
    std::array<std::uint8_t, 16>;  // in wire order ([MS-TDS] 2.2.5.5.1.1: the first three groups little-endian)

// What stands for which type:
//   bit, tinyint .. bigint          int64
//   smallmoney, money               int64, in units of 1/10000
//   decimal                         Decimal
//   real, float                     double
//   char .. ntext                   std::string, UTF-8, blanks as they stand
//   binary, varbinary, image        Bytes
//   uniqueidentifier                Guid
//   datetime, smalldatetime         int64, ticks of 1/300 s since 1900-01-01 00:00 (smalldatetime: whole minutes of
//   them) date                            int64, days since 0001-01-01 time                            int64, units of
//   100 ns since midnight datetime2                       int64, units of 100 ns since 0001-01-01 00:00
using Value = std::variant<Null, std::int64_t, double, Decimal, std::string, Bytes, Guid>;

[[nodiscard]] inline bool isNull(const Value& v) {
    return std::holds_alternative<Null>(v);
}

struct Typed {
    Type type;
    Value value;
};

}  // namespace sandbox
