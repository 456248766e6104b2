// The errors of conversions and arithmetic, each with SQL Server's number, state, text and effect. Thrown by the
// conversions, the operators and the functions on values.
#pragma once

#include <string>
#include <string_view>

#include "sandbox/store/values/error.h"
#include "sandbox/store/values/type.h"

namespace sandbox::errors {

// A type's name in messages about values: decimal is told as numeric.
[[nodiscard]] std::string valueTypeName(const Type& type);

[[nodiscard]] SqlError conversionFailed(const Type& from, std::string_view value, const Type& to);     // 245
[[nodiscard]] SqlError integerTextTooLarge(const Type& from, std::string_view value, const Type& to);  // 244, 248
[[nodiscard]] SqlError errorConverting(const Type& from, const Type& to);                              // 8114
[[nodiscard]] SqlError overflowConverting(std::string_view what, const Type& to, int state);           // 8115
[[nodiscard]] SqlError expressionOverflow(const Type& to);                                             // 8115
[[nodiscard]] SqlError valueOverflow(const Type& to, std::string_view value);                          // 220
[[nodiscard]] SqlError floatOverflow(const Type& to, double value);                                    // 232
[[nodiscard]] SqlError dateSyntax(const Type& to);                                                     // 241, 295
[[nodiscard]] SqlError dateRange(const Type& from, const Type& to);                                    // 242
[[nodiscard]] SqlError smallDateTimeRange();                                                           // 298
[[nodiscard]] SqlError moneySyntax();                                                                  // 235
[[nodiscard]] SqlError moneySpace(const Type& to);                                                     // 234
[[nodiscard]] SqlError guidSyntax();                                                                   // 8169
[[nodiscard]] SqlError guidSpace();                                                                    // 8170
[[nodiscard]] SqlError invalidStyle(int style, const Type& from);                                      // 281
[[nodiscard]] SqlError truncated();                                                                    // 8152
[[nodiscard]] SqlError divideByZero();                                                                 // 8134
[[nodiscard]] SqlError operandClash(const Type& from, const Type& to);                                 // 206
[[nodiscard]] SqlError implicitNotAllowed(const Type& from, const Type& to);                           // 257
[[nodiscard]] SqlError explicitNotAllowed(const Type& from, const Type& to);                           // 529
[[nodiscard]] SqlError incompatible(const Type& a, const Type& b, std::string_view operatorName);      // 402
[[nodiscard]] SqlError invalidOperand(const Type& type, std::string_view operatorName);                // 8117
[[nodiscard]] SqlError invalidFloatOperation();                                                        // 3623
[[nodiscard]] SqlError invalidArgument(const Type& type, int argument, std::string_view function);     // 8116

}  // namespace sandbox::errors
