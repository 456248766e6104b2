// Dates: the calendar, texts in and out, DATEADD, DATEDIFF and DATEPART.
#include "sandbox/store/values/datetime.h"

#include <gtest/gtest.h>

#include "sandbox/store/values/error.h"

namespace sandbox {
namespace {

constexpr Type kDateTime{.id = TypeId::DateTime};
constexpr Type kDate{.id = TypeId::Date};

// A text read as a datetime and written in style 121; the fault's name where it is none.
std::string read(std::string_view text, DateOrder order = DateOrder::Mdy, int style = 0) {
    const DateText result = readDateText(text, order, style, false, 3);
    if (result.fault == DateTextFault::Syntax) return "syntax";
    if (result.fault == DateTextFault::Range) return "range";
    const auto ticks = fromMoment(result.moment, kDateTime);
    return ticks ? writeDateText(*ticks, kDateTime, 121, false).value() : "beyond";
}

std::int64_t ticks(std::string_view text) {
    return fromMoment(readDateText(text, DateOrder::Mdy, 0, false, 3).moment, kDateTime).value();
}

TEST(DateTime, CalendarRunsBothWays) {
    EXPECT_EQ(dayNumber(1, 1, 1), 0);
    EXPECT_EQ(dayNumber(1753, 1, 1), kDay1753);
    EXPECT_EQ(dayNumber(1900, 1, 1), kDay1900);
    EXPECT_EQ(dayNumber(9999, 12, 31), kDay9999);
    for (std::int64_t day = 0; day <= kDay9999; day += 17) {
        const CalendarDay c = calendarDay(day);
        ASSERT_EQ(dayNumber(c.year, c.month, c.day), day);
    }
}

TEST(DateTime, ReadsTheCommonForms) {
    const struct {
        const char* text;
        const char* value;
    } cases[] = {
        {"20240228", "2024-02-28 00:00:00.000"},
        {"240228", "2024-02-28 00:00:00.000"},
        {"2024", "2024-01-01 00:00:00.000"},
        {"2024-02-28", "2024-02-28 00:00:00.000"},
        {"2024/02/28 10:00", "2024-02-28 10:00:00.000"},
        {"2024-02-28T10:00:00.003", "2024-02-28 10:00:00.003"},
        {"2024-02-28T10:00:00Z", "2024-02-28 10:00:00.000"},
        {"2/28/2024", "2024-02-28 00:00:00.000"},
        {"2-28-24", "2024-02-28 00:00:00.000"},
        {"2-28-50", "1950-02-28 00:00:00.000"},
        {"Feb 28 2024 8:05AM", "2024-02-28 08:05:00.000"},
        {"Feb 28, 2024  8:05:07:120PM", "2024-02-28 20:05:07.120"},
        {"28 februar 2024", "2024-02-28 00:00:00.000"},
        {"28-Feb-2024", "2024-02-28 00:00:00.000"},
        {"Feb 2024", "2024-02-01 00:00:00.000"},
        {"20240228 10:00:00:003", "2024-02-28 10:00:00.003"},
        {"20240228 10:00:00.3", "2024-02-28 10:00:00.300"},
        {"10:30", "1900-01-01 10:30:00.000"},
        {"10 PM", "1900-01-01 22:00:00.000"},
        {"12:10 AM", "1900-01-01 00:10:00.000"},
        {"10:30 20240228", "2024-02-28 10:30:00.000"},
        {"", "1900-01-01 00:00:00.000"},
        {"   ", "1900-01-01 00:00:00.000"},
        {"no date", "syntax"},
        {"20240228 10:00 11:00", "syntax"},
        {"2024-02-28-", "syntax"},
        {"20240228 10:00:00.1234", "syntax"},
        {"20240230", "range"},
        {"28.02.2024", "range"},
        {"20240228 25:00", "range"},
        {"17521231", "beyond"},
    };
    for (const auto& c : cases) EXPECT_EQ(read(c.text), c.value) << '\'' << c.text << '\'';
}

TEST(DateTime, DateOrderDecidesWhatTheNumbersMean) {
    EXPECT_EQ(read("03-02-2024", DateOrder::Dmy), "2024-02-03 00:00:00.000");
    EXPECT_EQ(read("03-02-2024", DateOrder::Mdy), "2024-03-02 00:00:00.000");
    EXPECT_EQ(read("28.02.2024", DateOrder::Dmy), "2024-02-28 00:00:00.000");
    EXPECT_EQ(read("24-02-03", DateOrder::Ymd), "2024-02-03 00:00:00.000");
    EXPECT_EQ(read("2024-03-02", DateOrder::Dmy), "2024-02-03 00:00:00.000") << "datetime alone reads year, day, month";
    EXPECT_EQ(read("2024-03-02T00:00:00", DateOrder::Dmy), "2024-03-02 00:00:00.000");
    EXPECT_EQ(read("20240302", DateOrder::Dmy), "2024-03-02 00:00:00.000");
    EXPECT_EQ(readDateText("2024-03-02", DateOrder::Dmy, 0, true, 7).moment.day, dayNumber(2024, 3, 2));
    EXPECT_EQ(read("28.02.2024", DateOrder::Mdy, 104), "2024-02-28 00:00:00.000") << "a style overrules the session";
}

TEST(DateTime, KeepsThirdsOfAHundredth) {
    EXPECT_EQ(read("2024-01-01T10:00:00.002"), "2024-01-01 10:00:00.003");
    EXPECT_EQ(read("2024-01-01T10:00:00.005"), "2024-01-01 10:00:00.007");
    EXPECT_EQ(read("2024-01-01T10:00:00.001"), "2024-01-01 10:00:00.000");
    EXPECT_EQ(read("2024-01-01T23:59:59.999"), "2024-01-02 00:00:00.000");
    for (std::int64_t t = 0; t < 300; ++t) EXPECT_EQ(fromMoment(toMoment(t, kDateTime), kDateTime), t);
    for (std::int64_t t = -300; t < 0; ++t) EXPECT_EQ(fromMoment(toMoment(t, kDateTime), kDateTime), t);
}

TEST(DateTime, SmallDateTimeRoundsToMinutesAndEndsIn2079) {
    const Type small{.id = TypeId::SmallDateTime};
    const auto rounded = [&](std::string_view text) { return fromMoment(toMoment(ticks(text), kDateTime), small); };
    EXPECT_EQ(rounded("20240228 10:00:29.998"), ticks("20240228 10:00"));
    EXPECT_EQ(rounded("20240228 10:00:30"), ticks("20240228 10:01"));
    EXPECT_EQ(rounded("20790606 23:59"), ticks("20790606 23:59"));
    EXPECT_FALSE(rounded("20790607"));
    EXPECT_FALSE(rounded("18991231"));
}

TEST(DateTime, WritesEveryStyle) {
    const std::int64_t value = ticks("20240208 08:05:09.120");
    const struct {
        int style;
        const char* text;
    } cases[] = {{0, "Feb  8 2024  8:05AM"},
                 {1, "02/08/24"},
                 {4, "08.02.24"},
                 {8, "08:05:09"},
                 {9, "Feb  8 2024  8:05:09:120AM"},
                 {12, "240208"},
                 {14, "08:05:09:120"},
                 {101, "02/08/2024"},
                 {102, "2024.02.08"},
                 {103, "08/02/2024"},
                 {104, "08.02.2024"},
                 {105, "08-02-2024"},
                 {106, "08 Feb 2024"},
                 {107, "Feb 08, 2024"},
                 {108, "08:05:09"},
                 {110, "02-08-2024"},
                 {111, "2024/02/08"},
                 {112, "20240208"},
                 {113, "08 Feb 2024 08:05:09:120"},
                 {114, "08:05:09:120"},
                 {120, "2024-02-08 08:05:09"},
                 {121, "2024-02-08 08:05:09.120"},
                 {126, "2024-02-08T08:05:09.120"}};
    for (const auto& c : cases) EXPECT_EQ(writeDateText(value, kDateTime, c.style, false), c.text) << c.style;
    EXPECT_EQ(writeDateText(ticks("20240208 08:05"), kDateTime, 126, false), "2024-02-08T08:05:00");
    EXPECT_EQ(writeDateText(ticks("20240508 20:05"), kDateTime, 106, true), "08 mai 2024");
    EXPECT_EQ(writeDateText(dayNumber(2024, 2, 8), kDate, 0, false), "2024-02-08");
    EXPECT_FALSE(writeDateText(value, kDateTime, 99, false));
    EXPECT_FALSE(writeDateText(0, kDate, 108, false));
}

TEST(DateTime, AddsParts) {
    const auto added = [](DatePart part, std::int64_t n, std::string_view text) {
        return writeDateText(dateAdd(part, n, ticks(text), kDateTime), kDateTime, 121, false).value();
    };
    EXPECT_EQ(added(DatePart::Month, 1, "20240131"), "2024-02-29 00:00:00.000");
    EXPECT_EQ(added(DatePart::Month, -13, "20240331"), "2023-02-28 00:00:00.000");
    EXPECT_EQ(added(DatePart::Year, 1, "20240229"), "2025-02-28 00:00:00.000");
    EXPECT_EQ(added(DatePart::Day, -1, "20240301 10:00"), "2024-02-29 10:00:00.000");
    EXPECT_EQ(added(DatePart::Hour, -1, "20240301 00:30"), "2024-02-29 23:30:00.000");
    EXPECT_EQ(added(DatePart::Second, 86400, "20240301"), "2024-03-02 00:00:00.000");
    EXPECT_EQ(added(DatePart::Millisecond, 1, "20240301"), "2024-03-01 00:00:00.000");
    EXPECT_EQ(added(DatePart::Millisecond, 2, "20240301"), "2024-03-01 00:00:00.003");
    EXPECT_THROW((void)added(DatePart::Year, 8000, "20240301"), SqlError);
    EXPECT_THROW((void)dateAdd(DatePart::Hour, 1, 0, kDate), SqlError);
}

TEST(DateTime, CountsBoundaries) {
    const auto between = [](DatePart part, std::string_view a, std::string_view b) {
        return dateDiff(part, toMoment(ticks(a), kDateTime), toMoment(ticks(b), kDateTime));
    };
    EXPECT_EQ(between(DatePart::Day, "20240228 23:59", "20240301 00:01"), 2);
    EXPECT_EQ(between(DatePart::Year, "20231231", "20240101"), 1);
    EXPECT_EQ(between(DatePart::Month, "20240131", "20240201"), 1);
    EXPECT_EQ(between(DatePart::Month, "20240201", "20240131"), -1);
    EXPECT_EQ(between(DatePart::Hour, "20240101 10:59", "20240101 11:00"), 1);
    EXPECT_EQ(between(DatePart::Minute, "20240101 10:00", "20240102 10:00"), 1440);
    EXPECT_EQ(between(DatePart::Week, "20240106", "20240107"), 1) << "Saturday to Sunday";
    EXPECT_THROW((void)between(DatePart::Second, "19000101", "20240101"), SqlError);
}

TEST(DateTime, TellsParts) {
    const auto part = [](DatePart p, std::string_view text, int dateFirst = 7) {
        return datePartOf(p, ticks(text), kDateTime, dateFirst);
    };
    EXPECT_EQ(part(DatePart::Weekday, "20240228"), 4);
    EXPECT_EQ(part(DatePart::Weekday, "20240228", 1), 3);
    EXPECT_EQ(part(DatePart::DayOfYear, "20240228"), 59);
    EXPECT_EQ(part(DatePart::Quarter, "20240401"), 2);
    EXPECT_EQ(part(DatePart::Week, "20240101"), 1);
    EXPECT_EQ(part(DatePart::Week, "20240107"), 2);
    EXPECT_EQ(part(DatePart::IsoWeek, "20240101"), 1);
    EXPECT_EQ(part(DatePart::IsoWeek, "20230101"), 52);
    EXPECT_EQ(part(DatePart::Millisecond, "20240101 10:00:00.997"), 997);
    EXPECT_EQ(part(DatePart::Millisecond, "20240101 10:00:00.003"), 3);
}

TEST(DateTime, PartsHaveTheirShortNames) {
    EXPECT_EQ(datePartByName("MM"), DatePart::Month);
    EXPECT_EQ(datePartByName("mi"), DatePart::Minute);
    EXPECT_EQ(datePartByName("dw"), DatePart::Weekday);
    EXPECT_FALSE(datePartByName("fortnight"));
}

}  // namespace
}  // namespace sandbox
