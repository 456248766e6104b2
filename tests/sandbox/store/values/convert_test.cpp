// Conversions, their errors, and the types that operators and CASE give.
#include "sandbox/store/values/convert.h"

#include <gtest/gtest.h>

#include <functional>

#include "sandbox/store/values/convert_types.h"
#include "sandbox/store/values/decimal.h"
#include "sandbox/store/values/storage_codec.h"

namespace sandbox {
namespace {

constexpr Type kInt{.id = TypeId::Int};
constexpr Type kTinyInt{.id = TypeId::TinyInt};
constexpr Type kSmallInt{.id = TypeId::SmallInt};
constexpr Type kBigInt{.id = TypeId::BigInt};
constexpr Type kBit{.id = TypeId::Bit};
constexpr Type kFloat{.id = TypeId::Float};
constexpr Type kReal{.id = TypeId::Real};
constexpr Type kMoney{.id = TypeId::Money};
constexpr Type kDateTime{.id = TypeId::DateTime};
constexpr Type kSmallDateTime{.id = TypeId::SmallDateTime};
constexpr Type kDate{.id = TypeId::Date};
constexpr Type kGuid{.id = TypeId::UniqueIdentifier};
constexpr Type kText{.id = TypeId::Text};

constexpr Type varchar(int n) {
    return {.id = TypeId::VarChar, .length = n};
}
constexpr Type nvarchar(int n) {
    return {.id = TypeId::NVarChar, .length = n};
}
constexpr Type fixedChar(int n) {
    return {.id = TypeId::Char, .length = n};
}
constexpr Type varbinary(int n) {
    return {.id = TypeId::VarBinary, .length = n};
}
constexpr Type binary(int n) {
    return {.id = TypeId::Binary, .length = n};
}
constexpr Type decimal(int p, int s) {
    return {.id = TypeId::Decimal, .precision = static_cast<std::uint8_t>(p), .scale = static_cast<std::uint8_t>(s)};
}

std::string shownError(const SqlError& error) {
    const Message& m = error.messages.front();
    return std::to_string(m.number) + " " + std::to_string(m.severity) + " " + std::to_string(m.state) + " " + m.text;
}

std::string failure(const std::function<void()>& action) {
    try {
        action();
    } catch (const SqlError& error) {
        return shownError(error);
    }
    return "no error";
}

// A text converted to a type and shown again, or the error.
std::string through(std::string_view text, const Type& type) {
    try {
        const Type from = varchar(100);
        return displayText(convert(std::string(text), from, type), type);
    } catch (const SqlError& error) {
        return shownError(error);
    }
}

std::string asText(const Value& value, const Type& from, const Type& to = varchar(60), int style = 0) {
    try {
        return std::get<std::string>(convert(value, from, to, {}, style));
    } catch (const SqlError& error) {
        return shownError(error);
    }
}

TEST(Convert, TextBecomesEveryType) {
    const struct {
        const char* text;
        Type type;
        const char* shown;
    } cases[] = {
        {"42", kInt, "42"},
        {"  -7 ", kInt, "-7"},
        {"", kInt, "0"},
        {"true", kBit, "1"},
        {"False", kBit, "0"},
        {"5", kBit, "1"},
        {"1.5", decimal(9, 3), "1.500"},
        {"1.2345", decimal(9, 3), "1.235"},
        {"1e3", kFloat, "1000"},
        {"", kFloat, "0"},
        {"$1,234.56", kMoney, "1234.56"},
        {"-12.34567", kMoney, "-12.35"},
        {"20240228 08:05", kDateTime, "Feb 28 2024  8:05AM"},
        {"2024-02-28", kDate, "2024-02-28"},
        {"6f9619ff-8b86-d011-b42d-00c04fc964ff", kGuid, "6F9619FF-8B86-D011-B42D-00C04FC964FF"},
        {"{6f9619ff-8b86-d011-b42d-00c04fc964ff}", kGuid, "6F9619FF-8B86-D011-B42D-00C04FC964FF"},
        {"A", varbinary(5), "0x41"},
        {"abc", kInt, "245 16 1 Conversion failed when converting the varchar value 'abc' to data type int."},
        {"1.5", kInt, "245 16 1 Conversion failed when converting the varchar value '1.5' to data type int."},
        {"x", kBit, "245 16 1 Conversion failed when converting the varchar value 'x' to data type bit."},
        {"99999999999", kInt, "248 16 1 The conversion of the varchar value '99999999999' overflowed an int column."},
        {"256", kTinyInt,
         "244 16 1 The conversion of the varchar value '256' overflowed an INT1 column. Use a larger integer column."},
        {"x", kBigInt, "8114 16 5 Error converting data type varchar to bigint."},
        {"x", decimal(9, 2), "8114 16 5 Error converting data type varchar to numeric."},
        {"", decimal(9, 2), "8114 16 5 Error converting data type varchar to numeric."},
        {"1234", decimal(3, 0), "8115 16 8 Arithmetic overflow error converting varchar to data type numeric."},
        {"x", kFloat, "8114 16 5 Error converting data type varchar to float."},
        {"0x10", kFloat, "8114 16 5 Error converting data type varchar to float."},
        {"x", kMoney, "235 16 0 Cannot convert a char value to money. The char value has incorrect syntax."},
        {"no date", kDateTime, "241 16 1 Conversion failed when converting date and/or time from character string."},
        {"2023-02-29", kDateTime,
         "242 16 3 The conversion of a varchar data type to a datetime data type resulted in an out-of-range value."},
        {"2023-02-29", kDate, "241 16 1 Conversion failed when converting date and/or time from character string."},
        {"x", kSmallDateTime,
         "295 16 3 Conversion failed when converting character string to smalldatetime data type."},
        {"x", kGuid, "8169 16 2 Conversion failed when converting from a character string to uniqueidentifier."},
    };
    for (const auto& c : cases) EXPECT_EQ(through(c.text, c.type), c.shown) << c.text;
}

TEST(Convert, NumbersBecomeText) {
    EXPECT_EQ(asText(std::int64_t{42}, kInt, varchar(10)), "42");
    EXPECT_EQ(asText(std::int64_t{7}, kInt, fixedChar(6)), "7     ");
    EXPECT_EQ(asText(std::int64_t{1000}, kInt, varchar(3)), "*");
    EXPECT_EQ(asText(std::int64_t{1000}, kInt, nvarchar(3)),
              "8115 16 2 Arithmetic overflow error converting expression to data type nvarchar.");
    EXPECT_EQ(asText(Decimal{150, 2}, decimal(3, 2)), "1.50");
    EXPECT_EQ(asText(Decimal{150, 2}, decimal(3, 2), varchar(2)),
              "8115 16 5 Arithmetic overflow error converting numeric to data type varchar.");
    EXPECT_EQ(asText(std::int64_t{123457}, kMoney), "12.35");
    EXPECT_EQ(asText(std::int64_t{123457}, kMoney, varchar(20), 2), "12.3457");
    EXPECT_EQ(asText(std::int64_t{-12345678900}, kMoney, varchar(20), 1), "-1,234,567.89");
    EXPECT_EQ(asText(std::int64_t{123457}, kMoney, varchar(2)),
              "234 16 2 There is insufficient result space to convert a money value to varchar.");
    const struct {
        double value;
        int style;
        const char* text;
    } floats[] = {
        {1.5, 0, "1.5"},     {1234567, 0, "1.23457e+006"}, {0.00001, 0, "1e-005"}, {123456, 0, "123456"},
        {-0.25, 0, "-0.25"}, {1.5, 1, "1.5000000e+000"},   {1e100, 0, "1e+100"},   {0.1, 2, "1.000000000000000e-001"}};
    for (const auto& c : floats) EXPECT_EQ(asText(c.value, kFloat, varchar(30), c.style), c.text);
}

TEST(Convert, NumbersBecomeOtherNumbers) {
    const auto whole = [](const Value& v, const Type& from, const Type& to) {
        return std::get<std::int64_t>(convert(v, from, to));
    };
    EXPECT_EQ(whole(Decimal{27, 1}, decimal(2, 1), kInt), 2) << "decimals are cut";
    EXPECT_EQ(whole(Decimal{-27, 1}, decimal(2, 1), kInt), -2);
    EXPECT_EQ(whole(-2.7, kFloat, kInt), -2);
    EXPECT_EQ(whole(std::int64_t{27000}, kMoney, kInt), 3) << "money is rounded";
    EXPECT_EQ(whole(std::int64_t{5}, kInt, kBit), 1);
    EXPECT_EQ(whole(std::int64_t{3}, kInt, kMoney), 30000);
    EXPECT_EQ(whole(Decimal{1234567, 5}, decimal(9, 5), kMoney), 123457);
    EXPECT_EQ(std::get<Decimal>(convert(Decimal{2345, 3}, decimal(4, 3), decimal(5, 2))).unscaled, 235);
    EXPECT_EQ(std::get<double>(convert(0.1, kFloat, kReal)), static_cast<double>(0.1f));
    EXPECT_EQ(failure([&] { (void)whole(std::int64_t{256}, kInt, kTinyInt); }),
              "220 16 2 Arithmetic overflow error for data type tinyint, value = 256.");
    EXPECT_EQ(failure([&] { (void)whole(std::int64_t{40000}, kInt, kSmallInt); }),
              "220 16 1 Arithmetic overflow error for data type smallint, value = 40000.");
    EXPECT_EQ(failure([&] { (void)whole(std::int64_t{3000000000}, kBigInt, kInt); }),
              "8115 16 2 Arithmetic overflow error converting expression to data type int.");
    EXPECT_EQ(failure([&] { (void)whole(3e9, kFloat, kInt); }),
              "232 16 3 Arithmetic overflow error for type int, value = 3000000000.000000.");
    EXPECT_EQ(failure([&] {
                  (void)convert(Decimal{12345, 2}, decimal(5, 2), decimal(4, 2));
              }),
              "8115 16 8 Arithmetic overflow error converting numeric to data type numeric.");
}

TEST(Convert, DatesAndNumbersMeetAtDays) {
    const auto noon = convert(std::string("19000102 12:00"), varchar(20), kDateTime);
    EXPECT_EQ(std::get<double>(convert(noon, kDateTime, kFloat)), 1.5);
    EXPECT_EQ(std::get<std::int64_t>(convert(noon, kDateTime, kInt)), 2);
    EXPECT_EQ(convert(Decimal{15, 1}, decimal(2, 1), kDateTime), noon);
    EXPECT_EQ(displayText(convert(std::int64_t{-1}, kInt, kDateTime), kDateTime), "Dec 31 1899 12:00AM");
    EXPECT_EQ(failure([&] { (void)convert(std::int64_t{3000000}, kInt, kDateTime); }),
              "8115 16 2 Arithmetic overflow error converting expression to data type datetime.");
}

TEST(Convert, BinariesKeepTheirEnds) {
    const auto hex = [](const Value& v, const Type& from, const Type& to) {
        return displayText(convert(v, from, to), to);
    };
    EXPECT_EQ(hex(std::int64_t{258}, kInt, varbinary(4)), "0x00000102");
    EXPECT_EQ(hex(std::int64_t{258}, kInt, varbinary(1)), "0x02");
    EXPECT_EQ(hex(std::int64_t{258}, kInt, binary(6)), "0x000000000102");
    EXPECT_EQ(hex(std::string("AB"), varchar(2), binary(3)), "0x414200");
    EXPECT_EQ(hex(std::string("Aå"), nvarchar(2), varbinary(8)), "0x4100E500");
    EXPECT_EQ(hex(Decimal{15, 1}, decimal(2, 1), varbinary(20)), "0x020100010F000000");
    EXPECT_EQ(asText(Bytes{0x41, 0xE5}, varbinary(2)), "Aå");
    EXPECT_EQ(asText(Bytes{0x41, 0xE5}, varbinary(2), varchar(10), 1), "0x41E5");
    EXPECT_EQ(std::get<std::int64_t>(convert(Bytes{0xFF}, varbinary(1), kInt)), 255);
    EXPECT_EQ(std::get<Bytes>(convert(std::string("0x41e5"), varchar(10), varbinary(10), {}, 1)), (Bytes{0x41, 0xE5}));
}

TEST(Convert, TextIsCutAndPaddedToItsType) {
    EXPECT_EQ(asText(std::string("abc"), varchar(3), varchar(1)), "a");
    EXPECT_EQ(asText(std::string("ab"), varchar(2), fixedChar(5)), "ab   ");
    EXPECT_EQ(asText(std::string("aΩ"), nvarchar(2), varchar(2)), "a?");
    EXPECT_EQ(asText(std::string("æøå"), nvarchar(3), varchar(2)), "æø");
}

TEST(Convert, StoringRefusesWhatDoesNotFit) {
    const auto stored = [](std::string_view text, const Type& to) {
        return std::get<std::string>(convertForStore(std::string(text), varchar(100), to));
    };
    EXPECT_EQ(stored("abc   ", varchar(3)), "abc");
    EXPECT_EQ(stored("ab", fixedChar(4)), "ab  ");
    EXPECT_EQ(failure([&] { (void)stored("abcd", varchar(3)); }),
              "8152 16 14 String or binary data would be truncated.");
    EXPECT_EQ(failure([&] {
                  (void)convertForStore(Bytes{1, 2}, varbinary(2), binary(1));
              }),
              "8152 16 14 String or binary data would be truncated.");
}

TEST(Convert, ConversionFailuresEndTheBatchOverflowsTheStatement) {
    const auto effect = [](std::string_view text, const Type& to) {
        try {
            (void)convert(std::string(text), varchar(100), to);
        } catch (const SqlError& error) {
            return error.effect;
        }
        return Effect::Connection;
    };
    for (const Type& type : {kInt, kBigInt, decimal(9, 2), kDateTime, kGuid, kMoney})
        EXPECT_EQ(effect("x", type), Effect::Batch);
    EXPECT_EQ(effect("1234", decimal(2, 0)), Effect::Statement);
}

TEST(Convert, WhatIsNotAllowedSaysSo) {
    EXPECT_EQ(failure([] { requireImplicitConversion(kInt, kDate); }),
              "206 16 2 Operand type clash: int is incompatible with date");
    EXPECT_EQ(
        failure([] { requireImplicitConversion(kDateTime, kInt); }),
        "257 16 3 Implicit conversion from data type datetime to int is not allowed. Use the CONVERT function to run "
        "this query.");
    EXPECT_EQ(failure([] { requireExplicitConversion(kText, kInt); }),
              "529 16 2 Explicit conversion from data type text to int is not allowed.");
    EXPECT_EQ(failure([] { requireExplicitConversion(kDateTime, kInt); }), "no error");
}

TEST(ConvertTypes, OperatorsGiveTheirTypes) {
    const struct {
        BinaryOp op;
        Type a, b;
        const char* result;
    } cases[] = {
        {BinaryOp::Divide, kInt, kInt, "int"},
        {BinaryOp::Add, kTinyInt, kTinyInt, "tinyint"},
        {BinaryOp::Add, kInt, kBigInt, "bigint"},
        {BinaryOp::Multiply, decimal(10, 2), decimal(10, 3), "decimal(21,5)"},
        {BinaryOp::Add, decimal(10, 2), decimal(10, 3), "decimal(12,3)"},
        {BinaryOp::Divide, decimal(10, 2), decimal(10, 3), "decimal(24,13)"},
        {BinaryOp::Divide, decimal(38, 10), decimal(38, 10), "decimal(38,6)"},
        {BinaryOp::Multiply, decimal(38, 10), decimal(38, 10), "decimal(38,6)"},
        {BinaryOp::Add, decimal(38, 10), decimal(38, 2), "decimal(38,2)"},
        {BinaryOp::Modulo, decimal(10, 2), decimal(5, 3), "decimal(5,3)"},
        {BinaryOp::Multiply, kMoney, kInt, "money"},
        {BinaryOp::Multiply, kMoney, decimal(5, 2), "numeric(25,6)"},
        {BinaryOp::Add, kReal, kInt, "real"},
        {BinaryOp::Add, kReal, kFloat, "float"},
        {BinaryOp::Add, varchar(3), kInt, "int"},
        {BinaryOp::Add, varchar(3), varchar(4), "varchar(7)"},
        {BinaryOp::Add, fixedChar(3), fixedChar(4), "char(7)"},
        {BinaryOp::Add, varchar(3), nvarchar(4), "nvarchar(7)"},
        {BinaryOp::Add, varchar(8000), varchar(1), "varchar(8000)"},
        {BinaryOp::Add, varchar(Type::kMax), varchar(1), "varchar(max)"},
        {BinaryOp::Add, Type{}, varchar(4), "varchar(4)"},
        {BinaryOp::Add, Type{}, kInt, "int"},
        {BinaryOp::Add, kDateTime, kInt, "datetime"},
        {BinaryOp::Subtract, kDateTime, kFloat, "datetime"},
        {BinaryOp::BitAnd, kInt, kTinyInt, "int"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(typeDeclaration(binaryResultType(c.op, c.a, c.b)), c.result)
            << typeDeclaration(c.a) << " " << typeDeclaration(c.b);
    }
}

TEST(ConvertTypes, OperatorsRefuseWhatTheyCannotTake) {
    const struct {
        BinaryOp op;
        Type a, b;
        const char* error;
    } cases[] = {
        {BinaryOp::Subtract, varchar(1), varchar(1),
         "8117 16 1 Operand data type varchar is invalid for subtract operator."},
        {BinaryOp::Add, kText, varchar(1),
         "402 16 1 The data types text and varchar are incompatible in the add operator."},
        {BinaryOp::Add, kBit, kBit, "402 16 1 The data types bit and bit are incompatible in the add operator."},
        {BinaryOp::Add, kDate, kInt, "206 16 2 Operand type clash: date is incompatible with int"},
        {BinaryOp::BitAnd, kFloat, kInt, "402 16 1 The data types float and int are incompatible in the '&' operator."},
        {BinaryOp::Modulo, kFloat, kInt,
         "402 16 1 The data types float and int are incompatible in the modulo operator."},
        {BinaryOp::Add, kGuid, kInt, "206 16 2 Operand type clash: uniqueidentifier is incompatible with int"},
    };
    for (const auto& c : cases) EXPECT_EQ(failure([&] { (void)binaryResultType(c.op, c.a, c.b); }), c.error);
    EXPECT_EQ(failure([] { (void)comparisonType(CompareOp::Equal, kText, varchar(1)); }),
              "402 16 1 The data types text and varchar are incompatible in the equal to operator.");
    EXPECT_EQ(failure([] { (void)negatedType(varchar(1)); }),
              "8117 16 1 Operand data type varchar is invalid for minus operator.");
}

TEST(ConvertTypes, BranchesTakeTheHighestType) {
    EXPECT_EQ(typeDeclaration(commonType(kInt, decimal(2, 1))), "numeric(11,1)");
    EXPECT_EQ(typeDeclaration(commonType(varchar(3), varchar(6))), "varchar(6)");
    EXPECT_EQ(typeDeclaration(commonType(fixedChar(3), varchar(2))), "varchar(3)");
    EXPECT_EQ(typeDeclaration(commonType(varchar(10), nvarchar(5))), "nvarchar(10)");
    EXPECT_EQ(typeDeclaration(commonType(varchar(10), kDateTime)), "datetime");
    EXPECT_EQ(typeDeclaration(commonType(std::vector<Type>{Type{}, Type{}})), "int");
    EXPECT_EQ(failure([] { (void)commonType(kInt, kDate); }),
              "206 16 2 Operand type clash: int is incompatible with date");
}

TEST(ConvertTypes, LiteralsHaveTypes) {
    const struct {
        const char* text;
        const char* type;
    } cases[] = {{"12", "int"},           {"2147483648", "numeric(10,0)"}, {"1.50", "numeric(3,2)"},
                 {"0.5", "numeric(1,1)"}, {".05", "numeric(2,2)"},         {"1e3", "float"}};
    for (const auto& c : cases) EXPECT_EQ(typeDeclaration(numberLiteral(c.text).type), c.type) << c.text;
    EXPECT_EQ(typeDeclaration(textLiteral("", false).type), "varchar(1)");
    EXPECT_EQ(std::get<std::string>(textLiteral("Ω", false).value), "?");
    EXPECT_EQ(std::get<std::string>(textLiteral("Ω", true).value), "Ω");
    EXPECT_EQ(std::get<Bytes>(binaryLiteral("0x1FF").value), (Bytes{0x01, 0xFF}));
    EXPECT_EQ(std::get<std::int64_t>(moneyLiteral("$12.5").value), 125000);
    EXPECT_EQ(failure([] { (void)numberLiteral("123456789012345678901234567890123456789"); }).substr(0, 9),
              "1007 15 1");
}

TEST(StorageCodec, TypesTravelInOneInteger) {
    for (const Type& type : {kInt, varchar(Type::kMax), nvarchar(4000), decimal(38, 10), Type{}, kDateTime,
                             Type{.id = TypeId::DateTime2, .scale = 7},
                             Type{.id = TypeId::Decimal, .precision = 5, .numericName = true}}) {
        EXPECT_EQ(decodeType(encodeType(type)), type) << typeDeclaration(type);
    }
}

TEST(StorageCodec, GuidsSortByTheirLastGroupFirst) {
    const auto guid = [](std::string_view text) {
        return std::get<Guid>(convert(std::string(text), varchar(36), kGuid));
    };
    const Guid low = guid("FFFFFFFF-FFFF-FFFF-FFFF-000000000001"), high = guid("00000000-0000-0000-0000-000000000002");
    EXPECT_LT(encodeGuid(low), encodeGuid(high));
    EXPECT_EQ(decodeGuid(encodeGuid(low)), low);
}

}  // namespace
}  // namespace sandbox
