// Conversions between UTF-8, UTF-16LE and code page 1252.
#include "sandbox/tds/text.h"

#include <algorithm>
#include <array>

namespace sandbox::tds {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// 0x80 to 0x9F; the free ones stand for themselves.
constexpr std::array<char16_t, 32> kCp1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

// What stands before the first such byte is the same in code page 1252 and in UTF-8.
bool isHigh(std::uint8_t byte) {
    return byte >= 0x80;
}

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | c >> 6);
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | c >> 12);
        out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | c >> 18);
        out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
        out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

// Takes one character off the front. Surrogates in three bytes pass; over-long forms and broken sequences do not.
char32_t nextUtf8(std::string_view& text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    std::size_t length = 1;
    char32_t c = first;
    char32_t least = 0;
    if (first >= 0xC2 && first <= 0xDF) {
        length = 2, c = first & 0x1F, least = 0x80;
    } else if (first >= 0xE0 && first <= 0xEF) {
        length = 3, c = first & 0x0F, least = 0x800;
    } else if (first >= 0xF0 && first <= 0xF4) {
        length = 4, c = first & 0x07, least = 0x10000;
    } else if (first >= 0x80) {
        c = kReplacement;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (i >= text.size() || (byte(i) & 0xC0) != 0x80) {
            text.remove_prefix(i);
            return kReplacement;
        }
        c = c << 6 | (byte(i) & 0x3F);
    }
    text.remove_prefix(length);
    return c < least || c > 0x10FFFF ? kReplacement : c;
}

void appendUnit(std::vector<std::uint8_t>& out, char32_t unit) {
    out.push_back(static_cast<std::uint8_t>(unit));
    out.push_back(static_cast<std::uint8_t>(unit >> 8));
}

}  // namespace

std::string utf8FromUtf16(std::span<const std::uint8_t> utf16) {
    const std::size_t count = utf16.size() / 2;
    const auto unit = [&](std::size_t i) { return static_cast<char32_t>(utf16[2 * i] | utf16[2 * i + 1] << 8); };
    std::string out;
    out.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        char32_t c = unit(i);
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < count && unit(i + 1) >= 0xDC00 && unit(i + 1) < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (unit(++i) - 0xDC00);
        }
        appendUtf8(out, c);
    }
    return out;
}

void appendUtf16(std::vector<std::uint8_t>& out, std::string_view utf8) {
    while (!utf8.empty()) {
        const char32_t c = nextUtf8(utf8);
        if (c < 0x10000) {
            appendUnit(out, c);
        } else {
            appendUnit(out, 0xD800 + ((c - 0x10000) >> 10));
            appendUnit(out, 0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
}

std::string utf8FromCp1252(std::span<const std::uint8_t> text) {
    const auto high = std::find_if(text.begin(), text.end(), isHigh);
    std::string out(text.begin(), high);
    out.reserve(text.size());
    for (auto b = high; b != text.end(); ++b) appendUtf8(out, *b >= 0x80 && *b < 0xA0 ? kCp1252High[*b - 0x80] : *b);
    return out;
}

void appendCp1252(std::vector<std::uint8_t>& out, std::string_view utf8) {
    const auto start = std::find_if(utf8.begin(), utf8.end(), isHigh);
    out.insert(out.end(), utf8.begin(), start);
    utf8.remove_prefix(static_cast<std::size_t>(start - utf8.begin()));
    while (!utf8.empty()) {
        const char32_t c = nextUtf8(utf8);
        if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) {
            out.push_back(static_cast<std::uint8_t>(c));
            continue;
        }
        const auto high = std::find(kCp1252High.begin(), kCp1252High.end(), c);
        out.push_back(high == kCp1252High.end() ? std::uint8_t{'?'}
                                                : static_cast<std::uint8_t>(0x80 + (high - kCp1252High.begin())));
    }
}

}  // namespace sandbox::tds
