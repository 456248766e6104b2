// Collations: order, equality, names; the short way for ASCII against ICU.
#include "sandbox/store/values/collation.h"

#include <gtest/gtest.h>
#include <unicode/ucol.h>

#include <algorithm>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "sandbox/store/values/error.h"
#include "sandbox/store/values/text.h"

namespace sandbox {
namespace {

int sign(int n) {
    return n < 0 ? -1 : n > 0 ? 1 : 0;
}

TEST(Collation, NorwegianLettersComeLast) {
    const int danish = collationCode("Danish_Norwegian_CI_AS");
    std::vector<std::string> names = {"Ål", "Zebra", "ost", "Ærlig", "Østers", "Agurk", "OST2"};
    std::sort(names.begin(), names.end(), [&](const auto& a, const auto& b) { return compare(danish, a, b) < 0; });
    EXPECT_EQ(names, (std::vector<std::string>{"Agurk", "ost", "OST2", "Zebra", "Ærlig", "Østers", "Ål"}));
    EXPECT_GT(compare(danish, "Haakon", "Hz"), 0) << "aa is å's companion";
    EXPECT_NE(compare(danish, "Haakon", "Håkon"), 0);
    const int latin = collationCode("Latin1_General_CI_AS");
    EXPECT_LT(compare(latin, "Ål", "Zebra"), 0);
    EXPECT_LT(compare(latin, "Haakon", "Hz"), 0);
}

TEST(Collation, CaseAndTrailingBlanksDoNotCount) {
    const int code = collationCode("");
    EXPECT_EQ(compare(code, "abc  ", "ABC"), 0);
    EXPECT_EQ(compare(code, "", "   "), 0);
    EXPECT_EQ(compare(code, "øSTERS", "Østers"), 0);
    EXPECT_NE(compare(code, " abc", "abc"), 0);
    EXPECT_NE(compare(code, "cafe", "café"), 0);
    EXPECT_NE(compare(collationCode("Latin1_General_CS_AS"), "abc", "ABC"), 0);
    EXPECT_EQ(compare(collationCode("Latin1_General_CI_AI"), "cafe", "CAFÉ"), 0);
    EXPECT_LT(compare(collationCode("Latin1_General_BIN2"), "B", "a"), 0);
}

TEST(Collation, UnknownNamesAreRefused) {
    EXPECT_EQ(collationCode("database_default"), collationCode("danish_norwegian_ci_as"));
    EXPECT_EQ(sqliteCollation("SQL_Latin1_General_CP1_CI_AS"), "t_sql1_ci_as");
    for (const char* name : {"Nowhere_CI_AS", "Danish_Norwegian", "Danish_Norwegian_CI_XX"}) {
        try {
            (void)collationCode(name);
            ADD_FAILURE() << name;
        } catch (const SqlError& error) {
            EXPECT_EQ(error.messages[0].number, 448);
            EXPECT_EQ(error.messages[0].text, "Invalid collation '" + std::string(name) + "'.");
        }
    }
}

TEST(Collation, AsciiAgreesWithIcu) {
    const struct {
        const char* name;
        const char* icu;
        UCollationStrength strength;
    } cases[] = {{"Danish_Norwegian_CI_AS", "nb", UCOL_SECONDARY},
                 {"Danish_Norwegian_CS_AS", "nb", UCOL_TERTIARY},
                 {"Latin1_General_CI_AS", "root", UCOL_SECONDARY},
                 {"Latin1_General_CS_AS", "root", UCOL_TERTIARY}};
    std::mt19937 random(1);
    const std::string alphabet = "aAaAbBzZ09 -_.'/";
    const auto text = [&] {
        std::string s;
        for (std::size_t i = random() % 6; i > 0; --i) s += alphabet[random() % alphabet.size()];
        return s;
    };
    for (const auto& c : cases) {
        UErrorCode status = U_ZERO_ERROR;
        const std::unique_ptr<UCollator, void (*)(UCollator*)> icu(ucol_open(c.icu, &status), ucol_close);
        ucol_setStrength(icu.get(), c.strength);
        const int code = collationCode(c.name);
        for (int i = 0; i < 20'000; ++i) {
            const std::string a = text(), b = text();
            const std::string_view x = trimTrailingBlanks(a), y = trimTrailingBlanks(b);
            const int wanted = ucol_strcollUTF8(icu.get(), x.data(), static_cast<int>(x.size()), y.data(),
                                                static_cast<int>(y.size()), &status);
            ASSERT_EQ(sign(compare(code, a, b)), sign(wanted)) << c.name << ": '" << a << "' '" << b << "'";
        }
    }
}

TEST(Collation, ComparesFromSeveralThreads) {
    const int code = collationCode("");
    std::vector<std::thread> threads;
    std::array<int, 4> wrong{};
    for (int& count : wrong) {
        threads.emplace_back([&count, code] {
            for (int i = 0; i < 2'000; ++i) count += compare(code, "Østers", "øSTERS") != 0 ? 1 : 0;
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, (std::array<int, 4>{}));
}

TEST(Collation, NamesAreFoundWithoutCase) {
    EXPECT_TRUE(sameName("Avdeling_Øst", "AVDELING_øST"));
    EXPECT_FALSE(sameName("a", "b"));
    EXPECT_EQ(foldName("Kasse"), "kasse");
}

TEST(Text, CountsUtf16Units) {
    EXPECT_EQ(utf16Length("æøå"), 3u);
    EXPECT_EQ(utf16Length("😀"), 2u);
    EXPECT_EQ(leftUnits("æøå", 2), "æø");
    EXPECT_EQ(toUtf8(toUtf16("a😀å")), "a😀å");
    EXPECT_EQ(toUtf8(toUtf16("a\xFF"
                             "b")),
              "a\uFFFDb");
}

TEST(Text, CodePage1252HasNoGreek) {
    EXPECT_EQ(keepCodePage1252("æ€Ω"), "æ€?");
    EXPECT_EQ(toCodePage1252("€å"), (std::vector<std::uint8_t>{0x80, 0xE5}));
    std::vector<std::uint8_t> all(256);
    for (int i = 0; i < 256; ++i) all[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(i);
    EXPECT_EQ(toCodePage1252(fromCodePage1252(all)), all);
}

}  // namespace
}  // namespace sandbox
