// Text between its three forms: UTF-8 inside the server, UTF-16LE for the nchar family, and code page 1252 for the char
// family. A lone surrogate, which SQL Server's nvarchar may hold, survives the way in and out as three bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox::tds {

// An odd last byte is dropped.
[[nodiscard]] std::string utf8FromUtf16(std::span<const std::uint8_t> utf16);
// Bytes that are no UTF-8 become U+FFFD.
void appendUtf16(std::vector<std::uint8_t>& out, std::string_view utf8);

// The five bytes that code page 1252 leaves free become the control characters of the same number, as on Windows.
[[nodiscard]] std::string utf8FromCp1252(std::span<const std::uint8_t> text);
// Characters outside the code page become '?'.
void appendCp1252(std::vector<std::uint8_t>& out, std::string_view utf8);

}  // namespace sandbox::tds
