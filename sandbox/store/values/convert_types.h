// The rules by which types meet: results of operators, common types of CASE, UNION and IN, types of literals. The
// binder asks here and inserts the casts.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "sandbox/store/values/type.h"
#include "sandbox/store/values/value.h"

namespace sandbox {

enum class BinaryOp : std::uint8_t { Add, Subtract, Multiply, Divide, Modulo, BitAnd, BitOr, BitXor };
enum class CompareOp : std::uint8_t { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };
// As errors name it: "equal to".
[[nodiscard]] std::string_view operatorName(CompareOp op);

// The result of `a op b`; for Add of two texts (or two binaries) the concatenation's. Raises 402, 206 or 8117.
[[nodiscard]] Type binaryResultType(BinaryOp op, const Type& a, const Type& b);
// Unary minus (8117 where there is none) and ~.
[[nodiscard]] Type negatedType(const Type& type);
[[nodiscard]] Type complementType(const Type& type);

// The type that all branches of CASE, COALESCE, UNION, VALUES or a set operation take. Nulls are left out; only nulls
// give int. Raises 206 or 257 where the types do not meet.
[[nodiscard]] Type commonType(std::span<const Type> types);
[[nodiscard]] Type commonType(const Type& a, const Type& b);

// The type in which both sides of a comparison are compared. Raises 402 (text, ntext, image), 206 or 257.
[[nodiscard]] Type comparisonType(CompareOp op, const Type& a, const Type& b);

// Literals. A number: "12" int or numeric, "1.50" numeric(3,2), "1e3" float. Raises 1007 above 38 digits.
[[nodiscard]] Typed numberLiteral(std::string_view text);
[[nodiscard]] Typed moneyLiteral(std::string_view text);               // "$12.50"
[[nodiscard]] Typed textLiteral(std::string_view text, bool unicode);  // the text between the quotes, UTF-8
[[nodiscard]] Typed binaryLiteral(std::string_view text);              // "0x1F"; odd digit counts get a leading zero

// An integer, money or bit type as the decimal that arithmetic with decimals takes it for: int is decimal(10,0).
[[nodiscard]] Type asDecimal(const Type& type);

// The type that an integer literal takes beside a decimal: as many digits as it has, so that 2.0 / 3 has six decimals.
// Any other value keeps its type.
[[nodiscard]] Type literalBesideDecimal(const Type& type, const Value& literal);

}  // namespace sandbox
