// Types and values on the wire: the exact bytes of each, both ways, and what is refused.
#include <gtest/gtest.h>

#include <limits>

#include "sandbox/tds/values.h"
#include "tests/support/tds_client.h"

namespace sandbox::tds {
namespace {

using Buffer = std::vector<std::uint8_t>;

Type type(TypeId id, int length = 0, std::uint8_t precision = 0, std::uint8_t scale = 0) {
    Type t;
    t.id = id;
    t.length = length;
    t.precision = precision;
    t.scale = scale;
    return t;
}

Value decimal(std::int64_t unscaled, std::uint8_t scale) {
    Decimal d;
    d.unscaled = unscaled;
    d.scale = scale;
    return d;
}

Buffer typeBytes(const Type& t, bool nullable, Version version) {
    Writer out;
    writeTypeInfo(out, wireType(t, nullable, version));
    return out.buffer();
}

Buffer valueBytes(const Type& t, const Value& v, Place place = Place::Row, Version version = Version::V74,
                  bool nullable = true) {
    Writer out;
    writeValue(out, wireType(t, nullable, version), v, place);
    return out.buffer();
}

TEST(TdsTypeInfo, NullableAndFixedForms) {
    struct {
        Type type;
        Buffer nullable, fixed;
    } cases[] = {
        {type(TypeId::Bit), {0x68, 1}, {0x32}},
        {type(TypeId::TinyInt), {0x26, 1}, {0x30}},
        {type(TypeId::SmallInt), {0x26, 2}, {0x34}},
        {type(TypeId::Int), {0x26, 4}, {0x38}},
        {type(TypeId::BigInt), {0x26, 8}, {0x7F}},
        {type(TypeId::SmallMoney), {0x6E, 4}, {0x7A}},
        {type(TypeId::Money), {0x6E, 8}, {0x3C}},
        {type(TypeId::Real), {0x6D, 4}, {0x3B}},
        {type(TypeId::Float), {0x6D, 8}, {0x3E}},
        {type(TypeId::SmallDateTime), {0x6F, 4}, {0x3A}},
        {type(TypeId::DateTime), {0x6F, 8}, {0x3D}},
        {type(TypeId::Decimal, 0, 9, 2), {0x6A, 17, 9, 2}, {0x6A, 17, 9, 2}},
        {type(TypeId::Decimal, 0, 38, 10), {0x6A, 17, 38, 10}, {0x6A, 17, 38, 10}},
        {type(TypeId::UniqueIdentifier), {0x24, 16}, {0x24, 16}},
        {type(TypeId::VarChar, 10), {0xA7, 10, 0, 6, 4, 0xD0, 0, 0}, {0xA7, 10, 0, 6, 4, 0xD0, 0, 0}},
        {type(TypeId::NChar, 10), {0xEF, 20, 0, 6, 4, 0xD0, 0, 0}, {0xEF, 20, 0, 6, 4, 0xD0, 0, 0}},
        {type(TypeId::VarBinary, 300), {0xA5, 44, 1}, {0xA5, 44, 1}},
        {type(TypeId::Null), {0x26, 4}, {0x26, 4}},
        {type(TypeId::Date), {0x28}, {0x28}},
        {type(TypeId::Time, 0, 0, 3), {0x29, 3}, {0x29, 3}},
        {type(TypeId::DateTime2, 0, 0, 7), {0x2A, 7}, {0x2A, 7}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(typeBytes(c.type, true, Version::V74), c.nullable) << typeDeclaration(c.type);
        EXPECT_EQ(typeBytes(c.type, false, Version::V74), c.fixed) << typeDeclaration(c.type);
    }
}

TEST(TdsTypeInfo, OlderVersionsSeeOlderTypes) {
    const Type max = type(TypeId::NVarChar, Type::kMax);
    EXPECT_EQ(typeBytes(max, true, Version::V72), (Buffer{0xE7, 0xFF, 0xFF, 6, 4, 0xD0, 0, 0}));
    EXPECT_EQ(typeBytes(max, true, Version::V71), (Buffer{0x63, 0xFE, 0xFF, 0xFF, 0x7F, 6, 4, 0xD0, 0, 0}));
    EXPECT_EQ(typeBytes(type(TypeId::VarBinary, Type::kMax), true, Version::V71),
              (Buffer{0x22, 0xFF, 0xFF, 0xFF, 0x7F}));
    EXPECT_EQ(typeBytes(type(TypeId::Date), true, Version::V72), (Buffer{0xE7, 20, 0, 6, 4, 0xD0, 0, 0}));
    EXPECT_EQ(typeBytes(type(TypeId::DateTime2, 0, 0, 7), true, Version::V71), (Buffer{0xE7, 54, 0, 6, 4, 0xD0, 0, 0}));
}

TEST(TdsValue, HasTheseBytes) {
    struct {
        Type type;
        Value value;
        Buffer bytes;
    } cases[] = {
        {type(TypeId::Bit), std::int64_t{1}, {1, 1}},
        {type(TypeId::TinyInt), std::int64_t{255}, {1, 0xFF}},
        {type(TypeId::SmallInt), std::int64_t{-2}, {2, 0xFE, 0xFF}},
        {type(TypeId::Int), std::int64_t{-1}, {4, 0xFF, 0xFF, 0xFF, 0xFF}},
        {type(TypeId::BigInt), std::int64_t{1} << 40, {8, 0, 0, 0, 0, 0, 1, 0, 0}},
        {type(TypeId::Money), std::int64_t{123457}, {8, 0, 0, 0, 0, 0x41, 0xE2, 1, 0}},
        {type(TypeId::Money), std::int64_t{-1}, {8, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {type(TypeId::Float), 1.5, {8, 0, 0, 0, 0, 0, 0, 0xF8, 0x3F}},
        {type(TypeId::Real), 0.5, {4, 0, 0, 0, 0x3F}},
        {type(TypeId::Decimal, 0, 9, 2), decimal(-12345, 2), {5, 0, 0x39, 0x30, 0, 0}},
        {type(TypeId::Decimal, 0, 10, 3), decimal(15, 1), {9, 1, 0xDC, 5, 0, 0, 0, 0, 0, 0}},
        {type(TypeId::VarChar, 5), std::string("Å€"), {2, 0, 0xC5, 0x80}},
        {type(TypeId::VarChar, 5), std::string(), {0, 0}},
        {type(TypeId::NVarChar, 5), std::string("Å"), {2, 0, 0xC5, 0}},
        {type(TypeId::VarBinary, 5), Bytes{1, 2}, {2, 0, 1, 2}},
        {type(TypeId::NVarChar, Type::kMax),
         std::string("a"),
         {2, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 'a', 0, 0, 0, 0, 0}},
        {type(TypeId::NVarChar, Type::kMax), std::string(), {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        // 1900-01-02 00:00:01 and the day before 1900
        {type(TypeId::DateTime), std::int64_t{25920000 + 300}, {8, 1, 0, 0, 0, 44, 1, 0, 0}},
        {type(TypeId::DateTime), std::int64_t{-1}, {8, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x81, 0x8B, 1}},
        {type(TypeId::SmallDateTime), std::int64_t{25920000 + 18000}, {4, 1, 0, 1, 0}},
        {type(TypeId::Date), std::int64_t{738000}, {3, 0xD0, 0x42, 0x0B}},
        {type(TypeId::Time, 0, 0, 0), std::int64_t{10'000'000}, {3, 1, 0, 0}},
        {type(TypeId::Time, 0, 0, 7), std::int64_t{10'000'000}, {5, 0x80, 0x96, 0x98, 0, 0}},
        {type(TypeId::DateTime2, 0, 0, 3), 2 * std::int64_t{864'000'000'000} + 10'000, {7, 1, 0, 0, 0, 2, 0, 0}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(valueBytes(c.type, c.value), c.bytes) << typeDeclaration(c.type);
        Reader in(c.bytes);
        const Value back = readValue(in, wireType(c.type, true, Version::V74), Place::Row);
        EXPECT_TRUE(in.atEnd());
        if (c.type.id != TypeId::Decimal) {
            EXPECT_EQ(back, c.value) << typeDeclaration(c.type);
        }
    }
}

TEST(TdsValue, NullHasTheFormOfItsType) {
    EXPECT_EQ(valueBytes(type(TypeId::Int), Null{}), (Buffer{0}));
    EXPECT_EQ(valueBytes(type(TypeId::VarChar, 5), Null{}), (Buffer{0xFF, 0xFF}));
    EXPECT_EQ(valueBytes(type(TypeId::VarChar, Type::kMax), Null{}), Buffer(8, 0xFF));
    EXPECT_EQ(valueBytes(type(TypeId::Text), Null{}), (Buffer{0}));
    EXPECT_EQ(valueBytes(type(TypeId::Text), Null{}, Place::Parameter), Buffer(4, 0xFF));
    EXPECT_EQ(valueBytes(type(TypeId::Decimal, 0, 5, 2), Null{}), (Buffer{0}));
    EXPECT_THROW((void)valueBytes(type(TypeId::Int), Null{}, Place::Row, Version::V74, false), std::logic_error);
}

TEST(TdsValue, LargeOnesComeBackInEachPlaceAndVersion) {
    const std::string text(200'000, 'x');
    for (const TypeId id : {TypeId::Text, TypeId::NText, TypeId::VarChar, TypeId::NVarChar}) {
        for (const Version version : {Version::V71, Version::V74}) {
            for (const Place place : {Place::Row, Place::Parameter}) {
                const Type t = type(id, id == TypeId::Text || id == TypeId::NText ? 0 : Type::kMax);
                const Buffer bytes = valueBytes(t, text, place, version);
                Reader in(bytes);
                EXPECT_EQ(readValue(in, wireType(t, true, version), place), Value(text));
                EXPECT_TRUE(in.atEnd());
            }
        }
    }
}

TEST(TdsValue, TemporalTypesAreTextForOlderVersions) {
    struct {
        Type type;
        std::int64_t value;
        const char* text;
    } cases[] = {
        {type(TypeId::Date), 0, "0001-01-01"},
        {type(TypeId::Date), 738000, "2021-07-30"},
        {type(TypeId::Date), 730178, "2000-02-29"},
        {type(TypeId::Date), 3652058, "9999-12-31"},
        {type(TypeId::Time, 0, 0, 0), 36'610'000'000, "01:01:01"},
        {type(TypeId::Time, 0, 0, 7), 1, "00:00:00.0000001"},
        {type(TypeId::DateTime2, 0, 0, 3), 864'000'000'000 * 738000 + 12'340'000, "2021-07-30 00:00:01.234"},
    };
    for (const auto& c : cases) {
        Writer text;
        text.u16(0);
        text.text(c.text);
        text.patchLength16(0);
        EXPECT_EQ(valueBytes(c.type, c.value, Place::Row, Version::V72), text.buffer()) << c.text;
    }
}

TEST(TdsValue, CellOfAnotherFormIsAnErrorOfTheServer) {
    EXPECT_THROW((void)valueBytes(type(TypeId::Int), std::string("x")), std::logic_error);
    EXPECT_THROW((void)valueBytes(type(TypeId::TinyInt), std::int64_t{256}), std::logic_error);
    EXPECT_THROW((void)valueBytes(type(TypeId::VarChar, 2), std::string("abc")), std::logic_error);
    EXPECT_THROW((void)valueBytes(type(TypeId::Decimal, 0, 4, 1), decimal(123, 2)), std::logic_error);
}

TEST(TdsValue, ValuesThatTheirTypeDoesNotHaveAreRefused) {
    const auto read = [](const Type& t, const Buffer& bytes) {
        Reader in(bytes);
        return readValue(in, wireType(t, true, Version::V74), Place::Row);
    };
    EXPECT_THROW((void)read(type(TypeId::DateTime), {8, 0, 0, 0, 0x80, 0, 0, 0, 0}), InvalidValue);
    EXPECT_THROW((void)read(type(TypeId::DateTime), {8, 0, 0, 0, 0, 0x00, 0x82, 0x8B, 1}), InvalidValue);
    EXPECT_THROW((void)read(type(TypeId::SmallDateTime), {4, 0, 0, 0xA0, 5}), InvalidValue);
    EXPECT_THROW((void)read(type(TypeId::Date), {3, 0xFF, 0xFF, 0xFF}), InvalidValue);
    EXPECT_THROW((void)read(type(TypeId::Time, 0, 0, 7), {5, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), InvalidValue);
    EXPECT_THROW((void)read(type(TypeId::Float), {8, 0, 0, 0, 0, 0, 0, 0xF0, 0x7F}), InvalidValue);
    EXPECT_THROW((void)read(type(TypeId::Decimal, 0, 2, 0), {5, 1, 100, 0, 0, 0}), InvalidValue);
    EXPECT_THROW((void)read(type(TypeId::Int), {3, 0, 0, 0}), StreamError);
    EXPECT_THROW((void)read(type(TypeId::NVarChar, 4), {3, 0, 'a', 0, 'b'}), StreamError);
    EXPECT_THROW((void)read(type(TypeId::VarChar, 2), {3, 0, 'a', 'b', 'c'}), StreamError);
    EXPECT_THROW((void)read(type(TypeId::VarChar, Type::kMax), Buffer(8, 0xFE)), StreamError);
}

TEST(TdsTypeInfo, TypesThatAreNotSupportedAreNamed) {
    for (const std::uint8_t code : {wire::kXml, wire::kVariant, wire::kUdt, wire::kTable, wire::kDateTimeOffsetN}) {
        const Buffer bytes = {code, 0, 0, 0, 0};
        Reader in(bytes);
        EXPECT_THROW((void)readTypeInfo(in), UnsupportedType) << int{code};
    }
    const Buffer unknown = {0x01};
    Reader in(unknown);
    EXPECT_THROW((void)readTypeInfo(in), StreamError);
}

}  // namespace
}  // namespace sandbox::tds
