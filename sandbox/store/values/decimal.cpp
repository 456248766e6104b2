// 128-bit decimals with 256-bit intermediates.
#include "sandbox/store/values/decimal.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace sandbox {
namespace {

constexpr std::array<Int128, kMaxPrecision + 1> makePowers() {
    std::array<Int128, kMaxPrecision + 1> powers{};
    powers[0] = 1;
    for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
    return powers;
}
constexpr auto kPowers = makePowers();

// high * 2^128 + low.
struct Wide {
    UInt128 high = 0;
    UInt128 low = 0;
};

Wide multiplyWide(UInt128 a, UInt128 b) {
    const UInt128 mask = ~std::uint64_t{0};
    const UInt128 a0 = a & mask, a1 = a >> 64, b0 = b & mask, b1 = b >> 64;
    const UInt128 low = a0 * b0;
    const UInt128 middle1 = a1 * b0 + (low >> 64);
    const UInt128 middle2 = a0 * b1 + (middle1 & mask);
    return {a1 * b1 + (middle1 >> 64) + (middle2 >> 64), (middle2 << 64) | (low & mask)};
}

struct Quotient {
    UInt128 value = 0;
    UInt128 remainder = 0;
    bool overflow = false;
};

// Both operands stay below 2^127, so the running remainder never loses a bit.
Quotient divideWide(const Wide& a, UInt128 b) {
    if (a.high == 0) return {a.low / b, a.low % b, false};
    if (a.high >= b) return {0, 0, true};
    UInt128 remainder = a.high, value = 0;
    for (int bit = 127; bit >= 0; --bit) {
        remainder = (remainder << 1) | ((a.low >> bit) & 1);
        value <<= 1;
        if (remainder >= b) {
            remainder -= b;
            value |= 1;
        }
    }
    return {value, remainder, false};
}

UInt128 magnitude(Int128 a) {
    return a < 0 ? -static_cast<UInt128>(a) : static_cast<UInt128>(a);
}

std::optional<Int128> signedResult(UInt128 value, bool negative) {
    if (value >= static_cast<UInt128>(kPowers[kMaxPrecision])) return std::nullopt;
    return negative ? -static_cast<Int128>(value) : static_cast<Int128>(value);
}

}  // namespace

Int128 powerOfTen(int exponent) {
    return kPowers[static_cast<std::size_t>(exponent)];
}
bool fits(Int128 unscaled, int precision) {
    return magnitude(unscaled) < static_cast<UInt128>(powerOfTen(precision));
}

int digitCount(Int128 unscaled) {
    int digits = 1;
    while (digits < kMaxPrecision && !fits(unscaled, digits)) ++digits;
    return digits;
}

std::optional<Int128> shiftDigits(Int128 a, int shift, Rounding rounding) {
    if (a == 0) return Int128{0};
    if (shift >= 0) return shift > kMaxPrecision ? std::nullopt : multiply(a, powerOfTen(shift));
    if (-shift > kMaxPrecision) return Int128{0};
    const Int128 unit = powerOfTen(-shift);
    Int128 result = a / unit;
    const Int128 rest = a % unit;
    if (rounding == Rounding::HalfAwayFromZero && magnitude(rest) >= magnitude(unit) - magnitude(rest)) {
        result += a < 0 ? -1 : 1;
    }
    return result;
}

std::optional<Int128> multiply(Int128 a, Int128 b, int drop) {
    const bool negative = (a < 0) != (b < 0);
    const UInt128 unit = static_cast<UInt128>(powerOfTen(drop));
    Quotient q = divideWide(multiplyWide(magnitude(a), magnitude(b)), unit);
    if (q.overflow) return std::nullopt;
    if (drop > 0 && q.remainder >= unit - q.remainder) ++q.value;
    return signedResult(q.value, negative);
}

std::optional<Int128> divide(Int128 a, Int128 b, int shift) {
    const bool negative = (a < 0) != (b < 0);
    UInt128 dividend = magnitude(a), divisor = magnitude(b);
    if (shift < 0) {
        const Wide wide = multiplyWide(divisor, static_cast<UInt128>(powerOfTen(std::min(-shift, kMaxPrecision))));
        if (wide.high != 0) return Int128{0};
        return signedResult(dividend / wide.low, negative);
    }
    // Scales of a quotient reach 38 + 38; what is beyond 38 digits of shift is done on the remainder.
    const int first = std::min(shift, kMaxPrecision);
    Quotient q = divideWide(multiplyWide(dividend, static_cast<UInt128>(powerOfTen(first))), divisor);
    if (q.overflow) return std::nullopt;
    for (int left = shift - first; left > 0; --left) {
        const Quotient digit = divideWide(multiplyWide(q.remainder, 10), divisor);
        if (q.value >= static_cast<UInt128>(kPowers[kMaxPrecision - 1])) return std::nullopt;
        q.value = q.value * 10 + digit.value;
        q.remainder = digit.remainder;
    }
    return signedResult(q.value, negative);
}

std::optional<Int128> rescale(const Decimal& value, int scale, int precision, Rounding rounding) {
    const auto shifted = shiftDigits(value.unscaled, scale - value.scale, rounding);
    if (!shifted || !fits(*shifted, precision)) return std::nullopt;
    return shifted;
}

int compareDecimals(const Decimal& a, const Decimal& b) {
    const int scale = std::max(a.scale, b.scale);
    const auto x = shiftDigits(a.unscaled, scale - a.scale);
    const auto y = shiftDigits(b.unscaled, scale - b.scale);
    // What does not fit at the common scale is further from zero than anything that does.
    if (!x) return a.unscaled < 0 ? -1 : 1;
    if (!y) return b.unscaled < 0 ? 1 : -1;
    return *x < *y ? -1 : *x > *y ? 1 : 0;
}

std::string toText(Int128 unscaled, int scale) {
    std::string digits;
    for (UInt128 left = magnitude(unscaled); left != 0; left /= 10) {
        digits += static_cast<char>('0' + static_cast<int>(left % 10));
    }
    while (static_cast<int>(digits.size()) <= scale) digits += '0';
    if (unscaled < 0) digits += '-';
    std::reverse(digits.begin(), digits.end());
    if (scale > 0) digits.insert(digits.size() - static_cast<std::size_t>(scale), 1, '.');
    return digits;
}

std::optional<Decimal> decimalFromText(std::string_view text) {
    std::size_t at = 0;
    const bool negative = !text.empty() && text[0] == '-';
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) ++at;
    Decimal result;
    bool point = false, any = false;
    for (; at < text.size(); ++at) {
        if (text[at] == '.' && !point) {
            point = true;
            continue;
        }
        if (text[at] < '0' || text[at] > '9') return std::nullopt;
        any = true;
        // Decimals beyond 38 digits are of no consequence to any type; digits before the point are.
        if (result.unscaled >= kPowers[kMaxPrecision - 1]) {
            if (!point) return std::nullopt;
            continue;
        }
        result.unscaled = result.unscaled * 10 + (text[at] - '0');
        if (point) ++result.scale;
    }
    if (!any) return std::nullopt;
    if (negative) result.unscaled = -result.unscaled;
    return result;
}

double toDouble(Int128 unscaled, int scale) {
    if (scale <= 22 && magnitude(unscaled) < (UInt128{1} << 53)) {
        return static_cast<double>(unscaled) / static_cast<double>(powerOfTen(scale));
    }
    return std::strtod(toText(unscaled, scale).c_str(), nullptr);
}

std::optional<Int128> fromDouble(double value, int scale) {
    if (!std::isfinite(value) || std::fabs(value) >= 1e38) return std::nullopt;
    // A float holds 17 significant digits; the rest of its binary expansion is noise to decimal.
    char text[400];
    const int whole = value == 0 ? 1 : std::max(1, static_cast<int>(std::floor(std::log10(std::fabs(value)))) + 1);
    const int decimals = std::clamp(17 - whole, 0, scale + 2);
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    const auto exact = decimalFromText(text);
    return exact ? shiftDigits(exact->unscaled, scale - exact->scale) : std::nullopt;
}

}  // namespace sandbox
