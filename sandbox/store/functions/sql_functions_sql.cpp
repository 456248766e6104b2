// The SQLite text of the common calls, and where none is needed.
#include <algorithm>
#include <array>
#include <cstdio>

#include "sandbox/store/functions/sql_functions.h"
#include "sandbox/store/values/storage_codec.h"

namespace sandbox {
namespace {

constexpr int kNarrowPrecision = 18;
constexpr int kMostNarrow = 8000;
constexpr int kMostWide = 4000;

std::string code(const Type& type) {
    return std::to_string(encodeType(type));
}

bool narrow(const Type& type) {
    return type.precision <= kNarrowPrecision;
}

// Whether every value of `from` already is one of `to`, in the same storage.
bool isContained(const Type& from, const Type& to) {
    if (from.id == TypeId::Null || from == to) return true;
    if (isInteger(from.id) && isInteger(to.id)) return from.id <= to.id;
    if (isCharacter(from.id) && isCharacter(to.id)) {
        if (isUnicode(from.id) && !isUnicode(to.id)) return false;
        if (to.id == TypeId::Char || to.id == TypeId::NChar) {
            return (from.id == TypeId::Char || from.id == TypeId::NChar) && from.length == to.length;
        }
        if (isLob(to.id) || to.length == Type::kMax) return true;
        return !isLob(from.id) && from.length != Type::kMax && from.length <= to.length;
    }
    if (isBinary(from.id) && isBinary(to.id)) {
        if (to.id == TypeId::Binary) return from.id == TypeId::Binary && from.length == to.length;
        if (isLob(to.id) || to.length == Type::kMax) return true;
        return !isLob(from.id) && from.length != Type::kMax && from.length <= to.length;
    }
    if (from.id == TypeId::Decimal && to.id == TypeId::Decimal) {
        return from.scale == to.scale && from.precision <= to.precision && narrow(from) == narrow(to);
    }
    return (from.id == TypeId::SmallMoney && to.id == TypeId::Money) ||
           (from.id == TypeId::Real && to.id == TypeId::Float) ||
           (from.id == TypeId::SmallDateTime && to.id == TypeId::DateTime);
}

// An exact number widened to more decimals is a multiplication where no overflow can be; empty elsewhere.
std::string scaledSql(std::string_view sql, const Type& from, const Type& to) {
    if (to.id != TypeId::Decimal || !narrow(to) || !isExactNumeric(from.id)) return {};
    const Type exact = asDecimal(from);
    if (!narrow(exact) || exact.scale > to.scale || exact.precision - exact.scale > to.precision - to.scale) return {};
    if (exact.scale == to.scale) return std::string(sql);
    return "(" + std::string(sql) + " * " + toText(powerOfTen(to.scale - exact.scale), 0) + ")";
}

std::string quoted(std::string_view text) {
    std::string out = "'";
    for (const char c : text) {
        out += c;
        if (c == '\'') out += c;
    }
    return out + "'";
}

std::string hex(std::span<const std::uint8_t> bytes) {
    std::string out = "x'";
    for (const std::uint8_t b : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", b);
        out += digits;
    }
    return out + "'";
}

std::string_view stem(BinaryOp op) {
    switch (op) {
        case BinaryOp::Add: return "add(";
        case BinaryOp::Subtract: return "sub(";
        case BinaryOp::Multiply: return "mul(";
        case BinaryOp::Divide: return "div(";
        default: return "mod(";
    }
}

std::string call(std::string_view prefix, BinaryOp op, std::string_view a, std::string_view b, std::string_view rest) {
    std::string out(prefix);
    out += stem(op);
    out += a;
    out += ", ";
    out += b;
    out += rest;
    return out + ")";
}

// "x || y" of "(x || y)", else the text itself: SQLite's parser nests only so deep, and parentheses add to that.
std::string_view withinChain(std::string_view sql) {
    if (!sql.starts_with('(') || !sql.ends_with(')')) return sql;
    const std::string_view inner = sql.substr(1, sql.size() - 2);
    int depth = 0;
    char quote = '\0';
    for (std::size_t i = 0; i < inner.size(); ++i) {
        const char c = inner[i];
        if (quote != '\0') {
            if (c == quote) quote = '\0';
        } else if (c == '\'' || c == '"') {
            quote = c;
        } else if (c == '(') {
            ++depth;
        } else if (c == ')') {
            if (--depth < 0) return sql;
        } else if (c == ' ' && depth == 0) {
            if (inner.substr(i, 4) != " || ") return sql;
            i += 3;
        }
    }
    return inner;
}

constexpr std::string_view kJoin = "t_join(";
constexpr std::size_t kMostArguments = 127;  // of a function, in SQLite

// The arguments of a call of t_join that is the whole text, and how many they are; none for anything else.
std::pair<std::string_view, std::size_t> joinArguments(std::string_view sql) {
    if (!sql.starts_with(kJoin) || !sql.ends_with(')')) return {};
    const std::string_view inner = sql.substr(kJoin.size(), sql.size() - kJoin.size() - 1);
    std::size_t count = 1;
    int depth = 0;
    char quote = '\0';
    for (const char c : inner) {
        if (quote != '\0') {
            if (c == quote) quote = '\0';
        } else if (c == '\'' || c == '"') {
            quote = c;
        } else if (c == '(') {
            ++depth;
        } else if (c == ')') {
            if (--depth < 0) return {};
        } else if (c == ',' && depth == 0) {
            ++count;
        }
    }
    return {inner, count};
}

// a + b of bytes, as one call for a whole sum: each byte is then copied once, however many terms there are.
std::string joinedBytes(std::string_view a, std::string_view b) {
    const auto [left, leftCount] = joinArguments(a);
    const auto [right, rightCount] = joinArguments(b);
    const bool oneCall = std::max<std::size_t>(leftCount, 1) + std::max<std::size_t>(rightCount, 1) <= kMostArguments;
    const std::string_view first = oneCall && leftCount > 0 ? left : a;
    const std::string_view second = oneCall && rightCount > 0 ? right : b;
    std::string sum(kJoin);
    sum.append(first).append(", ").append(second).push_back(')');
    return sum;
}

}  // namespace

std::string castSql(std::string_view sql, const Type& from, const Type& to, int style, bool tryCast) {
    if (isContained(from, to)) return std::string(sql);
    if (std::string scaled = scaledSql(sql, from, to); !scaled.empty()) return scaled;
    if (isInteger(from.id) && to.id == TypeId::Float) return "CAST(" + std::string(sql) + " AS REAL)";
    std::string out(tryCast ? "t_try_cast(" : "t_cast(");
    out += sql;
    out += ", " + code(from) + ", " + code(to);
    if (style != 0) out += ", " + std::to_string(style);
    return out + ")";
}

std::string storeSql(std::string_view sql, const Type& from, const Type& to, std::string_view table,
                     std::string_view column) {
    if (isContained(from, to)) return std::string(sql);
    return "t_store(" + std::string(sql) + ", " + code(from) + ", " + code(to) + ", " + quoted(table) + ", " +
           quoted(column) + ")";
}

std::string arithmeticSql(BinaryOp op, std::string_view a, const Type& typeA, std::string_view b, const Type& typeB,
                          const Type& result) {
    if (isCharacter(result.id) || isBinary(result.id)) {
        const int most = isUnicode(result.id) ? kMostWide : kMostNarrow;
        const bool whole = result.length == Type::kMax || typeA.length + typeB.length <= most;
        if (isCharacter(result.id) && whole) return "(" + std::string(withinChain(a)) + " || " + std::string(b) + ")";
        if (isBinary(result.id) && whole) return joinedBytes(a, b);
        return "t_concat(" + std::string(a) + ", " + std::string(b) + ", " + code(result) + ")";
    }
    // Text and binary operands become the type of the number beside them.
    const auto isForeign = [](const Type& type) {
        return isCharacter(type.id) || isBinary(type.id) || type.id == TypeId::Null;
    };
    Type x = typeA, y = typeB;
    if (!isTemporal(result.id)) {
        if (isForeign(x)) x = isForeign(y) || y.id == TypeId::Bit ? result : y;
        if (isForeign(y)) y = isForeign(typeA) || typeA.id == TypeId::Bit ? result : x;
    } else {
        if (isForeign(x)) x = result;
        if (isForeign(y)) y = result;
    }
    const std::string left = castSql(a, typeA, x), right = castSql(b, typeB, y);
    switch (op) {
        case BinaryOp::BitAnd: return "(" + left + " & " + right + ")";
        case BinaryOp::BitOr: return "(" + left + " | " + right + ")";
        case BinaryOp::BitXor: return "t_xor(" + left + ", " + right + ")";
        default: break;
    }
    if (isInteger(result.id)) return call("t_i", op, left, right, ", " + code(result));
    if (result.id == TypeId::Float && op != BinaryOp::Modulo) {
        return call("t_f", op, castSql(left, x, result), castSql(right, y, result), "");
    }
    return call("t_", op, left, right, ", " + code(x) + ", " + code(y) + ", " + code(result));
}

std::string negateSql(std::string_view a, const Type& type) {
    const bool plain =
        type.id == TypeId::Float || type.id == TypeId::Real || (type.id == TypeId::Decimal && narrow(type));
    if (plain) return "(-" + std::string(a) + ")";
    return "t_neg(" + std::string(a) + ", " + code(type.id == TypeId::TinyInt ? Type{.id = TypeId::SmallInt} : type) +
           ")";
}

std::string complementSql(std::string_view a, const Type& type) {
    return "t_not(" + std::string(a) + ", " + code(type) + ")";
}

std::string likeSql(std::string_view text, const Type& textType, std::string_view pattern, const Type& patternType,
                    std::string_view escape, int collation) {
    const auto asText = [](std::string_view sql, const Type& type) {
        if (isCharacter(type.id)) return std::string(sql);
        return castSql(sql, type, Type{.id = TypeId::VarChar, .length = kMostNarrow});
    };
    const bool unicode = isUnicode(textType.id) || isUnicode(patternType.id);
    return "t_like(" + asText(text, textType) + ", " + asText(pattern, patternType) + ", " +
           (escape.empty() ? "NULL" : std::string(escape)) + ", " + std::to_string(collation) + ", " +
           (unicode ? "1" : "0") + ")";
}

std::string literalSql(const Value& value, const Type& type) {
    if (isNull(value)) return "NULL";
    if (const auto* n = std::get_if<std::int64_t>(&value)) return std::to_string(*n);
    if (const auto* f = std::get_if<double>(&value)) {
        char text[40];
        std::snprintf(text, sizeof text, "%.17e", *f);
        return text;
    }
    if (const auto* d = std::get_if<Decimal>(&value)) {
        const Int128 unscaled = shiftDigits(d->unscaled, type.scale - d->scale).value_or(d->unscaled);
        return narrow(type) ? toText(unscaled, 0) : hex(encodeWideDecimal(unscaled));
    }
    if (const auto* text = std::get_if<std::string>(&value)) {
        if (text->find('\0') == std::string::npos) return quoted(*text);
        return "CAST(" + hex(std::span(reinterpret_cast<const std::uint8_t*>(text->data()), text->size())) +
               " AS TEXT)";
    }
    if (const auto* bytes = std::get_if<Bytes>(&value)) return hex(*bytes);
    return hex(encodeGuid(std::get<Guid>(value)));
}

}  // namespace sandbox
