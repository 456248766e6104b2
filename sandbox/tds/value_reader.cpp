// Values on their way from a client. Each is checked, for nothing behind this file checks again.
#include <cmath>
#include <limits>

#include "sandbox/tds/text.h"
#include "sandbox/tds/values.h"

namespace sandbox::tds {
namespace {

constexpr std::int64_t kTicksPerDay = 300LL * 86400;
constexpr std::int64_t kTicksPerMinute = 300LL * 60;
constexpr std::int64_t kUnitsPerDay = 10'000'000LL * 86400;
constexpr std::int32_t kFirstDay = -53690;      // 1753-01-01 from 1900-01-01
constexpr std::int32_t kLastDay = 2958463;      // 9999-12-31
constexpr std::uint64_t kDaysOfDate = 3652059;  // 0001-01-01 to 9999-12-31

__extension__ typedef unsigned __int128 Wide;
__extension__ typedef __int128 SignedWide;

Value finite(double v, TypeId id) {
    if (!std::isfinite(v)) throw InvalidValue(id);
    return v;
}

Value readDateTime(Reader& in) {
    const std::int32_t days = in.i32();
    const std::uint32_t ticks = in.u32();
    if (days < kFirstDay || days > kLastDay || ticks >= kTicksPerDay) throw InvalidValue(TypeId::DateTime);
    return days * kTicksPerDay + ticks;
}

Value readSmallDateTime(Reader& in) {
    const std::uint16_t days = in.u16();
    const std::uint16_t minutes = in.u16();
    if (minutes >= 1440) throw InvalidValue(TypeId::SmallDateTime);
    return days * kTicksPerDay + minutes * kTicksPerMinute;
}

Value readFixed(Reader& in, TypeId id) {
    switch (id) {
        case TypeId::Bit: return std::int64_t{in.u8() != 0};
        case TypeId::TinyInt: return std::int64_t{in.u8()};
        case TypeId::SmallInt: return std::int64_t{static_cast<std::int16_t>(in.u16())};
        case TypeId::Int: return std::int64_t{in.i32()};
        case TypeId::BigInt: return static_cast<std::int64_t>(in.u64());
        case TypeId::SmallMoney: return std::int64_t{in.i32()};
        case TypeId::Money: {
            const std::uint64_t high = in.u32();
            return static_cast<std::int64_t>(high << 32 | in.u32());
        }
        case TypeId::Real: return finite(in.f32(), id);
        case TypeId::Float: return finite(in.f64(), id);
        case TypeId::SmallDateTime: return readSmallDateTime(in);
        default: return readDateTime(in);
    }
}

Value readDecimal(Reader& in, const WireType& type) {
    const std::size_t size = in.u8();
    if (size == 0) return Null{};
    if (size > 17 || size < 2) throw StreamError("a decimal's value has a wrong size");
    const bool positive = in.u8() != 0;
    Wide magnitude = 0;
    const ByteSpan bytes = in.take(size - 1);
    for (std::size_t i = bytes.size(); i-- > 0;) magnitude = magnitude << 8 | bytes[i];
    Wide limit = 1;
    for (int i = 0; i < type.precision; ++i) limit *= 10;
    if (magnitude >= limit) throw InvalidValue(TypeId::Decimal);
    Decimal v;
    v.unscaled = positive ? static_cast<SignedWide>(magnitude) : -static_cast<SignedWide>(magnitude);
    v.scale = type.scale;
    return v;
}

Value readTemporal(Reader& in, const WireType& type) {
    const std::size_t size = in.u8();
    if (size == 0) return Null{};
    const std::size_t timeBytes = type.code == wire::kDateN ? 0 : type.scale <= 2 ? 3 : type.scale <= 4 ? 4 : 5;
    const std::size_t dayBytes = type.code == wire::kTimeN ? 0 : 3;
    if (size != timeBytes + dayBytes) throw StreamError("a date's or time's value has a wrong size");
    std::uint64_t units = in.number(timeBytes);
    for (int i = type.scale; i < 7 && timeBytes > 0; ++i) units *= 10;
    const std::uint64_t days = in.number(dayBytes);
    if (units >= kUnitsPerDay || days >= kDaysOfDate) throw InvalidValue(type.type.id);
    if (type.code == wire::kDateN) return static_cast<std::int64_t>(days);
    return static_cast<std::int64_t>(days) * kUnitsPerDay + static_cast<std::int64_t>(units);
}

Value content(ByteSpan bytes, TypeId id) {
    if (isBinary(id)) return Bytes(bytes.begin(), bytes.end());
    if (!isUnicode(id)) return utf8FromCp1252(bytes);
    if (bytes.size() % 2 != 0) throw StreamError("half a character");
    return utf8FromUtf16(bytes);
}

Value readShort(Reader& in, const WireType& type) {
    const std::uint16_t length = in.u16();
    if (length == 0xFFFF) return Null{};
    if (length > type.size) throw StreamError("a value is longer than its type");
    return content(in.take(length), type.type.id);
}

Value readPlp(Reader& in, const WireType& type) {
    constexpr std::uint64_t kNullLength = std::numeric_limits<std::uint64_t>::max();
    if (in.u64() == kNullLength) return Null{};
    std::vector<std::uint8_t> all;
    while (const std::uint32_t length = in.u32()) {
        const ByteSpan chunk = in.take(length);
        all.insert(all.end(), chunk.begin(), chunk.end());
    }
    return content(all, type.type.id);
}

Value readLob(Reader& in, const WireType& type, Place place) {
    if (place == Place::Row) {
        const std::uint8_t pointer = in.u8();
        if (pointer == 0) return Null{};
        in.skip(pointer + std::size_t{8});
    }
    const std::uint32_t length = in.u32();
    if (length == 0xFFFFFFFF) return Null{};
    return content(in.take(length), type.type.id);
}

Value readOld(Reader& in, const WireType& type) {
    const std::uint8_t length = in.u8();
    if (length == 0) return Null{};
    return content(in.take(length), type.type.id);
}

}  // namespace

Value readValue(Reader& in, const WireType& type, Place place) {
    switch (type.code) {
        case wire::kNull: return Null{};
        case wire::kBitN:
        case wire::kIntN:
        case wire::kFloatN:
        case wire::kMoneyN:
        case wire::kDateTimeN: {
            const std::uint8_t size = in.u8();
            if (size == 0) return Null{};
            if (size != type.size) throw StreamError("a value's size is not its type's");
            return readFixed(in, type.type.id);
        }
        case wire::kGuid: {
            const std::uint8_t size = in.u8();
            if (size == 0) return Null{};
            if (size != 16) throw StreamError("a uniqueidentifier has 16 bytes");
            Guid guid;
            const ByteSpan bytes = in.take(16);
            std::copy(bytes.begin(), bytes.end(), guid.begin());
            return guid;
        }
        case wire::kDecimalN:
        case wire::kNumericN:
        case wire::kOldDecimal:
        case wire::kOldNumeric: return readDecimal(in, type);
        case wire::kDateN:
        case wire::kTimeN:
        case wire::kDateTime2N: return readTemporal(in, type);
        case wire::kVarBinary:
        case wire::kBinary:
        case wire::kVarChar:
        case wire::kChar:
        case wire::kNVarChar:
        case wire::kNChar: return type.plp() ? readPlp(in, type) : readShort(in, type);
        case wire::kOldVarBinary:
        case wire::kOldBinary:
        case wire::kOldVarChar:
        case wire::kOldChar: return readOld(in, type);
        case wire::kText:
        case wire::kNText:
        case wire::kImage: return readLob(in, type, place);
        default: return readFixed(in, type.type.id);
    }
}

}  // namespace sandbox::tds
