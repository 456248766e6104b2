// The lexer: what T-SQL text falls into.
#include "sandbox/tsql/syntax/lexer.h"

#include <gtest/gtest.h>

#include <string>

namespace sandbox {
namespace {

// Each token as a letter of its kind and its text: "W:SELECT I:1".
std::string tokens(std::string_view text, bool quotedIdentifier = true) {
    static constexpr std::string_view kKinds = "EWQLVGSNIDFMBOX";
    std::string out;
    for (const Token& token : tokenize(text, quotedIdentifier, 1).list) {
        if (token.kind == TokenKind::End) break;
        if (!out.empty()) out += ' ';
        out += kKinds[static_cast<std::size_t>(token.kind)];
        out += ':' + token.text;
    }
    return out;
}

TEST(Lexer, TokensByKind) {
    const struct {
        const char* text;
        const char* expected;
    } cases[] = {
        {"SELECT a_1, #t, @v, @@x, $action", "W:SELECT W:a_1 O:, W:#t O:, V:@v O:, G:@@x O:, W:$action"},
        {"[a b]]c] \"d\"\"e\"", "Q:a b]c Q:d\"e"},
        {"'it''s' N'x' n'y' Nx", "S:it's N:x N:y W:Nx"},
        {"1 1.5 .5 1. 1e5 1.5E-3 1e", "I:1 D:1.5 D:.5 D:1. F:1e5 F:1.5E-3 F:1e"},
        {"$1.5 $ 0x1F 0X", "M:1.5 M: B:1F B:"},
        {"a<=b!=c<>d!<e+=f^=1", "W:a O:<= W:b O:!= W:c O:<> W:d O:!< W:e O:+= W:f O:^= I:1"},
        {"ende: x :y OBJECT::z", "L:ende L:x W:y W:OBJECT O::: W:z"},
        {"\xC3\x85r\xC3\xB8\xC2\xA0x", "W:\xC3\x85r\xC3\xB8 W:x"},
        {"a--b\nc/*d/*e*/f*/g", "W:a W:c W:g"},
        {"?{}", "O:? O:{ O:}"},
        {"a.b..c", "W:a O:. W:b O:. O:. W:c"},
        {"", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(tokens(c.text), c.expected) << c.text;
}

TEST(Lexer, DoubleQuotesAreTextWhenIdentifiersMayNotBeQuotedSo) {
    EXPECT_EQ(tokens("\"a\"", false), "S:a");
}

TEST(Lexer, PlacesAreLinesAndOffsets) {
    const Tokens read = tokenize("a\r\n /*\n*/ bc", true, 5);
    ASSERT_EQ(read.list.size(), 3U);
    EXPECT_EQ(read.list[0].place.line, 5);
    EXPECT_EQ(read.list[1].place.line, 7);
    EXPECT_EQ(read.list[1].place.offset, 10U);
    EXPECT_EQ(read.list[1].end, 12U);
}

TEST(Lexer, ParenthesesKnowTheirPartners) {
    const Tokens read = tokenize("((a) b", true, 1);
    EXPECT_EQ(read.list[0].match, -1);
    EXPECT_EQ(read.list[1].match, 3);
}

TEST(Lexer, WhatHasNoEndBecomesAnError) {
    const struct {
        const char* text;
        int number;
        int line;
    } cases[] = {{"a\n'b\nc", 105, 2}, {"[b", 105, 1}, {"\"b", 105, 1}, {"a /* /* */", 113, 1}};
    for (const auto& c : cases) {
        const Tokens read = tokenize(c.text, true, 1);
        ASSERT_FALSE(read.problem.empty()) << c.text;
        EXPECT_EQ(read.problem.front().number, c.number) << c.text;
        EXPECT_EQ(read.problem.front().line, c.line) << c.text;
        EXPECT_EQ(read.list[read.list.size() - 2].kind, TokenKind::Error) << c.text;
    }
}

TEST(Lexer, ReservedWords) {
    EXPECT_TRUE(isReserved("SELECT"));
    EXPECT_TRUE(isReserved("WITH"));
    EXPECT_TRUE(isReserved("ADD"));
    EXPECT_FALSE(isReserved("NOLOCK"));
    EXPECT_FALSE(isReserved("OUTPUT"));
    EXPECT_FALSE(isReserved(""));
}

}  // namespace
}  // namespace sandbox
