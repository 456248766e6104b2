// UTF-8, UTF-16 and code page 1252.
#include "sandbox/store/values/text.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace sandbox {
namespace {

// 0x80 to 0x9F of code page 1252.
constexpr std::array<char16_t, 32> kUpperControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

// -1 where the code page has no such character.
int codePageByte(char32_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return static_cast<int>(c);
    const auto found = std::find(kUpperControls.begin(), kUpperControls.end(), c);
    return found == kUpperControls.end() ? -1 : 0x80 + static_cast<int>(found - kUpperControls.begin());
}

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

// The code point at `at`, which moves behind it; U+FFFD for a broken byte.
char32_t nextCodePoint(std::string_view text, std::size_t& at) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(at++);
    if (first < 0x80) return first;
    const int more = first >= 0xF0 && first < 0xF8 ? 3 : first >= 0xE0 ? 2 : first >= 0xC2 ? 1 : 0;
    if (more == 0 || first >= 0xF8 || at + static_cast<std::size_t>(more) > text.size()) return 0xFFFD;
    char32_t c = first & (0x3F >> more);
    for (int i = 0; i < more; ++i) {
        if ((byte(at + static_cast<std::size_t>(i)) & 0xC0) != 0x80) return 0xFFFD;
        c = (c << 6) | (byte(at + static_cast<std::size_t>(i)) & 0x3F);
    }
    at += static_cast<std::size_t>(more);
    return c;
}

template <int (*Map)(int)>
std::string mapCase(std::string_view utf8) {
    std::string out;
    out.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const char32_t c = nextCodePoint(utf8, at);
        appendUtf8(out, static_cast<char32_t>(Map(static_cast<int>(c))));
    }
    return out;
}

int upperPoint(int c) {
    return u_toupper(c);
}
int lowerPoint(int c) {
    return u_tolower(c);
}

}  // namespace

bool isAscii(std::string_view text) {
    std::size_t i = 0;
    for (; i + 8 <= text.size(); i += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + i, 8);
        if (word & 0x8080808080808080u) return false;
    }
    for (; i < text.size(); ++i) {
        if (static_cast<unsigned char>(text[i]) >= 0x80) return false;
    }
    return true;
}

std::size_t utf16Length(std::string_view utf8) {
    if (isAscii(utf8)) return utf8.size();
    std::size_t units = 0;
    for (std::size_t at = 0; at < utf8.size();) units += nextCodePoint(utf8, at) > 0xFFFF ? 2 : 1;
    return units;
}

std::u16string toUtf16(std::string_view utf8) {
    std::u16string out;
    out.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const char32_t c = nextCodePoint(utf8, at);
        if (c > 0xFFFF) {
            out += static_cast<char16_t>(0xD7C0 + (c >> 10));
            out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
        } else {
            out += static_cast<char16_t>(c);
        }
    }
    return out;
}

std::string toUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00u);
        } else if (c >= 0xD800 && c < 0xE000) {
            c = 0xFFFD;
        }
        appendUtf8(out, c);
    }
    return out;
}

std::string_view leftUnits(std::string_view utf8, std::size_t units) {
    if (utf8.size() <= units) return utf8;
    std::size_t at = 0;
    while (at < utf8.size()) {
        std::size_t next = at;
        const std::size_t width = nextCodePoint(utf8, next) > 0xFFFF ? 2 : 1;
        if (width > units) break;
        units -= width;
        at = next;
    }
    return utf8.substr(0, at);
}

std::vector<std::uint8_t> toCodePage1252(std::string_view utf8) {
    std::vector<std::uint8_t> out;
    out.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const char32_t c = nextCodePoint(utf8, at);
        const int byte = codePageByte(c);
        out.push_back(byte < 0 ? '?' : static_cast<std::uint8_t>(byte));
        if (c > 0xFFFF) out.push_back('?');  // two units, two question marks
    }
    return out;
}

std::string fromCodePage1252(std::span<const std::uint8_t> bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (const std::uint8_t b : bytes) appendUtf8(out, b >= 0x80 && b < 0xA0 ? kUpperControls[b - 0x80u] : char32_t{b});
    return out;
}

std::string keepCodePage1252(std::string_view utf8) {
    if (isAscii(utf8)) return std::string(utf8);
    return fromCodePage1252(toCodePage1252(utf8));
}

std::string_view trimTrailingBlanks(std::string_view text) {
    const auto last = text.find_last_not_of(' ');
    return last == std::string_view::npos ? std::string_view{} : text.substr(0, last + 1);
}

std::string_view trimBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    return first == std::string_view::npos ? std::string_view{} : trimTrailingBlanks(text.substr(first));
}

std::string upperCase(std::string_view utf8) {
    return mapCase<upperPoint>(utf8);
}
std::string lowerCase(std::string_view utf8) {
    return mapCase<lowerPoint>(utf8);
}

}  // namespace sandbox
