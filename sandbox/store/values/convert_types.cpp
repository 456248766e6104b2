// How types meet.
#include "sandbox/store/values/convert_types.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdlib>

#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/convert_errors.h"
#include "sandbox/store/values/decimal.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/text.h"

namespace sandbox {
namespace {

constexpr int kMostNarrow = 8000;
constexpr int kMostWide = 4000;

std::string_view operatorName(BinaryOp op) {
    switch (op) {
        case BinaryOp::Add: return "add";
        case BinaryOp::Subtract: return "subtract";
        case BinaryOp::Multiply: return "multiply";
        case BinaryOp::Divide: return "divide";
        case BinaryOp::Modulo: return "modulo";
        case BinaryOp::BitAnd: return "'&'";
        case BinaryOp::BitOr: return "'|'";
        case BinaryOp::BitXor: return "'^'";
    }
    return "";
}

bool isBit(BinaryOp op) {
    return op >= BinaryOp::BitAnd;
}
bool isApproximate(TypeId id) {
    return id == TypeId::Real || id == TypeId::Float;
}
bool isOldDate(TypeId id) {
    return id == TypeId::DateTime || id == TypeId::SmallDateTime;
}

Type decimalOf(int precision, int scale, bool numericName) {
    return {.id = TypeId::Decimal,
            .precision = static_cast<std::uint8_t>(precision),
            .scale = static_cast<std::uint8_t>(scale),
            .numericName = numericName};
}

// Above 38 digits the decimals give way, but six of them stay where the whole digits take more than 32.
Type decimalResult(BinaryOp op, const Type& a, const Type& b) {
    const int p1 = a.precision, s1 = a.scale, p2 = b.precision, s2 = b.scale;
    int precision = 0, scale = 0;
    switch (op) {
        case BinaryOp::Multiply:
            precision = p1 + p2 + 1;
            scale = s1 + s2;
            break;
        case BinaryOp::Divide:
            scale = std::max(6, s1 + p2 + 1);
            precision = p1 - s1 + s2 + scale;
            break;
        case BinaryOp::Modulo:
            scale = std::max(s1, s2);
            precision = std::min(p1 - s1, p2 - s2) + scale;
            break;
        default: scale = std::max(s1, s2); precision = std::max(p1 - s1, p2 - s2) + scale + 1;
    }
    if (precision > kMaxPrecision) {
        if (op == BinaryOp::Add || op == BinaryOp::Subtract) {
            scale = std::min(scale, kMaxPrecision - std::max(p1 - s1, p2 - s2));
        } else {
            const int whole = precision - scale;
            if (whole < 32) {
                scale = std::min(scale, kMaxPrecision - whole);
            } else {
                scale = std::min(scale, 6);
            }
        }
        precision = kMaxPrecision;
    }
    return decimalOf(std::max(precision, 1), std::max(scale, 0), a.numericName || b.numericName);
}

Type decimalUnion(const Type& a, const Type& b) {
    const int whole = std::max(a.precision - a.scale, b.precision - b.scale);
    const int scale = std::min<int>(std::max(a.scale, b.scale), kMaxPrecision - whole);
    return decimalOf(whole + scale, scale, a.numericName || b.numericName);
}

int addLengths(const Type& a, const Type& b, int most) {
    if (a.length == Type::kMax || b.length == Type::kMax) return Type::kMax;
    return std::min(a.length + b.length, most);
}

Type concatenation(const Type& a, const Type& b) {
    if (isBinary(a.id)) return {.id = TypeId::VarBinary, .length = addLengths(a, b, kMostNarrow)};
    const bool wide = isUnicode(a.id) || isUnicode(b.id);
    const bool fixed =
        (a.id == TypeId::Char || a.id == TypeId::NChar) && (b.id == TypeId::Char || b.id == TypeId::NChar);
    const TypeId id = wide ? (fixed ? TypeId::NChar : TypeId::NVarChar) : (fixed ? TypeId::Char : TypeId::VarChar);
    return {.id = id, .length = addLengths(a, b, wide ? kMostWide : kMostNarrow)};
}

Type numericResult(BinaryOp op, const Type& a, const Type& b) {
    const Type& high = a.id >= b.id ? a : b;
    if (a.id == TypeId::Bit && b.id == TypeId::Bit && !isBit(op)) throw errors::incompatible(a, b, operatorName(op));
    if (isBit(op)) {
        if (!isInteger(a.id) || !isInteger(b.id)) throw errors::incompatible(a, b, operatorName(op));
        return high;
    }
    if (isApproximate(high.id)) {
        if (op == BinaryOp::Modulo) throw errors::incompatible(a, b, operatorName(op));
        return high;
    }
    if (high.id == TypeId::Decimal) return decimalResult(op, asDecimal(a), asDecimal(b));
    return high;
}

Type dateResult(BinaryOp op, const Type& a, const Type& b) {
    const auto newer = [](const Type& t) { return isTemporal(t.id) && !isOldDate(t.id); };
    if (newer(a) || newer(b)) {
        if (isNumeric(a.id)) throw errors::operandClash(a, b);
        if (isNumeric(b.id)) throw errors::operandClash(a, b);
        if (a.id == b.id) throw errors::invalidOperand(a, operatorName(op));
        throw errors::incompatible(a, b, operatorName(op));
    }
    const Type& date = a.id >= b.id ? a : b;
    const Type& other = a.id >= b.id ? b : a;
    if (op != BinaryOp::Add && op != BinaryOp::Subtract) throw errors::invalidOperand(date, operatorName(op));
    requireImplicitConversion(other, date);
    return date;
}

}  // namespace

std::string_view operatorName(CompareOp op) {
    switch (op) {
        case CompareOp::Equal: return "equal to";
        case CompareOp::NotEqual: return "not equal to";
        case CompareOp::Less: return "less than";
        case CompareOp::LessOrEqual: return "less than or equal to";
        case CompareOp::Greater: return "greater than";
        case CompareOp::GreaterOrEqual: return "greater than or equal to";
    }
    return "";
}

Type asDecimal(const Type& type) {
    switch (type.id) {
        case TypeId::Bit: return decimalOf(1, 0, true);
        case TypeId::TinyInt: return decimalOf(3, 0, true);
        case TypeId::SmallInt: return decimalOf(5, 0, true);
        case TypeId::Int: return decimalOf(10, 0, true);
        case TypeId::BigInt: return decimalOf(19, 0, true);
        case TypeId::SmallMoney: return decimalOf(10, 4, true);
        case TypeId::Money: return decimalOf(19, 4, true);
        default: return type;
    }
}

Type literalBesideDecimal(const Type& type, const Value& literal) {
    const auto* n = std::get_if<std::int64_t>(&literal);
    return n && isInteger(type.id) ? decimalOf(digitCount(*n), 0, true) : type;
}

Type binaryResultType(BinaryOp op, const Type& a, const Type& b) {
    if (a.id == TypeId::Null && b.id == TypeId::Null) return {.id = TypeId::Int};
    if (a.id == TypeId::Null || b.id == TypeId::Null) {
        const Type& known = a.id == TypeId::Null ? b : a;
        if (op == BinaryOp::Add && (isCharacter(known.id) || isBinary(known.id)) && !isLob(known.id)) return known;
        return binaryResultType(op, known, known);
    }
    if (isLob(a.id) || isLob(b.id)) throw errors::incompatible(a, b, operatorName(op));
    if (a.id == TypeId::UniqueIdentifier || b.id == TypeId::UniqueIdentifier) {
        if (a.id == b.id) throw errors::invalidOperand(a, operatorName(op));
        if (isCharacter(a.id) || isCharacter(b.id)) throw errors::incompatible(a, b, operatorName(op));
        throw errors::operandClash(a, b);
    }
    if (isTemporal(a.id) || isTemporal(b.id)) return dateResult(op, a, b);
    if (isNumeric(a.id) && isNumeric(b.id)) return numericResult(op, a, b);
    // A number and a text or binary: the other one takes the number's type.
    if (isNumeric(a.id) || isNumeric(b.id)) {
        const Type& number = isNumeric(a.id) ? a : b;
        const Type& other = isNumeric(a.id) ? b : a;
        if (number.id == TypeId::Bit && !isBit(op)) throw errors::incompatible(a, b, operatorName(op));
        requireImplicitConversion(other, number);
        return numericResult(op, number, number);
    }
    if (isBit(op)) throw errors::incompatible(a, b, operatorName(op));
    if (op != BinaryOp::Add) throw errors::invalidOperand(isCharacter(a.id) ? a : b, operatorName(op));
    if (isBinary(a.id) != isBinary(b.id)) throw errors::incompatible(a, b, operatorName(op));
    return concatenation(a, b);
}

Type negatedType(const Type& type) {
    if (type.id == TypeId::Null) return {.id = TypeId::Int};
    if (!isNumeric(type.id) || type.id == TypeId::Bit) throw errors::invalidOperand(type, "minus");
    if (type.id == TypeId::TinyInt) return {.id = TypeId::SmallInt};
    if (type.id == TypeId::SmallMoney) return {.id = TypeId::Money};
    return type;
}

Type complementType(const Type& type) {
    if (type.id == TypeId::Null) return {.id = TypeId::Int};
    if (!isInteger(type.id)) throw errors::invalidOperand(type, "'~'");
    return type;
}

Type commonType(const Type& a, const Type& b) {
    if (a.id == TypeId::Null || a == b) return b;
    if (b.id == TypeId::Null) return a;
    const Type& high = a.id >= b.id ? a : b;
    const Type& low = a.id >= b.id ? b : a;
    if (isCharacter(a.id) && isCharacter(b.id)) {
        if (isLob(high.id)) return high;
        Type result = high;
        const bool variable =
            a.id == TypeId::VarChar || b.id == TypeId::VarChar || a.id == TypeId::NVarChar || b.id == TypeId::NVarChar;
        if (variable) result.id = isUnicode(high.id) ? TypeId::NVarChar : TypeId::VarChar;
        const bool max = a.length == Type::kMax || b.length == Type::kMax;
        const int most = isUnicode(result.id) ? kMostWide : kMostNarrow;
        result.length = max ? Type::kMax : std::min(std::max(a.length, b.length), most);
        return result;
    }
    if (isBinary(a.id) && isBinary(b.id)) {
        if (isLob(high.id)) return high;
        Type result = high;
        result.rowVersion = false;
        result.length = a.length == Type::kMax || b.length == Type::kMax ? Type::kMax : std::max(a.length, b.length);
        return result;
    }
    requireImplicitConversion(low, high);
    if (high.id == TypeId::Decimal && isExactNumeric(low.id)) return decimalUnion(asDecimal(high), asDecimal(low));
    if (high.id == TypeId::DateTime2 || high.id == TypeId::Time) {
        Type result = high;
        const bool sameFamily = low.id == high.id || low.id == TypeId::Time;
        const std::uint8_t scale = sameFamily ? low.scale : isOldDate(low.id) ? std::uint8_t{3} : std::uint8_t{0};
        result.scale = std::max(high.scale, scale);
        return result;
    }
    return high;
}

Type commonType(std::span<const Type> types) {
    Type result;
    for (const Type& type : types) result = commonType(result, type);
    if (result.id == TypeId::Null) result.id = TypeId::Int;
    return result;
}

Type comparisonType(CompareOp op, const Type& a, const Type& b) {
    if (isLob(a.id) || isLob(b.id)) throw errors::incompatible(a, b, operatorName(op));
    return commonType(a, b);
}

Typed numberLiteral(std::string_view text) {
    if (text.find_first_of("eE") != std::string_view::npos) {
        return {{.id = TypeId::Float}, std::strtod(std::string(text).c_str(), nullptr)};
    }
    const auto value = decimalFromText(text);
    if (!value || value->scale > kMaxPrecision) {
        throw SqlError(errorMessage<1007>(text));
    }
    const bool point = text.find('.') != std::string_view::npos;
    if (!point && value->unscaled >= INT_MIN && value->unscaled <= INT_MAX) {
        return {{.id = TypeId::Int}, static_cast<std::int64_t>(value->unscaled)};
    }
    return {decimalOf(std::max<int>(digitCount(value->unscaled), value->scale), value->scale, true), *value};
}

Typed moneyLiteral(std::string_view text) {
    const Type money{.id = TypeId::Money};
    return {money, convert(std::string(text), {.id = TypeId::VarChar, .length = Type::kMax}, money)};
}

Typed textLiteral(std::string_view text, bool unicode) {
    std::string kept = unicode ? std::string(text) : keepCodePage1252(text);
    const auto length = utf16Length(kept);
    const auto most = static_cast<std::size_t>(unicode ? kMostWide : kMostNarrow);
    const Type type{.id = unicode ? TypeId::NVarChar : TypeId::VarChar,
                    .length = length > most ? Type::kMax : std::max(1, static_cast<int>(length))};
    return {type, std::move(kept)};
}

Typed binaryLiteral(std::string_view text) {
    std::string hex(text.substr(std::min<std::size_t>(2, text.size())));
    if (hex.size() % 2 != 0) hex.insert(hex.begin(), '0');
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        std::uint8_t b = 0;
        std::from_chars(hex.data() + i, hex.data() + i + 2, b, 16);
        bytes.push_back(b);
    }
    const Type type{.id = TypeId::VarBinary,
                    .length = bytes.size() > kMostNarrow ? Type::kMax : std::max(1, static_cast<int>(bytes.size()))};
    return {type, std::move(bytes)};
}

}  // namespace sandbox
