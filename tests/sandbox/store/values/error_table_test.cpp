// The table of errors: its order, and what its rows have in common. That every use names a row, with as many arguments
// as the row has places, is the compiler's to check.
#include "sandbox/store/values/error_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <tuple>

namespace sandbox {
namespace {

TEST(ErrorTable, RowsStandInOrderAndNoneTwice) {
    const auto key = [](const ErrorRow& row) { return std::tuple(row.number, row.state, row.variant); };
    for (std::size_t i = 1; i < kErrorTable.size(); ++i) {
        EXPECT_LT(key(kErrorTable[i - 1]), key(kErrorTable[i])) << kErrorTable[i].number;
    }
}

TEST(ErrorTable, ANumberHasOneSeverityAndOneTextWhateverTheState) {
    std::map<std::pair<int, int>, const ErrorRow*> known;
    for (const ErrorRow& row : kErrorTable) {
        const auto [first, isNew] = known.try_emplace({row.number, row.variant}, &row);
        if (isNew) continue;
        EXPECT_EQ(row.text, first->second->text) << row.number;
        EXPECT_EQ(row.severity, first->second->severity) << row.number;
    }
}

TEST(ErrorTable, AVariantIsAnotherTextThanTheFirst) {
    for (const ErrorRow& row : kErrorTable) {
        if (row.variant == 0) continue;
        const bool differs = std::any_of(kErrorTable.begin(), kErrorTable.end(), [&](const ErrorRow& other) {
            return other.number == row.number && other.variant == 0 && other.text != row.text;
        });
        EXPECT_TRUE(differs) << row.number;
    }
}

TEST(ErrorTable, SeveritiesAndStatesAreThoseThatTheProtocolCarries) {
    for (const ErrorRow& row : kErrorTable) {
        EXPECT_TRUE(row.severity >= 0 && row.severity <= 25) << row.number;
        EXPECT_TRUE(row.state >= 0 && row.state <= 255) << row.number;
    }
}

TEST(ErrorTable, TextsHaveNoBraceButThoseOfPlaces) {
    for (const ErrorRow& row : kErrorTable) {
        EXPECT_FALSE(row.text.empty()) << row.number;
        const auto places = static_cast<std::ptrdiff_t>(errors::argumentsOf(row.text));
        EXPECT_EQ(std::count(row.text.begin(), row.text.end(), '{'), places) << row.number;
        EXPECT_EQ(std::count(row.text.begin(), row.text.end(), '}'), places) << row.number;
    }
}

TEST(ErrorTable, AMessageHasItsArgumentsInTheirPlaces) {
    const Message message = errorMessage<8115>("IDENTITY", std::string("int")).withState(2).in("p").atLine(7);
    EXPECT_EQ(message.number, 8115);
    EXPECT_EQ(message.severity, 16);
    EXPECT_EQ(message.state, 2);
    EXPECT_EQ(message.text, "Arithmetic overflow error converting IDENTITY to data type int.");
    EXPECT_EQ(message.procedure, "p");
    EXPECT_EQ(message.line, 7);
    EXPECT_EQ(errorMessage<1205>(51).text.substr(0, 30), "Transaction (Process ID 51) wa");
}

TEST(ErrorTable, AnArgumentThatLooksLikeAPlaceIsText) {
    EXPECT_EQ(errorMessage<468>("{}", "b", "c").text,
              "Cannot resolve the collation conflict between \"{}\" and \"b\" in the c operation.");
}

}  // namespace
}  // namespace sandbox
