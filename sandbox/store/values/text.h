// Text in the units that T-SQL counts: UTF-16 code units, and bytes of code page 1252 for char and varchar. Texts are
// UTF-8 everywhere else in the sandbox. Used by conversions, functions and the wire protocol.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

[[nodiscard]] bool isAscii(std::string_view text);
[[nodiscard]] std::size_t utf16Length(std::string_view utf8);
[[nodiscard]] std::u16string toUtf16(std::string_view utf8);  // broken bytes become U+FFFD
[[nodiscard]] std::string toUtf8(std::u16string_view text);

// The first `units` UTF-16 units of a text.
[[nodiscard]] std::string_view leftUnits(std::string_view utf8, std::size_t units);

// Code page 1252: what it does not hold becomes '?'; the five codes without a character map to U+0081 and so on.
[[nodiscard]] std::vector<std::uint8_t> toCodePage1252(std::string_view utf8);
[[nodiscard]] std::string fromCodePage1252(std::span<const std::uint8_t> bytes);
[[nodiscard]] std::string keepCodePage1252(std::string_view utf8);  // the text as a varchar holds it

[[nodiscard]] std::string_view trimBlanks(std::string_view text);  // both ends, blanks only
[[nodiscard]] std::string_view trimTrailingBlanks(std::string_view text);

[[nodiscard]] std::string upperCase(std::string_view utf8);
[[nodiscard]] std::string lowerCase(std::string_view utf8);

}  // namespace sandbox
