// Values: exactness and conversions.
#include "engine/db/value.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "tests/support/qt_print.h"

namespace torvik::db {
namespace {

TEST(Value, DecimalKeeps38Digits) {
    const QString digits = QStringLiteral("-1234567890123456789012345678901234.5678");
    const auto decimal = Decimal::fromText(digits);
    ASSERT_TRUE(decimal);
    EXPECT_EQ(decimal->Scale, 4);
    EXPECT_EQ(decimal->toQString(), digits);
    EXPECT_FALSE(Decimal::fromText(u"123456789012345678901234567890123456789"));
}

TEST(Value, DecimalTexts) {
    const std::pair<const char16_t*, const char*> cases[] = {{u"0", "0"},       {u".5", "0.5"}, {u"-.05", "-0.05"},
                                                             {u"1.50", "1.50"}, {u"+7", "7"},   {u" 3 ", "3"}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(Decimal::fromText(text)->toQString(), QLatin1String(expected)) << expected;
    for (const char16_t* text : {u"", u".", u"1,5", u"1e3", u"1.2.3", u"abc"}) EXPECT_FALSE(Decimal::fromText(text));
}

TEST(Value, DecimalsAreComparedAsNumbers) {
    EXPECT_EQ(*Decimal::fromText(u"1.50"), *Decimal::fromText(u"1.5"));
    EXPECT_FALSE(*Decimal::fromText(u"1.51") == *Decimal::fromText(u"1.5"));
}

TEST(Value, TextOfEachKind) {
    EXPECT_EQ(Value().toQString(), QString());
    EXPECT_EQ(Value(42).toQString(), QStringLiteral("42"));
    EXPECT_EQ(Value(0.1).toQString(), QStringLiteral("0.1"));
    EXPECT_EQ(Value(1000000.0).toQString(), QStringLiteral("1000000"));
    EXPECT_EQ(Value(*Decimal::fromText(u"12.5000")).toQString(), QStringLiteral("12.5"));
    EXPECT_EQ(Value(*Decimal::fromText(u"100")).toQString(), QStringLiteral("100"));
    EXPECT_EQ(Value(true).toQString(), QStringLiteral("True"));
    EXPECT_EQ(Value(QDate(2024, 2, 29)).toQString(), QStringLiteral("29.02.2024"));
    EXPECT_EQ(Value(DateTime(QDate(2024, 2, 29), QTime(13, 5, 7, 3))).toQString(),
              QStringLiteral("29.02.2024 13:05:07"));
    EXPECT_EQ(Value(QUuid::fromString(QStringLiteral("{0a000000-0000-0000-0000-00000000000b}"))).toQString(),
              QStringLiteral("{0A000000-0000-0000-0000-00000000000B}"));
}

TEST(Value, IntegersFromOtherKinds) {
    EXPECT_EQ(Value().toInt(), 0);
    EXPECT_EQ(Value(QStringLiteral(" 12 ")).toInt(), 12);
    EXPECT_EQ(Value(2.5).toInt(), 2);
    EXPECT_EQ(Value(3.5).toInt(), 4);
    EXPECT_EQ(Value(*Decimal::fromText(u"-2.5")).toInt(), -2);
    EXPECT_EQ(Value(*Decimal::fromText(u"-2.51")).toInt(), -3);
    EXPECT_THROW(static_cast<void>(Value(QStringLiteral("12a")).toInt()), UsageError);
    EXPECT_THROW(static_cast<void>(Value(1e30).toInt()), UsageError);
}

TEST(Value, NumbersFromNorwegianText) {
    EXPECT_EQ(Value(QStringLiteral("12,5")).toDouble(), 12.5);
}

TEST(Value, DatesFromDayCountsAndTexts) {
    EXPECT_EQ(Value(45292.5).toDateTime(), DateTime(QDate(2024, 1, 1), QTime(12, 0)));
    for (const char* text : {"01.01.2024 12:00", "20240101 12:00:00", "2024-01-01T12:00:00.000"})
        EXPECT_EQ(Value(text).toDateTime(), DateTime(QDate(2024, 1, 1), QTime(12, 0))) << text;
    EXPECT_FALSE(Value().toDateTime().isValid());
    EXPECT_FALSE(Value("").toDateTime().isValid());
    EXPECT_THROW(static_cast<void>(Value("i morgen").toDateTime()), UsageError);
}

TEST(Value, ConversionToAColumnsType) {
    EXPECT_TRUE(convertTo(Value(), FieldType::Integer).isNull());
    EXPECT_EQ(convertTo("7", FieldType::Integer), Value(7));
    EXPECT_EQ(convertTo(1, FieldType::Bool), Value(true));
    EXPECT_EQ(convertTo(1.25, FieldType::Decimal), Value(*Decimal::fromText(u"1.25")));
    EXPECT_EQ(convertTo(7, FieldType::Text), Value("7"));
    const QUuid id = QUuid::createUuid();
    EXPECT_EQ(convertTo(id.toString(), FieldType::Guid), Value(id));
    EXPECT_THROW(static_cast<void>(convertTo("x", FieldType::Guid)), UsageError);
    EXPECT_THROW(static_cast<void>(convertTo("x", FieldType::Decimal)), UsageError);
}

}  // namespace
}  // namespace torvik::db
