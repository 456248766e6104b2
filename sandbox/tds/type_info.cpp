// TYPE_INFO both ways.
#include "sandbox/tds/type_info.h"

#include <algorithm>
#include <array>

namespace sandbox::tds {
namespace {

constexpr std::uint32_t kLobSize = 0x7FFFFFFF;
constexpr std::uint32_t kNTextSize = 0x7FFFFFFE;
constexpr int kMostBytes = 8000;

// The types of one fixed size, and the nullable form of each.
struct Fixed {
    TypeId id;
    std::uint8_t fixedCode;
    std::uint8_t nullableCode;
    std::uint8_t size;
};
constexpr std::array<Fixed, 11> kFixed = {{
    {TypeId::Bit, wire::kBit, wire::kBitN, 1},
    {TypeId::TinyInt, wire::kInt1, wire::kIntN, 1},
    {TypeId::SmallInt, wire::kInt2, wire::kIntN, 2},
    {TypeId::Int, wire::kInt4, wire::kIntN, 4},
    {TypeId::BigInt, wire::kInt8, wire::kIntN, 8},
    {TypeId::SmallMoney, wire::kMoney4, wire::kMoneyN, 4},
    {TypeId::Money, wire::kMoney, wire::kMoneyN, 8},
    {TypeId::Real, wire::kFloat4, wire::kFloatN, 4},
    {TypeId::Float, wire::kFloat8, wire::kFloatN, 8},
    {TypeId::SmallDateTime, wire::kDateTime4, wire::kDateTimeN, 4},
    {TypeId::DateTime, wire::kDateTime, wire::kDateTimeN, 8},
}};

// The (max) types came with 7.2; before, they look like the older large types.
WireType largeType(TypeId id, Version version) {
    const bool plp = version >= Version::V72;
    WireType w;
    if (isUnicode(id)) {
        w.code = plp ? wire::kNVarChar : wire::kNText;
        w.size = plp ? kPlpSize : kNTextSize;
    } else {
        w.code = isBinary(id) ? (plp ? wire::kVarBinary : wire::kImage) : (plp ? wire::kVarChar : wire::kText);
        w.size = plp ? kPlpSize : kLobSize;
    }
    return w;
}

WireType shortType(std::uint8_t code, int length, int unit) {
    WireType w;
    w.code = code;
    w.size = static_cast<std::uint32_t>(std::max(length, 1) * unit);
    return w;
}

// date, time and datetime2 came with 7.3; before, the server tells them as text.
WireType temporalType(const Type& type, Version version) {
    const int fraction = type.scale == 0 ? 0 : type.scale + 1;
    WireType w;
    if (version < Version::V73) {
        const int characters = type.id == TypeId::Date ? 10 : type.id == TypeId::Time ? 8 + fraction : 19 + fraction;
        w = shortType(wire::kNVarChar, characters, 2);
        w.temporalAsText = true;
        return w;
    }
    w.code = type.id == TypeId::Date ? wire::kDateN : type.id == TypeId::Time ? wire::kTimeN : wire::kDateTime2N;
    w.scale = type.scale;
    return w;
}

WireType plainType(const Type& type, bool nullable, Version version) {
    WireType w;
    for (const Fixed& f : kFixed) {
        if (f.id == type.id) {
            w.code = nullable ? f.nullableCode : f.fixedCode;
            w.size = f.size;
            return w;
        }
    }
    const bool large = type.length == Type::kMax || type.length > (isUnicode(type.id) ? kMostBytes / 2 : kMostBytes);
    switch (type.id) {
        case TypeId::Null: w.code = wire::kIntN, w.size = 4; return w;
        case TypeId::Binary: return shortType(wire::kBinary, std::min(type.length, kMostBytes), 1);
        case TypeId::Char: return shortType(wire::kChar, std::min(type.length, kMostBytes), 1);
        case TypeId::NChar: return shortType(wire::kNChar, std::min(type.length, kMostBytes / 2), 2);
        case TypeId::VarBinary:
            return large ? largeType(type.id, version) : shortType(wire::kVarBinary, type.length, 1);
        case TypeId::VarChar: return large ? largeType(type.id, version) : shortType(wire::kVarChar, type.length, 1);
        case TypeId::NVarChar: return large ? largeType(type.id, version) : shortType(wire::kNVarChar, type.length, 2);
        case TypeId::UniqueIdentifier: w.code = wire::kGuid, w.size = 16; return w;
        case TypeId::Image: w.code = wire::kImage, w.size = kLobSize; return w;
        case TypeId::Text: w.code = wire::kText, w.size = kLobSize; return w;
        case TypeId::NText: w.code = wire::kNText, w.size = kNTextSize; return w;
        case TypeId::Decimal:
            w.code = type.numericName ? wire::kNumericN : wire::kDecimalN;
            w.size = kDecimalSize;
            w.precision = type.precision;
            w.scale = type.scale;
            return w;
        default: return temporalType(type, version);
    }
}

bool hasCollation(std::uint8_t code) {
    return code == wire::kVarChar || code == wire::kChar || code == wire::kNVarChar || code == wire::kNChar ||
           code == wire::kText || code == wire::kNText;
}

Type sizedType(TypeId id, int length) {
    Type type;
    type.id = id;
    type.length = length;
    return type;
}

bool readFixed(WireType& w) {
    for (const Fixed& f : kFixed) {
        if (f.fixedCode == w.code) {
            w.size = f.size;
            w.type.id = f.id;
            return true;
        }
    }
    return false;
}

bool readNullable(WireType& w, Reader& in) {
    if (std::none_of(kFixed.begin(), kFixed.end(), [&](const Fixed& f) { return f.nullableCode == w.code; })) {
        return false;
    }
    w.size = in.u8();
    for (const Fixed& f : kFixed) {
        if (f.nullableCode == w.code && f.size == w.size) {
            w.type.id = f.id;
            return true;
        }
    }
    throw StreamError("a type's size is not one of its sizes");
}

void readDecimal(WireType& w, Reader& in) {
    w.size = in.u8();
    w.precision = in.u8();
    w.scale = in.u8();
    if (w.size > 17 || w.precision < 1 || w.precision > 38 || w.scale > w.precision) {
        throw StreamError("a decimal's precision or scale is out of range");
    }
    w.type.id = TypeId::Decimal;
    w.type.precision = w.precision;
    w.type.scale = w.scale;
    w.type.numericName = w.code == wire::kNumericN || w.code == wire::kOldNumeric;
}

void readTemporal(WireType& w, Reader& in) {
    w.type.id = w.code == wire::kDateN ? TypeId::Date : w.code == wire::kTimeN ? TypeId::Time : TypeId::DateTime2;
    if (w.code == wire::kDateN) return;
    w.scale = in.u8();
    if (w.scale > 7) throw StreamError("a time's scale is out of range");
    w.type.scale = w.scale;
}

void readSized(WireType& w, Reader& in, TypeId id, bool mayBeMax) {
    w.size = in.u16();
    if (hasCollation(w.code)) in.skip(kCollation.size());
    if (w.size == kPlpSize && mayBeMax) {
        w.type = sizedType(id, Type::kMax);
        return;
    }
    if (w.size > kMostBytes || (isUnicode(id) && w.size % 2 != 0)) throw StreamError("a type's length is out of range");
    w.type = sizedType(id, std::max(1, static_cast<int>(w.size) / (isUnicode(id) ? 2 : 1)));
}

void readOld(WireType& w, Reader& in, TypeId id) {
    w.size = in.u8();
    w.type = sizedType(id, std::max(1, static_cast<int>(w.size)));
}

void readLob(WireType& w, Reader& in, TypeId id) {
    w.size = in.u32();
    if (hasCollation(w.code)) in.skip(kCollation.size());
    w.type.id = id;
}

}  // namespace

bool WireType::plp() const {
    return size == kPlpSize && (code == wire::kVarChar || code == wire::kNVarChar || code == wire::kVarBinary);
}

WireType wireType(const Type& type, bool nullable, Version version) {
    WireType w = plainType(type, nullable, version);
    w.type = type;
    if (type.id == TypeId::Null) w.type.id = TypeId::Int;
    return w;
}

void writeTypeInfo(Writer& out, const WireType& type) {
    out.u8(type.code);
    switch (type.code) {
        case wire::kBitN:
        case wire::kIntN:
        case wire::kFloatN:
        case wire::kMoneyN:
        case wire::kDateTimeN:
        case wire::kGuid: out.u8(static_cast<std::uint8_t>(type.size)); break;
        case wire::kDecimalN:
        case wire::kNumericN:
            out.u8(static_cast<std::uint8_t>(type.size));
            out.u8(type.precision);
            out.u8(type.scale);
            break;
        case wire::kTimeN:
        case wire::kDateTime2N: out.u8(type.scale); break;
        case wire::kVarBinary:
        case wire::kBinary:
        case wire::kVarChar:
        case wire::kChar:
        case wire::kNVarChar:
        case wire::kNChar: out.u16(static_cast<std::uint16_t>(type.size)); break;
        case wire::kText:
        case wire::kNText:
        case wire::kImage: out.u32(type.size); break;
        default: break;  // a fixed type, or date: the code says it all
    }
    if (hasCollation(type.code)) out.bytes(kCollation);
}

WireType readTypeInfo(Reader& in) {
    WireType w;
    w.code = in.u8();
    if (readFixed(w) || readNullable(w, in)) return w;
    switch (w.code) {
        case wire::kNull: break;
        case wire::kGuid:
            w.size = in.u8();
            if (w.size != 16) throw StreamError("a uniqueidentifier has 16 bytes");
            w.type.id = TypeId::UniqueIdentifier;
            break;
        case wire::kDecimalN:
        case wire::kNumericN:
        case wire::kOldDecimal:
        case wire::kOldNumeric: readDecimal(w, in); break;
        case wire::kDateN:
        case wire::kTimeN:
        case wire::kDateTime2N: readTemporal(w, in); break;
        case wire::kVarBinary: readSized(w, in, TypeId::VarBinary, true); break;
        case wire::kVarChar: readSized(w, in, TypeId::VarChar, true); break;
        case wire::kNVarChar: readSized(w, in, TypeId::NVarChar, true); break;
        case wire::kBinary: readSized(w, in, TypeId::Binary, false); break;
        case wire::kChar: readSized(w, in, TypeId::Char, false); break;
        case wire::kNChar: readSized(w, in, TypeId::NChar, false); break;
        case wire::kOldVarBinary: readOld(w, in, TypeId::VarBinary); break;
        case wire::kOldBinary: readOld(w, in, TypeId::Binary); break;
        case wire::kOldVarChar: readOld(w, in, TypeId::VarChar); break;
        case wire::kOldChar: readOld(w, in, TypeId::Char); break;
        case wire::kImage: readLob(w, in, TypeId::Image); break;
        case wire::kText: readLob(w, in, TypeId::Text); break;
        case wire::kNText: readLob(w, in, TypeId::NText); break;
        case wire::kXml: throw UnsupportedType(w.code, "xml");
        case wire::kVariant: throw UnsupportedType(w.code, "sql_variant");
        case wire::kDateTimeOffsetN: throw UnsupportedType(w.code, "datetimeoffset");
        case wire::kUdt: throw UnsupportedType(w.code, "CLR user-defined type");
        case wire::kTable: throw UnsupportedType(w.code, "table");
        default: throw StreamError("an unknown data type");
    }
    return w;
}

}  // namespace sandbox::tds
