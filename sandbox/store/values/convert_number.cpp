// Conversions to the number types.
#include "sandbox/store/values/convert_number.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert_errors.h"
#include "sandbox/store/values/datetime.h"
#include "sandbox/store/values/text.h"

namespace sandbox::conversion {
namespace {

constexpr int kMoneyScale = 4;

std::int64_t checkedInteger(Int128 n, const Type& from, const Type& to) {
    if (to.id == TypeId::Bit) return n != 0 ? 1 : 0;
    const auto [low, high] = integerRange(to.id);
    if (n >= low && n <= high) return static_cast<std::int64_t>(n);
    if (isInteger(from.id) && (to.id == TypeId::TinyInt || to.id == TypeId::SmallInt)) {
        throw errors::valueOverflow(to, toText(n, 0));
    }
    throw errors::expressionOverflow(to);
}

std::int64_t integerOfText(const std::string& text, const Type& from, const Type& to) {
    const std::string_view trimmed = trimBlanks(text);
    if (to.id == TypeId::Bit) {
        if (sameName(trimmed, "true")) return 1;
        if (sameName(trimmed, "false")) return 0;
    }
    if (trimmed.empty()) return 0;
    const auto fail = [&] {
        return to.id == TypeId::BigInt ? errors::errorConverting(from, to) : errors::conversionFailed(from, text, to);
    };
    std::string_view digits = trimmed;
    const bool negative = digits[0] == '-';
    if (digits[0] == '-' || digits[0] == '+') digits = trimBlanks(digits.substr(1));
    if (digits.empty()) throw fail();
    Int128 n = 0;
    for (const char c : digits) {
        if (c < '0' || c > '9') throw fail();
        if (n < powerOfTen(30)) n = n * 10 + (c - '0');
    }
    if (negative) n = -n;
    if (to.id == TypeId::Bit) return n != 0 ? 1 : 0;
    const auto [low, high] = integerRange(to.id);
    if (n < low || n > high) {
        if (to.id == TypeId::BigInt) throw errors::expressionOverflow(to);
        throw errors::integerTextTooLarge(from, text, to);
    }
    return static_cast<std::int64_t>(n);
}

// "$-1,234.50", "kr 12": one currency sign, one minus on either side of it, commas anywhere before the point.
std::optional<Decimal> moneyOfText(std::string_view text) {
    text = trimBlanks(text);
    if (text.empty()) return Decimal{};
    std::string plain;
    bool sign = false, currency = false;
    while (!text.empty() && !(text[0] >= '0' && text[0] <= '9') && text[0] != '.') {
        if ((text[0] == '-' || text[0] == '+') && !sign) {
            sign = true;
            plain.insert(plain.begin(), text[0]);
            text.remove_prefix(1);
        } else if (text[0] == ' ') {
            text.remove_prefix(1);
        } else if (!currency) {
            constexpr std::string_view kSigns[] = {"$", "£", "€", "¥", "¤"};
            const auto found =
                std::find_if(std::begin(kSigns), std::end(kSigns), [&](auto s) { return text.starts_with(s); });
            if (found == std::end(kSigns)) return std::nullopt;
            currency = true;
            text.remove_prefix(found->size());
        } else {
            return std::nullopt;
        }
    }
    bool point = false;
    for (const char c : text) {
        if (c == ',' && !point) continue;
        point = point || c == '.';
        plain += c;
    }
    if (plain.empty() || plain == "-" || plain == "+") return Decimal{};
    return decimalFromText(plain);
}

std::int64_t checkedMoney(std::optional<Int128> units, const Type& from, const Type& to) {
    const auto [low, high] = integerRange(to.id == TypeId::SmallMoney ? TypeId::Int : TypeId::BigInt);
    if (!units || *units < low || *units > high) {
        throw errors::overflowConverting(isCharacter(from.id) ? typeName(from) : "expression", to, 2);
    }
    return static_cast<std::int64_t>(*units);
}

double floatOfText(const std::string& text, const Type& from, const Type& to) {
    const std::string trimmed(trimBlanks(text));
    if (trimmed.empty()) return 0;
    // strtod also knows hex, inf and nan, which T-SQL does not.
    const bool plain = std::all_of(trimmed.begin(), trimmed.end(), [](char c) {
        return (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.' || c == 'e' || c == 'E' || c == 'd' ||
               c == 'D';
    });
    std::string c = trimmed;
    std::replace_if(
        c.begin(), c.end(), [](char x) { return x == 'd' || x == 'D'; }, 'e');
    char* end = nullptr;
    const double value = std::strtod(c.c_str(), &end);
    if (!plain || end != c.c_str() + c.size()) throw errors::errorConverting(from, to);
    if (!std::isfinite(value)) throw errors::expressionOverflow(to);
    return value;
}

double checkedFloat(double value, const Type& to) {
    if (to.id == TypeId::Real) {
        if (std::fabs(value) > static_cast<double>(FLT_MAX)) throw errors::floatOverflow(to, value);
        value = static_cast<double>(static_cast<float>(value));
    }
    return value == 0 ? 0.0 : value;
}

// The internal form: precision, scale, 0, sign, then the digits little-endian in groups of four bytes.
std::optional<Decimal> decimalOfBytes(const Bytes& bytes) {
    if (bytes.size() < 8 || bytes.size() > 20 || bytes[1] > kMaxPrecision) return std::nullopt;
    UInt128 magnitude = 0;
    for (std::size_t i = bytes.size(); i > 4; --i) magnitude = (magnitude << 8) | bytes[i - 1];
    if (magnitude >= static_cast<UInt128>(powerOfTen(kMaxPrecision))) return std::nullopt;
    const auto unscaled = static_cast<Int128>(magnitude);
    return Decimal{bytes[3] ? unscaled : -unscaled, bytes[1]};
}

}  // namespace

Range integerRange(TypeId id) {
    switch (id) {
        case TypeId::Bit: return {0, 1};
        case TypeId::TinyInt: return {0, 255};
        case TypeId::SmallInt: return {-32768, 32767};
        case TypeId::Int: return {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
        default: return {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()};
    }
}

std::size_t integerWidth(TypeId id) {
    switch (id) {
        case TypeId::Bit:
        case TypeId::TinyInt: return 1;
        case TypeId::SmallInt: return 2;
        case TypeId::Int: return 4;
        default: return 8;
    }
}

std::int64_t integerOfBytes(const Bytes& bytes, std::size_t width) {
    std::uint64_t n = 0;
    const std::size_t used = std::min(width, bytes.size());
    for (std::size_t i = bytes.size() - used; i < bytes.size(); ++i) n = (n << 8) | bytes[i];
    if (width == 2) return static_cast<std::int16_t>(n);
    if (width == 4) return static_cast<std::int32_t>(n);
    return static_cast<std::int64_t>(n);
}

std::int64_t toInteger(const Value& value, const Type& from, const Type& to) {
    if (const auto* text = std::get_if<std::string>(&value)) return integerOfText(*text, from, to);
    if (const auto* bytes = std::get_if<Bytes>(&value)) {
        if (to.id == TypeId::Bit)
            return std::any_of(bytes->begin(), bytes->end(), [](auto b) { return b != 0; }) ? 1 : 0;
        return integerOfBytes(*bytes, integerWidth(to.id));
    }
    if (const auto* d = std::get_if<Decimal>(&value)) {
        if (to.id == TypeId::Bit) return d->unscaled != 0 ? 1 : 0;
        return checkedInteger(*shiftDigits(d->unscaled, -d->scale, Rounding::Truncate), from, to);
    }
    if (const auto* f = std::get_if<double>(&value)) {
        if (to.id == TypeId::Bit) return *f != 0 ? 1 : 0;
        const double whole = std::trunc(*f);
        const auto [low, high] = integerRange(to.id);
        // 2^63 is the first double beyond bigint; static_cast<double>(high) would round up to it.
        if (!(whole >= static_cast<double>(low) &&
              (to.id == TypeId::BigInt ? whole < 0x1p63 : whole <= static_cast<double>(high)))) {
            if (to.id == TypeId::BigInt) throw errors::expressionOverflow(to);
            throw errors::floatOverflow(to, *f);
        }
        return static_cast<std::int64_t>(whole);
    }
    const std::int64_t n = std::get<std::int64_t>(value);
    if (from.id == TypeId::Money || from.id == TypeId::SmallMoney) {
        if (to.id == TypeId::Bit) return n != 0 ? 1 : 0;
        return checkedInteger(*shiftDigits(n, -kMoneyScale), from, to);
    }
    if (isTemporal(from.id)) {  // a day that is half over counts
        const std::int64_t half = n + kTicksPerDay / 2;
        const std::int64_t days = half / kTicksPerDay - (half % kTicksPerDay < 0 ? 1 : 0);
        return checkedInteger(days, from, to);
    }
    return checkedInteger(n, from, to);
}

std::int64_t toMoney(const Value& value, const Type& from, const Type& to) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        const auto d = moneyOfText(*text);
        if (!d) throw errors::moneySyntax();
        return checkedMoney(shiftDigits(d->unscaled, kMoneyScale - d->scale), from, to);
    }
    if (const auto* bytes = std::get_if<Bytes>(&value)) return integerOfBytes(*bytes, to.id == TypeId::Money ? 8 : 4);
    if (const auto* d = std::get_if<Decimal>(&value)) {
        return checkedMoney(shiftDigits(d->unscaled, kMoneyScale - d->scale), from, to);
    }
    if (const auto* f = std::get_if<double>(&value)) return checkedMoney(fromDouble(*f, kMoneyScale), from, to);
    const std::int64_t n = std::get<std::int64_t>(value);
    if (from.id == TypeId::Money || from.id == TypeId::SmallMoney) return checkedMoney(n, from, to);
    if (isTemporal(from.id)) return checkedMoney(fromDouble(daysOf(n), kMoneyScale), from, to);
    return checkedMoney(Int128{n} * 10'000, from, to);
}

Decimal toDecimal(const Value& value, const Type& from, const Type& to) {
    std::optional<Int128> unscaled;
    if (const auto* text = std::get_if<std::string>(&value)) {
        const auto d = decimalFromText(trimBlanks(*text));
        if (!d) throw errors::errorConverting(from, to);
        unscaled = rescale(*d, to.scale, to.precision);
    } else if (const auto* bytes = std::get_if<Bytes>(&value)) {
        const auto d = decimalOfBytes(*bytes);
        if (!d) throw errors::errorConverting(from, to);
        unscaled = rescale(*d, to.scale, to.precision);
    } else if (const auto* d = std::get_if<Decimal>(&value)) {
        unscaled = rescale(*d, to.scale, to.precision);
    } else if (const auto* f = std::get_if<double>(&value)) {
        unscaled = fromDouble(*f, to.scale);
    } else {
        const std::int64_t n = std::get<std::int64_t>(value);
        if (isTemporal(from.id)) {
            unscaled = fromDouble(daysOf(n), to.scale);
        } else {
            const bool money = from.id == TypeId::Money || from.id == TypeId::SmallMoney;
            unscaled = shiftDigits(n, to.scale - (money ? kMoneyScale : 0));
        }
    }
    if (!unscaled || !fits(*unscaled, to.precision)) {
        throw errors::overflowConverting(errors::valueTypeName(from), to,
                                         isNumeric(from.id) && !isExactNumeric(from.id) ? 6 : 8);
    }
    return Decimal{*unscaled, to.scale};
}

double toFloat(const Value& value, const Type& from, const Type& to) {
    if (const auto* text = std::get_if<std::string>(&value)) return checkedFloat(floatOfText(*text, from, to), to);
    if (const auto* d = std::get_if<Decimal>(&value)) return checkedFloat(toDouble(d->unscaled, d->scale), to);
    if (const auto* f = std::get_if<double>(&value)) return checkedFloat(*f, to);
    if (const auto* n = std::get_if<std::int64_t>(&value)) {
        if (isTemporal(from.id)) return checkedFloat(daysOf(*n), to);
        if (from.id == TypeId::Money || from.id == TypeId::SmallMoney)
            return checkedFloat(toDouble(*n, kMoneyScale), to);
        return checkedFloat(static_cast<double>(*n), to);
    }
    throw errors::explicitNotAllowed(from, to);
}

double daysOf(std::int64_t ticks) {
    return static_cast<double>(ticks) / static_cast<double>(kTicksPerDay);
}

std::int64_t ticksOf(const Value& days, const Type& from, const Type& to) {
    double ticks = 0;
    if (const auto* n = std::get_if<std::int64_t>(&days); n && isInteger(from.id)) {
        ticks = static_cast<double>(*n) * static_cast<double>(kTicksPerDay);
    } else {
        ticks = std::round(toFloat(days, from, Type{.id = TypeId::Float}) * static_cast<double>(kTicksPerDay));
    }
    constexpr double kLow = static_cast<double>((kDay1753 - kDay1900) * kTicksPerDay);
    constexpr double kHigh = static_cast<double>((kDay9999 + 1 - kDay1900) * kTicksPerDay);
    if (!(ticks >= kLow && ticks < kHigh)) throw errors::expressionOverflow(to);
    return static_cast<std::int64_t>(ticks);
}

}  // namespace sandbox::conversion
