// Dates and times: the calendar, the units of each type, reading and writing of date texts, DATEADD and its kin. Used
// by conversions and functions. Pure arithmetic: the clock is read elsewhere.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/type.h"
#include "sandbox/store/values/value.h"

namespace sandbox {

inline constexpr std::int64_t kTicksPerDay = 24LL * 3600 * 300;  // datetime
inline constexpr std::int64_t kUnitsPerSecond = 10'000'000;      // datetime2
inline constexpr std::int64_t kUnitsPerDay = 24LL * 3600 * kUnitsPerSecond;
inline constexpr std::int64_t kDay1900 = 693595;  // 1900-01-01 in days since 0001-01-01
inline constexpr std::int64_t kDay1753 = 639905;
inline constexpr std::int64_t kDay9999 = 3652058;  // 9999-12-31

// A point in time, whatever its type: days since 0001-01-01 and units of 100 ns in the day.
struct Moment {
    std::int64_t day = kDay1900;
    std::int64_t units = 0;
    friend auto operator<=>(const Moment&, const Moment&) = default;
};

struct CalendarDay {
    int year = 1900;
    int month = 1;
    int day = 1;
};

[[nodiscard]] std::int64_t dayNumber(int year, int month, int day);
[[nodiscard]] CalendarDay calendarDay(std::int64_t day);
[[nodiscard]] int daysInMonth(int year, int month);
[[nodiscard]] bool validDay(int year, int month, int day);

// A temporal type's stored value as a moment (time: on 1900-01-01), and back, rounded to what the type holds; none when
// the type does not reach so far.
[[nodiscard]] Moment toMoment(std::int64_t value, const Type& type);
[[nodiscard]] std::optional<std::int64_t> fromMoment(const Moment& moment, const Type& type);

// Date texts. style 0: the session's date order; CONVERT's styles fix the order of their own form.
enum class DateTextFault { None, Syntax, Range };
struct DateText {
    Moment moment;
    DateTextFault fault = DateTextFault::None;
};
// isoFirst: 'yyyy-mm-dd' is read so whatever the date order (date, time and datetime2 do, datetime does not);
// maxFraction: digits allowed after the seconds' point.
[[nodiscard]] DateText readDateText(std::string_view text, DateOrder order, int style, bool isoFirst, int maxFraction);

// The text of a temporal value under a style; none when the style is no style of that type (281).
[[nodiscard]] std::optional<std::string> writeDateText(std::int64_t value, const Type& type, int style, bool norwegian);
[[nodiscard]] std::string_view monthName(int month, bool norwegian);      // 1 to 12
[[nodiscard]] std::string_view weekdayName(int weekday, bool norwegian);  // 0 Monday to 6 Sunday

enum class DatePart : int {
    Year,
    Quarter,
    Month,
    DayOfYear,
    Day,
    Week,
    Weekday,
    Hour,
    Minute,
    Second,
    Millisecond,
    Microsecond,
    Nanosecond,
    IsoWeek,
};
[[nodiscard]] std::optional<DatePart> datePartByName(std::string_view name);
[[nodiscard]] std::string_view datePartName(DatePart part);

// DATEADD on a value of `type`; raises 517 when it leaves the type's range.
[[nodiscard]] std::int64_t dateAdd(DatePart part, std::int64_t number, std::int64_t value, const Type& type);
// DATEDIFF: boundaries crossed; raises 535 beyond int.
[[nodiscard]] std::int64_t dateDiff(DatePart part, const Moment& from, const Moment& to);
[[nodiscard]] int datePartOf(DatePart part, std::int64_t value, const Type& type, int dateFirst);

}  // namespace sandbox
