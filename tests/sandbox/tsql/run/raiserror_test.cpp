// RAISERROR's formatting, as its documentation and C's printf have it.
#include <gtest/gtest.h>

#include "sandbox/store/values/error.h"
#include "sandbox/tsql/run/interpreter_raiserror.h"

namespace sandbox {
namespace {

Typed number(std::int64_t n) {
    return {Type{.id = TypeId::Int}, n};
}
Typed text(std::string s) {
    return {Type{.id = TypeId::VarChar, .length = 100}, std::move(s)};
}

TEST(Raiserror, FormatsArgumentsAsPrintfDoes) {
    struct Case {
        std::string format;
        std::vector<Typed> arguments;
        std::string want;
    };
    const Case cases[] = {
        {"till %d: %s", {number(7), text("closed")}, "till 7: closed"},
        {"%5d|%-5d|%05d|%+i", {number(42), number(42), number(-42), number(42)}, "   42|42   |-0042|+42"},
        {"%x %X %#x %o %u", {number(255), number(255), number(255), number(8), number(-1)}, "ff FF 0xff 10 4294967295"},
        {"%*d|%-*s|", {number(4), number(1), number(3), text("a")}, "   1|a  |"},
        {"%.3d %.2s", {number(7), text("æøå")}, "007 æø"},
        {"100%% %s", {}, "100% (null)"},
    };
    for (const Case& c : cases) EXPECT_EQ(formatRaiserror(c.format, c.arguments), c.want) << c.format;
}

TEST(Raiserror, RefusesWhatDoesNotFit) {
    const auto raised = [](std::string_view format, std::vector<Typed> arguments) {
        try {
            (void)formatRaiserror(format, arguments);
        } catch (const SqlError& e) {
            return e.messages.front().number;
        }
        return 0;
    };
    EXPECT_EQ(raised("%d", {text("x")}), 2786);
    EXPECT_EQ(raised("%s", {number(1)}), 2786);
    EXPECT_EQ(raised("%q", {number(1)}), 2787);
    EXPECT_EQ(raised("50%", {}), 2787);
    EXPECT_EQ(raised("x", std::vector<Typed>(21, number(1))), 2747);
}

TEST(Raiserror, LongTextsAreCutToTwoThousandAndFortySevenCharacters) {
    const std::string out = formatRaiserror(std::string(3000, 'x'), {});
    EXPECT_EQ(out.size(), 2047u);
    EXPECT_EQ(out.substr(2044), "...");
}

}  // namespace
}  // namespace sandbox
