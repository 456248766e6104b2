// The conversions whose target is text or binary, and the texts of values. Used by convert() and by functions that
// write numbers.
#pragma once

#include <string>

#include "sandbox/store/values/convert.h"

namespace sandbox::conversion {

// The whole text of a value, before it is cut or padded.
[[nodiscard]] std::string textOf(const Value& value, const Type& from, const Type& to, const ConvertContext& context,
                                 int style);
// The text cut and padded to what the type holds; code page 1252 where it is no Unicode type.
[[nodiscard]] std::string fitText(std::string text, const Type& to, bool mayHoldUnicode);
// How a value of `from` that is too long for `to` fares: cut, "*" or an error.
[[nodiscard]] std::string shortenText(std::string text, const Type& from, const Type& to);

[[nodiscard]] Bytes bytesOf(const Value& value, const Type& from, const Type& to, int style);
[[nodiscard]] Guid guidOf(const Value& value, const Type& from, const Type& to);

[[nodiscard]] std::string floatText(double value, int style);
[[nodiscard]] std::string moneyText(std::int64_t units, int style);
[[nodiscard]] std::string guidText(const Guid& guid);

}  // namespace sandbox::conversion
