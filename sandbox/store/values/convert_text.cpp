// Conversions to text, binary and uniqueidentifier.
#include "sandbox/store/values/convert_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>

#include "sandbox/store/values/convert_errors.h"
#include "sandbox/store/values/convert_number.h"
#include "sandbox/store/values/datetime.h"
#include "sandbox/store/values/decimal.h"
#include "sandbox/store/values/text.h"

namespace sandbox::conversion {
namespace {

constexpr std::string_view kHex = "0123456789ABCDEF";
// The order in which a uniqueidentifier's bytes are written: the first three groups are little-endian.
constexpr std::array<std::size_t, 16> kGuidTextOrder = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string hexText(const Bytes& bytes) {
    std::string out;
    out.reserve(bytes.size() * 2);
    for (const std::uint8_t b : bytes) {
        out += kHex[b >> 4];
        out += kHex[b & 15];
    }
    return out;
}

std::string textOfBytes(const Bytes& bytes, const Type& to, int style) {
    if (style == 1) return "0x" + hexText(bytes);
    if (style == 2) return hexText(bytes);
    if (!isUnicode(to.id)) return fromCodePage1252(bytes);
    std::u16string units;
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        units += static_cast<char16_t>(bytes[i] | (i + 1 < bytes.size() ? bytes[i + 1] << 8 : 0));
    }
    return toUtf8(units);
}

Bytes bytesOfText(const std::string& text, const Type& from, const Type& to, int style) {
    if (style == 1 || style == 2) {
        std::string_view hex = trimTrailingBlanks(text);
        const bool prefixed = hex.size() >= 2 && hex[0] == '0' && (hex[1] == 'x' || hex[1] == 'X');
        if (prefixed != (style == 1) || hex.size() % 2 != 0) throw errors::errorConverting(from, to);
        if (prefixed) hex.remove_prefix(2);
        Bytes bytes;
        for (std::size_t i = 0; i < hex.size(); i += 2) {
            const int high = hexDigit(hex[i]), low = hexDigit(hex[i + 1]);
            if (high < 0 || low < 0) throw errors::errorConverting(from, to);
            bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
        }
        return bytes;
    }
    if (!isUnicode(from.id)) return toCodePage1252(text);
    Bytes bytes;
    for (const char16_t unit : toUtf16(text)) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

void appendBigEndian(Bytes& bytes, std::uint64_t n, std::size_t width) {
    for (std::size_t i = width; i > 0; --i) bytes.push_back(static_cast<std::uint8_t>(n >> (8 * (i - 1))));
}

Bytes bytesOfNumber(const Value& value, const Type& from) {
    Bytes bytes;
    if (const auto* d = std::get_if<Decimal>(&value)) {
        UInt128 magnitude = static_cast<UInt128>(d->unscaled < 0 ? -d->unscaled : d->unscaled);
        bytes = {from.precision, from.scale, 0, static_cast<std::uint8_t>(d->unscaled < 0 ? 0 : 1)};
        const std::size_t digits = from.precision <= 9 ? 4 : from.precision <= 19 ? 8 : from.precision <= 28 ? 12 : 16;
        for (std::size_t i = 0; i < digits; ++i, magnitude >>= 8) bytes.push_back(static_cast<std::uint8_t>(magnitude));
        return bytes;
    }
    if (const auto* f = std::get_if<double>(&value)) {
        if (from.id == TypeId::Real) {
            appendBigEndian(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(*f)), 4);
        } else {
            appendBigEndian(bytes, std::bit_cast<std::uint64_t>(*f), 8);
        }
        return bytes;
    }
    const std::int64_t n = std::get<std::int64_t>(value);
    if (from.id == TypeId::DateTime || from.id == TypeId::SmallDateTime) {
        std::int64_t day = n / kTicksPerDay, ticks = n % kTicksPerDay;
        if (ticks < 0) {
            ticks += kTicksPerDay;
            --day;
        }
        const std::size_t width = from.id == TypeId::DateTime ? 4 : 2;
        appendBigEndian(bytes, static_cast<std::uint64_t>(day), width);
        appendBigEndian(bytes, static_cast<std::uint64_t>(from.id == TypeId::DateTime ? ticks : ticks / (60 * 300)),
                        width);
        return bytes;
    }
    const bool small = from.id == TypeId::SmallMoney;
    appendBigEndian(bytes, static_cast<std::uint64_t>(n),
                    small                      ? 4
                    : from.id == TypeId::Money ? 8
                                               : integerWidth(from.id));
    return bytes;
}

bool bounded(const Type& type) {
    return !isLob(type.id) && type.length != Type::kMax;
}

}  // namespace

std::string floatText(double value, int style) {
    char text[64];
    std::snprintf(text, sizeof text, style == 1 ? "%.7e" : style == 2 ? "%.15e" : style == 3 ? "%.16e" : "%.6g", value);
    std::string out = text;
    // Three digits of exponent, as the C library of Windows writes them.
    if (const auto e = out.find('e'); e != std::string::npos && out.size() - e < 5)
        out.insert(e + 2, 5 - (out.size() - e), '0');
    return out;
}

std::string moneyText(std::int64_t units, int style) {
    if (style == 2) return toText(units, 4);
    std::string out = toText(*shiftDigits(units, -2), 2);
    if (style == 1) {
        const std::size_t first = out[0] == '-' ? 1 : 0;
        for (std::size_t at = out.size() - 3; at > first + 3;) {
            at -= 3;
            out.insert(at, 1, ',');
        }
    }
    return out;
}

std::string guidText(const Guid& guid) {
    std::string out;
    for (std::size_t i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) out += '-';
        out += kHex[guid[kGuidTextOrder[i]] >> 4];
        out += kHex[guid[kGuidTextOrder[i]] & 15];
    }
    return out;
}

std::string textOf(const Value& value, const Type& from, const Type& to, const ConvertContext& context, int style) {
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* bytes = std::get_if<Bytes>(&value)) return textOfBytes(*bytes, to, style);
    if (const auto* guid = std::get_if<Guid>(&value)) return guidText(*guid);
    if (const auto* d = std::get_if<Decimal>(&value)) return toText(d->unscaled, d->scale);
    if (const auto* f = std::get_if<double>(&value)) return floatText(*f, style);
    const std::int64_t n = std::get<std::int64_t>(value);
    if (from.id == TypeId::Money || from.id == TypeId::SmallMoney) return moneyText(n, style);
    if (isTemporal(from.id)) {
        auto text = writeDateText(n, from, style, context.norwegian);
        if (!text) throw errors::invalidStyle(style, from);
        return *std::move(text);
    }
    return std::to_string(n);
}

std::string fitText(std::string text, const Type& to, bool mayHoldUnicode) {
    if (!isUnicode(to.id) && mayHoldUnicode && !isAscii(text)) text = keepCodePage1252(text);
    if (!bounded(to)) return text;
    const auto most = static_cast<std::size_t>(to.length);
    if (text.size() > most) text.resize(leftUnits(text, most).size());
    if (to.id == TypeId::Char || to.id == TypeId::NChar) {
        const std::size_t units = utf16Length(text);
        if (units < most) text.append(most - units, ' ');
    }
    return text;
}

std::string shortenText(std::string text, const Type& from, const Type& to) {
    if (isInteger(from.id)) {
        if (from.id == TypeId::BigInt || isUnicode(to.id)) throw errors::expressionOverflow(to);
        return "*";
    }
    if (from.id == TypeId::Decimal) throw errors::overflowConverting("numeric", to, 5);
    if (from.id == TypeId::Real || from.id == TypeId::Float) throw errors::expressionOverflow(to);
    if (from.id == TypeId::Money || from.id == TypeId::SmallMoney) throw errors::moneySpace(to);
    if (from.id == TypeId::UniqueIdentifier) throw errors::guidSpace();
    return text;
}

Bytes bytesOf(const Value& value, const Type& from, const Type& to, int style) {
    bool rightAligned = false;
    Bytes bytes;
    if (const auto* own = std::get_if<Bytes>(&value)) {
        bytes = *own;
    } else if (const auto* text = std::get_if<std::string>(&value)) {
        bytes = bytesOfText(*text, from, to, style);
    } else if (const auto* guid = std::get_if<Guid>(&value)) {
        bytes.assign(guid->begin(), guid->end());
    } else {
        bytes = bytesOfNumber(value, from);
        rightAligned = true;
    }
    if (!bounded(to)) return bytes;
    // Numbers keep their low bytes, everything else its first.
    const auto most = static_cast<std::size_t>(to.length);
    if (bytes.size() > most) {
        if (rightAligned) bytes.erase(bytes.begin(), bytes.end() - static_cast<std::ptrdiff_t>(most));
        bytes.resize(most);
    }
    if (to.id == TypeId::Binary && bytes.size() < most) {
        bytes.insert(rightAligned ? bytes.begin() : bytes.end(), most - bytes.size(), 0);
    }
    return bytes;
}

Guid guidOf(const Value& value, const Type& from, const Type& to) {
    Guid guid{};
    if (const auto* bytes = std::get_if<Bytes>(&value)) {
        std::copy_n(bytes->begin(), std::min<std::size_t>(16, bytes->size()), guid.begin());
        return guid;
    }
    const auto* text = std::get_if<std::string>(&value);
    if (!text) throw errors::explicitNotAllowed(from, to);
    std::string_view digits = *text;
    const bool braces = digits.starts_with('{');
    if (braces) digits.remove_prefix(1);
    // What follows the 36 characters is not looked at.
    if (digits.size() < 36 || (braces && (digits.size() < 37 || digits[36] != '}'))) throw errors::guidSyntax();
    std::size_t at = 0;
    for (std::size_t i = 0; i < 16; ++i, at += 2) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            if (digits[at++] != '-') throw errors::guidSyntax();
        }
        const int high = hexDigit(digits[at]), low = hexDigit(digits[at + 1]);
        if (high < 0 || low < 0) throw errors::guidSyntax();
        guid[kGuidTextOrder[i]] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return guid;
}

}  // namespace sandbox::conversion
