// Text between UTF-8, UTF-16 and code page 1252.
#include <gtest/gtest.h>

#include "sandbox/tds/text.h"

namespace sandbox::tds {
namespace {

using Buffer = std::vector<std::uint8_t>;

Buffer utf16(std::string_view text) {
    Buffer out;
    appendUtf16(out, text);
    return out;
}

Buffer cp1252(std::string_view text) {
    Buffer out;
    appendCp1252(out, text);
    return out;
}

TEST(TdsText, Utf16KeepsLettersOfAllPlanes) {
    for (const char* text : {"", "abc", "æøåÆØÅ", "€ – “x”", "日本", "😀 x"}) {
        EXPECT_EQ(utf8FromUtf16(utf16(text)), text);
    }
    EXPECT_EQ(utf16("aÅ"), (Buffer{'a', 0, 0xC5, 0}));
    EXPECT_EQ(utf16("😀"), (Buffer{0x3D, 0xD8, 0x00, 0xDE}));
}

TEST(TdsText, LoneSurrogateSurvivesBothWays) {
    const Buffer lone = {0x3D, 0xD8, 'x', 0, 0x00, 0xDE};
    EXPECT_EQ(utf16(utf8FromUtf16(lone)), lone);
}

TEST(TdsText, BrokenUtf8BecomesTheReplacementCharacter) {
    for (const char* broken : {"\xC3", "\xFF", "\x80", "\xE2\x82", "\xC0\x80"}) {
        const Buffer units = utf16(broken);
        ASSERT_GE(units.size(), 2U);
        EXPECT_EQ(units[0] | units[1] << 8, 0xFFFD) << broken;
    }
    EXPECT_EQ(utf16("\xC3z"), (Buffer{0xFD, 0xFF, 'z', 0}));
}

TEST(TdsText, CodePage1252BothWays) {
    EXPECT_EQ(cp1252("æøåÆØÅ"), (Buffer{0xE6, 0xF8, 0xE5, 0xC6, 0xD8, 0xC5}));
    EXPECT_EQ(cp1252("€“”–"), (Buffer{0x80, 0x93, 0x94, 0x96}));
    EXPECT_EQ(cp1252("日"), (Buffer{'?'}));
    for (int b = 0; b < 256; ++b) {
        const Buffer one = {static_cast<std::uint8_t>(b)};
        EXPECT_EQ(cp1252(utf8FromCp1252(one)), one) << b;
    }
}

}  // namespace
}  // namespace sandbox::tds
