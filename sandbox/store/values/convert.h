// Conversions between T-SQL types with SQL Server's results and errors. Used by the functions behind t_cast and
// t_store, by the interpreter for variables and parameters, and by the wire protocol for what clients send.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "sandbox/store/values/error.h"
#include "sandbox/store/values/type.h"
#include "sandbox/store/values/value.h"

namespace sandbox {

// SET DATEFORMAT.
enum class DateOrder : std::uint8_t { Mdy, Dmy, Ymd, Ydm, Myd, Dym };

// What a session's settings say about conversions.
struct ConvertContext {
    DateOrder dateOrder = DateOrder::Mdy;
    bool norwegian = false;  // names of months and days; us_english otherwise
};

// Whether a type may turn into another: by itself, with CAST only, or never.
enum class Conversion { Implicit, Explicit, None };
[[nodiscard]] Conversion conversionKind(const Type& from, const Type& to);

// Raises 257 or 206 (implicit) and 529 (explicit) where the conversion is not allowed. For the binder, before any value
// is known; convert() itself does not look.
void requireImplicitConversion(const Type& from, const Type& to);
void requireExplicitConversion(const Type& from, const Type& to);

// The value as one of type `to`: rounded, cut (text that is too long), padded (char, nchar and binary of fixed length).
// style: CONVERT's third argument, 0 for none. Null stays Null. Raises SqlError 220, 232, 235, 241, 242, 244, 245, 248,
// 281, 295, 298, 8114, 8115, 8169, 8170 or 529 with SQL Server's text.
[[nodiscard]] Value convert(const Value& value, const Type& from, const Type& to, const ConvertContext& context = {},
                            int style = 0);

// Like convert(), for storing into a column: raises 8152 where text or bytes are cut that are not trailing blanks.
[[nodiscard]] Value convertForStore(const Value& value, const Type& from, const Type& to,
                                    const ConvertContext& context = {});

// The text of a value as PRINT, RAISERROR and the duplicate-key message show it: CONVERT's default style, not cut.
[[nodiscard]] std::string displayText(const Value& value, const Type& type, const ConvertContext& context = {});

// ISDATE and ISNUMERIC.
[[nodiscard]] bool looksLikeDate(std::string_view text, const ConvertContext& context);
[[nodiscard]] bool looksLikeNumber(std::string_view text);

}  // namespace sandbox
