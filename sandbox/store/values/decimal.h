// Exact arithmetic on decimals of up to 38 digits: scaling, the four operations with 256-bit intermediates, text. Used
// by conversions, operators and aggregates. Overflow is told by an empty result; who knows the types raises the error.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "sandbox/store/values/value.h"

namespace sandbox {

__extension__ using Int128 = __int128;
__extension__ using UInt128 = unsigned __int128;

inline constexpr int kMaxPrecision = 38;

[[nodiscard]] Int128 powerOfTen(int exponent);  // 0 to 38
[[nodiscard]] bool fits(Int128 unscaled, int precision);
[[nodiscard]] int digitCount(Int128 unscaled);  // at least 1

enum class Rounding { HalfAwayFromZero, Truncate };

// a * 10^shift (shift may be negative); none when it needs more than 38 digits.
[[nodiscard]] std::optional<Int128> shiftDigits(Int128 a, int shift, Rounding rounding = Rounding::HalfAwayFromZero);
// a * b / 10^drop, rounded.
[[nodiscard]] std::optional<Int128> multiply(Int128 a, Int128 b, int drop = 0);
// a * 10^shift / b, truncated as SQL Server does. b is not zero.
[[nodiscard]] std::optional<Int128> divide(Int128 a, Int128 b, int shift);

[[nodiscard]] std::optional<Int128> rescale(const Decimal& value, int scale, int precision = kMaxPrecision,
                                            Rounding rounding = Rounding::HalfAwayFromZero);
[[nodiscard]] int compareDecimals(const Decimal& a, const Decimal& b);

[[nodiscard]] std::string toText(Int128 unscaled, int scale);  // "-0.50"
// "[+-]digits[.digits]" as it stands, with as many decimals as it has; none when it is no such text or has too many
// digits.
[[nodiscard]] std::optional<Decimal> decimalFromText(std::string_view text);
[[nodiscard]] double toDouble(Int128 unscaled, int scale);
[[nodiscard]] std::optional<Int128> fromDouble(double value, int scale);  // rounded to the scale

}  // namespace sandbox
