// The conversions whose target is a number, each for every source type. Used by convert() alone.
#pragma once

#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/decimal.h"

namespace sandbox::conversion {

[[nodiscard]] std::int64_t toInteger(const Value& value, const Type& from, const Type& to);
[[nodiscard]] std::int64_t toMoney(const Value& value, const Type& from, const Type& to);
[[nodiscard]] Decimal toDecimal(const Value& value, const Type& from, const Type& to);
[[nodiscard]] double toFloat(const Value& value, const Type& from, const Type& to);

// The number of days since 1900 that a datetime stands for, and back (8115 out of range).
[[nodiscard]] double daysOf(std::int64_t ticks);
[[nodiscard]] std::int64_t ticksOf(const Value& days, const Type& from, const Type& to);

// The last bytes of a binary as an integer of `width` bytes.
[[nodiscard]] std::int64_t integerOfBytes(const Bytes& bytes, std::size_t width);

struct Range {
    std::int64_t low;
    std::int64_t high;
};
[[nodiscard]] Range integerRange(TypeId id);
[[nodiscard]] std::size_t integerWidth(TypeId id);

}  // namespace sandbox::conversion
