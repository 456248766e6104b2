// The functions as SQLite calls them: planned calls, result types, session functions, and the errors they leave.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "sandbox/store/values/datetime.h"
#include "tests/sandbox/store/functions/functions_fixture.h"

namespace sandbox {
namespace {

TEST_F(Functions, ScalarFunctionsGiveSqlServersValues) {
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        const char* value;
    } cases[] = {
        {"LEN", {"'ab  '"}, "2"},
        {"LEN", {"N'æ😀'"}, "3"},
        {"LEN", {"12"}, "2"},
        {"DATALENGTH", {"'ab  '"}, "4"},
        {"DATALENGTH", {"N'æøå'"}, "6"},
        {"DATALENGTH", {"1"}, "4"},
        {"DATALENGTH", {"0x00FF10"}, "3"},
        {"SUBSTRING", {"'abcdef'", "2", "3"}, "bcd"},
        {"SUBSTRING", {"'abcdef'", "0", "3"}, "ab"},
        {"SUBSTRING", {"'abcdef'", "9", "3"}, ""},
        {"SUBSTRING", {"N'æøå'", "2", "1"}, "ø"},
        {"SUBSTRING", {"0x010203", "2", "1"}, "0x02"},
        {"SUBSTRING", {"'abc'", "1", "-1"}, "537 Invalid length parameter passed to the LEFT or SUBSTRING function."},
        {"LEFT", {"'abc'", "2"}, "ab"},
        {"RIGHT", {"'abc'", "2"}, "bc"},
        {"RIGHT", {"'abc'", "9"}, "abc"},
        {"LEFT", {"12345", "2"}, "12"},
        {"LTRIM", {"'  a '"}, "a "},
        {"RTRIM", {"' a  '"}, " a"},
        {"TRIM", {"' a  '"}, "a"},
        {"UPPER", {"'æb'"}, "ÆB"},
        {"LOWER", {"'ÆB'"}, "æb"},
        {"REVERSE", {"'abc'"}, "cba"},
        {"REPLICATE", {"'ab'", "2"}, "abab"},
        {"REPLICATE", {"'ab'", "-1"}, "NULL"},
        {"SPACE", {"2"}, "  "},
        {"STUFF", {"'abcdef'", "2", "3", "'ZZ'"}, "aZZef"},
        {"STUFF", {"'abc'", "0", "1", "'x'"}, "NULL"},
        {"STUFF", {"'abc'", "1", "1", "NULL"}, "bc"},
        {"REPLACE", {"'aXbx'", "'x'", "'-'"}, "a-b-"},
        {"REPLACE", {"'abc'", "''", "'-'"}, "abc"},
        {"REPLACE", {"'abc'", "NULL", "'-'"}, "NULL"},
        {"CHARINDEX", {"'CD'", "'abcdef'"}, "3"},
        {"CHARINDEX", {"'b'", "'abab'", "3"}, "4"},
        {"CHARINDEX", {"'x'", "'abc'"}, "0"},
        {"CHARINDEX", {"'Ø'", "'bøk'"}, "2"},
        {"PATINDEX", {"'%[0-9]%'", "'ab3'"}, "3"},
        {"PATINDEX", {"'ab%'", "'abc'"}, "1"},
        {"PATINDEX", {"'%x%'", "'abc'"}, "0"},
        {"ASCII", {"'A'"}, "65"},
        {"ASCII", {"'å'"}, "229"},
        {"UNICODE", {"N'Ω'"}, "937"},
        {"CHAR", {"66"}, "B"},
        {"CHAR", {"256"}, "NULL"},
        {"NCHAR", {"937"}, "Ω"},
        {"STR", {"12.3", "8", "2"}, "   12.30"},
        {"STR", {"123.456"}, "       123"},
        {"STR", {"12345", "3"}, "***"},
        {"CONCAT", {"'a'", "NULL", "1", "$2.5"}, "a12.50"},
        {"CONCAT_WS", {"', '", "'a'", "NULL", "'b'"}, "a, b"},
        {"QUOTENAME", {"'a]b'"}, "[a]]b]"},
        {"SOUNDEX", {"'Robert'"}, "R163"},
        {"DIFFERENCE", {"'Robert'", "'Rupert'"}, "4"},
        {"PARSENAME", {"'srv.db.dbo.t'", "1"}, "t"},
        {"PARSENAME", {"'[d.b].dbo.t'", "3"}, "d.b"},
        {"ISNUMERIC", {"'12.5'"}, "1"},
        {"ISNUMERIC", {"'x'"}, "0"},
        {"ISNUMERIC", {"'$1,2'"}, "1"},
        {"ISNUMERIC", {"NULL"}, "0"},
        {"ISDATE", {"'20240230'"}, "0"},
        {"ISDATE", {"'20240228'"}, "1"},
        {"ABS", {"-1.50"}, "1.50"},
        {"ABS", {"-3"}, "3"},
        {"SIGN", {"-1.5"}, "-1.0"},
        {"ROUND", {"2.345", "2"}, "2.350"},
        {"ROUND", {"-2.5", "0"}, "-3.0"},
        {"ROUND", {"1234.567", "-2"}, "1200.000"},
        {"ROUND", {"2.349", "2", "1"}, "2.340"},
        {"ROUND", {"9.9", "0"}, "8115 Arithmetic overflow error converting expression to data type numeric."},
        {"ROUND", {"1250", "-2"}, "1300"},
        {"ROUND", {"2.5e0", "0"}, "3"},
        {"FLOOR", {"-1.5"}, "-2"},
        {"CEILING", {"1.2"}, "2"},
        {"FLOOR", {"$-1.5"}, "-2.00"},
        {"POWER", {"2", "10"}, "1024"},
        {"POWER", {"2", "40"}, "8115 Arithmetic overflow error converting expression to data type int."},
        {"SQRT", {"16"}, "4"},
        {"SQRT", {"-1"}, "3623 An invalid floating point operation occurred."},
        {"LOG10", {"1000"}, "3"},
        {"LOG", {"8", "2"}, "3"},
        {"DATEADD", {"month", "1", "'20240131'"}, "Feb 29 2024 12:00AM"},
        {"DATEDIFF", {"day", "'20240228 23:59'", "'20240301 00:01'"}, "2"},
        {"DATEPART", {"weekday", "'20240228'"}, "4"},
        {"DATENAME", {"month", "'20240228'"}, "February"},
        {"DATENAME", {"dw", "'20240228'"}, "Wednesday"},
        {"YEAR", {"'20240228'"}, "2024"},
        {"EOMONTH", {"'20240210'"}, "2024-02-29"},
        {"EOMONTH", {"'20240210'", "1"}, "2024-03-31"},
        {"DATEFROMPARTS", {"2024", "2", "29"}, "2024-02-29"},
        {"DATEFROMPARTS",
         {"2023", "2", "29"},
         "289 Cannot construct data type date, some of the arguments have values which are not valid."},
        {"ISNULL", {"NULL", "'x'"}, "x"},
        {"COALESCE", {"NULL", "1", "2.5"}, "1.0"},
        {"CHOOSE", {"2", "'a'", "'b'"}, "b"},
        {"CHOOSE", {"3", "'a'", "'b'"}, "NULL"},
        {"CHECKSUM", {"42"}, "42"},
        {"DB_NAME", {}, "hoved"},
        {"DB_ID", {}, "5"},
        {"SUSER_SNAME", {}, "sa"},
        {"USER_NAME", {}, "dbo"},
        {"TYPE_NAME", {"56"}, "int"},
        {"OBJECT_ID", {"'t'"}, "NULL"},
        {"ERROR_NUMBER", {}, "NULL"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(call(c.name, c.arguments), c.value) << c.name << (c.arguments.empty() ? "" : "(" + c.arguments[0]);
    }
}

TEST_F(Functions, ResultTypesFollowTheArguments) {
    const auto type = [&](std::string_view name, const std::vector<std::string>& arguments) {
        (void)call(name, arguments);
        return typeDeclaration(resultType);
    };
    EXPECT_EQ(type("SUBSTRING", {"N'abc'", "1", "2"}), "nvarchar(3)");
    EXPECT_EQ(type("REPLACE", {"'a'", "'b'", "'c'"}), "varchar(8000)");
    EXPECT_EQ(type("FLOOR", {"1.55"}), "numeric(3,0)");
    EXPECT_EQ(type("ISNULL", {"'abc'", "'defgh'"}), "varchar(3)");
    EXPECT_EQ(type("COALESCE", {"'abc'", "'defgh'"}), "varchar(5)");
    EXPECT_EQ(type("SCOPE_IDENTITY", {}), "numeric(38,0)");
    EXPECT_EQ(type("SYSDATETIME", {}), "datetime2(7)");
}

TEST_F(Functions, ChecksSumsOfTextsThatCompareEqual) {
    EXPECT_EQ(call("CHECKSUM", {"'Abc'"}), call("CHECKSUM", {"'aBC  '"}));
    EXPECT_NE(call("CHECKSUM", {"'Abc'"}), call("CHECKSUM", {"'Abd'"}));
    EXPECT_NE(call("BINARY_CHECKSUM", {"'Abc'"}), call("BINARY_CHECKSUM", {"'aBC'"}));
}

TEST_F(Functions, SessionFunctionsAskTheirHooks) {
    context.objectId = [](std::string_view name, std::string_view kind) {
        return name == "dbo.t" && kind == "U" ? std::optional<std::int32_t>(77) : std::nullopt;
    };
    EXPECT_EQ(call("OBJECT_ID", {"'dbo.t'", "'U '"}), "77");
    EXPECT_EQ(call("OBJECT_ID", {"'dbo.x'"}), "NULL");
    Message caught{.number = 547, .severity = 16, .state = 2, .text = "conflict", .procedure = {}, .line = 3};
    context.caughtError = [&] { return &caught; };
    EXPECT_EQ(call("ERROR_NUMBER", {}), "547");
    EXPECT_EQ(call("ERROR_STATE", {}), "2");
    EXPECT_EQ(call("ERROR_LINE", {}), "3");
    EXPECT_EQ(call("ERROR_PROCEDURE", {}), "NULL");
    EXPECT_EQ(call("ERROR_MESSAGE", {}), "conflict");
    context.scopeIdentity = [] { return std::optional(Decimal{12, 0}); };
    EXPECT_EQ(call("SCOPE_IDENTITY", {}), "12");
    context.variable = [](std::int64_t slot) { return Typed{kInt, slot + 1}; };
    EXPECT_EQ(value("SELECT t_var(4)", kInt), "5");
    context.now = dayNumber(2024, 2, 28) * kUnitsPerDay + 8 * 3600 * kUnitsPerSecond;
    EXPECT_EQ(call("GETDATE", {}), "Feb 28 2024  8:00AM");
}

TEST_F(Functions, RandRepeatsWithItsSeed) {
    const std::string first = call("RAND", {"7"});
    context.rand.reset();
    EXPECT_NE(call("RAND", {}), first);
    EXPECT_EQ(call("RAND", {"7"}), first);
    EXPECT_NE(call("NEWID", {}), call("NEWID", {}));
}

TEST_F(Functions, WrongCallsAreTold) {
    EXPECT_EQ(call("NOWHERE", {}), "195 'NOWHERE' is not a recognized built-in function name.");
    EXPECT_EQ(call("LEN", {}), "174 The len function requires 1 argument(s).");
    EXPECT_EQ(call("ROUND", {"1"}), "189 The round function requires 2 to 3 arguments.");
    EXPECT_EQ(call("ABS", {"0x01"}), "8116 Argument data type varbinary is invalid for argument 1 of abs function.");
    EXPECT_STREQ(unknownDatePart("fortnight", "DATEADD").what(), "'fortnight' is not a recognized dateadd option.");
}

// Every row of the table: a name of its own, letters for its arguments, and a SQLite function that takes them.
TEST_F(Functions, EveryRowOfTheTableCanBeCalled) {
    std::set<std::string_view> names;
    for (const FunctionRow& row : functionTable()) {
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
        if (row.form != CallForm::Call) continue;
        const int most = row.maxArguments < 0 ? row.minArguments + 2 : std::min(row.maxArguments, row.minArguments + 2);
        for (int count = row.minArguments; count <= most; ++count) {
            std::vector<std::string> arguments;
            for (int i = 0; i < count; ++i) {
                const char letter = row.arguments[std::min(static_cast<std::size_t>(i), row.arguments.size() - 1)];
                arguments.emplace_back(letter == 'p'                    ? "year"
                                       : letter == 'd'                  ? "'20240101'"
                                       : letter == 't' || letter == 'x' ? "'a'"
                                                                        : "1");
            }
            const std::string result = call(row.name, arguments);
            EXPECT_FALSE(result.starts_with("SQLite")) << row.name << ": " << result;
        }
    }
}

}  // namespace
}  // namespace sandbox
