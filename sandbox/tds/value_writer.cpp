// Values on their way to a client.
#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <stdexcept>

#include "sandbox/tds/text.h"
#include "sandbox/tds/values.h"

namespace sandbox::tds {
namespace {

constexpr std::int64_t kTicksPerDay = 300LL * 86400;
constexpr std::int64_t kTicksPerMinute = 300LL * 60;
constexpr std::int64_t kUnitsPerSecond = 10'000'000;  // of 100 ns
constexpr std::int64_t kUnitsPerDay = kUnitsPerSecond * 86400;

// SQL Server sends the same pointer for every value of text, ntext and image that is not in a table's row.
constexpr std::array<std::uint8_t, 16> kTextPointer = {'d', 'u', 'm', 'm', 'y', ' ', 't', 'e',
                                                       'x', 't', 'p', 't', 'r', 0,   0,   0};
constexpr std::array<std::uint8_t, 8> kTextTimestamp = {'d', 'u', 'm', 'm', 'y', 'T', 'S', 0};

template <typename T>
const T& as(const Value& value, const WireType& type) {
    if (const T* held = std::get_if<T>(&value)) return *held;
    throw std::logic_error("a cell of type " + typeDeclaration(type.type) + " holds a value of another form");
}

std::int64_t wholeIn(std::int64_t v, std::int64_t low, std::int64_t high, const WireType& type) {
    if (v < low || v > high) throw std::logic_error("a cell's value is out of range for " + typeDeclaration(type.type));
    return v;
}

template <typename T>
void writeInteger(Writer& out, const WireType& type, std::int64_t v) {
    wholeIn(v, std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), type);
    out.number(static_cast<std::uint64_t>(v), sizeof(T));
}

void writeMoney(Writer& out, std::int64_t v) {
    out.u32(static_cast<std::uint32_t>(static_cast<std::uint64_t>(v) >> 32));
    out.u32(static_cast<std::uint32_t>(v));
}

void writeDateTime(Writer& out, std::int64_t ticks) {
    std::int64_t days = ticks / kTicksPerDay;
    if (ticks % kTicksPerDay < 0) --days;
    out.i32(static_cast<std::int32_t>(days));
    out.u32(static_cast<std::uint32_t>(ticks - days * kTicksPerDay));
}

void writeSmallDateTime(Writer& out, const WireType& type, std::int64_t ticks) {
    const std::int64_t minutes = wholeIn(ticks / kTicksPerMinute, 0, 0x10000LL * 1440 - 1, type);
    out.u16(static_cast<std::uint16_t>(minutes / 1440));
    out.u16(static_cast<std::uint16_t>(minutes % 1440));
}

// The fixed-size types, whose bytes are the same in the fixed and the nullable form.
void writeFixed(Writer& out, const WireType& type, const Value& value) {
    switch (type.type.id) {
        case TypeId::Bit: out.u8(as<std::int64_t>(value, type) != 0 ? 1 : 0); break;
        case TypeId::TinyInt: writeInteger<std::uint8_t>(out, type, as<std::int64_t>(value, type)); break;
        case TypeId::SmallInt: writeInteger<std::int16_t>(out, type, as<std::int64_t>(value, type)); break;
        case TypeId::Int: writeInteger<std::int32_t>(out, type, as<std::int64_t>(value, type)); break;
        case TypeId::BigInt: writeInteger<std::int64_t>(out, type, as<std::int64_t>(value, type)); break;
        case TypeId::SmallMoney: writeInteger<std::int32_t>(out, type, as<std::int64_t>(value, type)); break;
        case TypeId::Money: writeMoney(out, as<std::int64_t>(value, type)); break;
        case TypeId::Real: out.f32(static_cast<float>(as<double>(value, type))); break;
        case TypeId::Float: out.f64(as<double>(value, type)); break;
        case TypeId::SmallDateTime: writeSmallDateTime(out, type, as<std::int64_t>(value, type)); break;
        default: writeDateTime(out, as<std::int64_t>(value, type)); break;
    }
}

__extension__ typedef unsigned __int128 Wide;

std::size_t decimalSize(int precision) {
    return precision <= 9 ? 5 : precision <= 19 ? 9 : precision <= 28 ? 13 : 17;
}

void writeDecimal(Writer& out, const WireType& type, Decimal v) {
    for (; v.scale < type.scale; ++v.scale) {
        if (__builtin_mul_overflow(v.unscaled, 10, &v.unscaled)) throw std::logic_error("a decimal cell is too wide");
    }
    for (; v.scale > type.scale; --v.scale) {
        if (v.unscaled % 10 != 0) throw std::logic_error("a decimal cell has more places than its column");
        v.unscaled /= 10;
    }
    const bool negative = v.unscaled < 0;
    Wide magnitude = negative ? Wide{0} - static_cast<Wide>(v.unscaled) : static_cast<Wide>(v.unscaled);
    const std::size_t size = decimalSize(type.precision);
    const std::size_t bytes = size - 1;
    if (bytes < 16 && magnitude >> (8 * bytes) != 0) throw std::logic_error("a decimal cell is too wide");
    out.u8(static_cast<std::uint8_t>(size));
    out.u8(negative ? 0 : 1);
    for (std::size_t i = 0; i < bytes; ++i, magnitude >>= 8) out.u8(static_cast<std::uint8_t>(magnitude));
}

std::size_t timeSize(std::uint8_t scale) {
    return scale <= 2 ? 3 : scale <= 4 ? 4 : 5;
}

std::int64_t unitsOfScale(std::uint8_t scale) {
    std::int64_t units = 1;
    for (int i = scale; i < 7; ++i) units *= 10;
    return units;
}

void writeTemporal(Writer& out, const WireType& type, std::int64_t v) {
    if (type.code == wire::kDateN) {
        out.u8(3);
        out.number(static_cast<std::uint64_t>(v), 3);
        return;
    }
    const bool dated = type.code == wire::kDateTime2N;
    out.u8(static_cast<std::uint8_t>(timeSize(type.scale) + (dated ? 3 : 0)));
    out.number(static_cast<std::uint64_t>(v % kUnitsPerDay / unitsOfScale(type.scale)), timeSize(type.scale));
    if (dated) out.number(static_cast<std::uint64_t>(v / kUnitsPerDay), 3);
}

struct Day {
    int year, month, day;
};

// The proleptic Gregorian day so many days after 0001-01-01.
Day dayOf(std::int64_t days) {
    constexpr std::int64_t kFromMarchOfYearZero = 306;  // 0001-01-01 counted from 0000-03-01
    const std::int64_t z = days + kFromMarchOfYearZero;
    const std::int64_t era = z / 146097;
    const std::int64_t inEra = z % 146097;
    const std::int64_t yearOfEra = (inEra - inEra / 1460 + inEra / 36524 - inEra / 146096) / 365;
    const std::int64_t inYear = inEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t shifted = (5 * inYear + 2) / 153;  // 0: March
    const int month = static_cast<int>(shifted < 10 ? shifted + 3 : shifted - 9);
    return {static_cast<int>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0)), month,
            static_cast<int>(inYear - (153 * shifted + 2) / 5 + 1)};
}

std::string temporalText(const Type& type, std::int64_t v) {
    std::array<char, 64> part{};
    std::string text;
    const std::int64_t days = type.id == TypeId::Date ? v : type.id == TypeId::Time ? 0 : v / kUnitsPerDay;
    if (type.id != TypeId::Time) {
        const Day d = dayOf(days);
        std::snprintf(part.data(), part.size(), "%04d-%02d-%02d", d.year, d.month, d.day);
        text = part.data();
        if (type.id == TypeId::Date) return text;
        text += ' ';
    }
    const std::int64_t units = v % kUnitsPerDay;
    const int seconds = static_cast<int>(units / kUnitsPerSecond);
    std::snprintf(part.data(), part.size(), "%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
    text += part.data();
    if (type.scale > 0) {
        const std::string digits = std::to_string(units % kUnitsPerSecond / unitsOfScale(type.scale));
        text += '.' + std::string(type.scale - std::min<std::size_t>(digits.size(), type.scale), '0') + digits;
    }
    return text;
}

// Appends the bytes of a character or binary value, in the form of its wire type.
void appendContent(std::vector<std::uint8_t>& out, const WireType& type, const Value& value) {
    if (type.temporalAsText) {
        appendUtf16(out, temporalText(type.type, as<std::int64_t>(value, type)));
    } else if (isBinary(type.type.id)) {
        const Bytes& bytes = as<Bytes>(value, type);
        out.insert(out.end(), bytes.begin(), bytes.end());
    } else if (isUnicode(type.type.id)) {
        appendUtf16(out, as<std::string>(value, type));
    } else {
        appendCp1252(out, as<std::string>(value, type));
    }
}

void writeShort(Writer& out, const WireType& type, const Value& value) {
    const std::size_t at = out.size();
    out.u16(0);
    appendContent(out.buffer(), type, value);
    const std::size_t length = out.size() - at - 2;
    if (length > type.size) {
        throw std::logic_error("a cell of type " + typeDeclaration(type.type) + " holds " + std::to_string(length) +
                               " bytes");
    }
    out.patch(at, length, 2);
}

void writePlp(Writer& out, const WireType& type, const Value& value) {
    const std::size_t at = out.size();
    out.u64(0);
    out.u32(0);
    appendContent(out.buffer(), type, value);
    const std::size_t length = out.size() - at - 12;
    out.patch(at, length, 8);
    out.patch(at + 8, length, 4);
    if (length > 0) out.u32(0);  // an empty value's first chunk is its end as well
}

void writeLob(Writer& out, const WireType& type, const Value& value, Place place) {
    if (place == Place::Row) {
        out.u8(kTextPointer.size());
        out.bytes(kTextPointer);
        out.bytes(kTextTimestamp);
    }
    const std::size_t at = out.size();
    out.u32(0);
    appendContent(out.buffer(), type, value);
    out.patch(at, out.size() - at - 4, 4);
}

void writeNull(Writer& out, const WireType& type, Place place) {
    switch (type.code) {
        case wire::kVarBinary:
        case wire::kBinary:
        case wire::kVarChar:
        case wire::kChar:
        case wire::kNVarChar:
        case wire::kNChar:
            if (type.plp()) {
                out.fill(0xFF, 8);
            } else {
                out.u16(0xFFFF);
            }
            break;
        case wire::kText:
        case wire::kNText:
        case wire::kImage:
            if (place == Place::Row) {
                out.u8(0);
            } else {
                out.u32(0xFFFFFFFF);
            }
            break;
        case wire::kBitN:
        case wire::kIntN:
        case wire::kFloatN:
        case wire::kMoneyN:
        case wire::kDateTimeN:
        case wire::kGuid:
        case wire::kDecimalN:
        case wire::kNumericN:
        case wire::kDateN:
        case wire::kTimeN:
        case wire::kDateTime2N: out.u8(0); break;
        default: throw std::logic_error("a null in a column that was told to hold none");
    }
}

}  // namespace

void writeValue(Writer& out, const WireType& type, const Value& value, Place place) {
    if (isNull(value)) return writeNull(out, type, place);
    switch (type.code) {
        case wire::kBitN:
        case wire::kIntN:
        case wire::kFloatN:
        case wire::kMoneyN:
        case wire::kDateTimeN: out.u8(static_cast<std::uint8_t>(type.size)); return writeFixed(out, type, value);
        case wire::kGuid:
            out.u8(16);
            out.bytes(as<Guid>(value, type));
            return;
        case wire::kDecimalN:
        case wire::kNumericN: return writeDecimal(out, type, as<Decimal>(value, type));
        case wire::kDateN:
        case wire::kTimeN:
        case wire::kDateTime2N: return writeTemporal(out, type, as<std::int64_t>(value, type));
        case wire::kVarBinary:
        case wire::kBinary:
        case wire::kVarChar:
        case wire::kChar:
        case wire::kNVarChar:
        case wire::kNChar: return type.plp() ? writePlp(out, type, value) : writeShort(out, type, value);
        case wire::kText:
        case wire::kNText:
        case wire::kImage: return writeLob(out, type, value, place);
        default: return writeFixed(out, type, value);
    }
}

}  // namespace sandbox::tds
