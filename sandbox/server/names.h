// Names as a server compares them: without case.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace sandbox::server {

// ASCII letters only; what users, programs and system procedures are called.
[[nodiscard]] inline char lowerChar(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

[[nodiscard]] inline std::string lowerName(std::string_view name) {
    std::string out(name);
    std::transform(out.begin(), out.end(), out.begin(), lowerChar);
    return out;
}

[[nodiscard]] inline bool sameName(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lowerChar(x) == lowerChar(y); });
}

}  // namespace sandbox::server
