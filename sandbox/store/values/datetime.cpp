// The calendar and the arithmetic on dates; texts are in datetime_read.cpp and datetime_text.cpp.
#include "sandbox/store/values/datetime.h"

#include <algorithm>
#include <array>
#include <climits>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/decimal.h"
#include "sandbox/store/values/error.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox {
namespace {

constexpr std::int64_t kUnitsPerMinute = 60 * kUnitsPerSecond;
constexpr std::int64_t kUnitsPerHour = 60 * kUnitsPerMinute;

constexpr std::int64_t floorDiv(std::int64_t a, std::int64_t b) {
    return a / b - ((a % b != 0 && (a < 0) != (b < 0)) ? 1 : 0);
}

struct PartName {
    std::string_view name;
    DatePart part;
};
// The first name of each part is the one that errors show.
constexpr PartName kPartNames[] = {
    {"year", DatePart::Year},       {"yy", DatePart::Year},
    {"yyyy", DatePart::Year},       {"quarter", DatePart::Quarter},
    {"qq", DatePart::Quarter},      {"q", DatePart::Quarter},
    {"month", DatePart::Month},     {"mm", DatePart::Month},
    {"m", DatePart::Month},         {"dayofyear", DatePart::DayOfYear},
    {"dy", DatePart::DayOfYear},    {"y", DatePart::DayOfYear},
    {"day", DatePart::Day},         {"dd", DatePart::Day},
    {"d", DatePart::Day},           {"week", DatePart::Week},
    {"wk", DatePart::Week},         {"ww", DatePart::Week},
    {"weekday", DatePart::Weekday}, {"dw", DatePart::Weekday},
    {"w", DatePart::Weekday},       {"hour", DatePart::Hour},
    {"hh", DatePart::Hour},         {"minute", DatePart::Minute},
    {"mi", DatePart::Minute},       {"n", DatePart::Minute},
    {"second", DatePart::Second},   {"ss", DatePart::Second},
    {"s", DatePart::Second},        {"millisecond", DatePart::Millisecond},
    {"ms", DatePart::Millisecond},  {"microsecond", DatePart::Microsecond},
    {"mcs", DatePart::Microsecond}, {"nanosecond", DatePart::Nanosecond},
    {"ns", DatePart::Nanosecond},   {"iso_week", DatePart::IsoWeek},
    {"isowk", DatePart::IsoWeek},   {"isoww", DatePart::IsoWeek},
};

[[noreturn]] void raiseUnsupported(DatePart part, const char* function, const Type& type) {
    throw SqlError(errorMessage<9810>(datePartName(part), function, typeName(type)));
}

void requirePart(DatePart part, const char* function, const Type& type) {
    const bool clock = part >= DatePart::Hour && part <= DatePart::Nanosecond;
    if ((type.id == TypeId::Date && clock) || (type.id == TypeId::Time && !clock))
        raiseUnsupported(part, function, type);
}

int isoWeek(std::int64_t day) {
    const std::int64_t thursday = day - day % 7 + 3;
    return static_cast<int>((thursday - dayNumber(calendarDay(thursday).year, 1, 1)) / 7) + 1;
}

std::int64_t unitsOf(DatePart part) {
    switch (part) {
        case DatePart::Hour: return kUnitsPerHour;
        case DatePart::Minute: return kUnitsPerMinute;
        case DatePart::Second: return kUnitsPerSecond;
        case DatePart::Millisecond: return 10'000;
        case DatePart::Microsecond: return 10;
        default: return 0;
    }
}

}  // namespace

std::int64_t dayNumber(int year, int month, int day) {
    const std::int64_t y = year - (month <= 2 ? 1 : 0);
    const std::int64_t era = floorDiv(y, 400);
    const std::int64_t yearOfEra = y - era * 400;
    const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 306;
}

CalendarDay calendarDay(std::int64_t day) {
    const std::int64_t shifted = day + 306;
    const std::int64_t era = floorDiv(shifted, 146097);
    const std::int64_t dayOfEra = shifted - era * 146097;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
    const int month = static_cast<int>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
    return {static_cast<int>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0)), month,
            static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1)};
}

int daysInMonth(int year, int month) {
    constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return month == 2 && leap ? 29 : kDays[static_cast<std::size_t>(month - 1)];
}

bool validDay(int year, int month, int day) {
    return year >= 1 && year <= 9999 && month >= 1 && month <= 12 && day >= 1 && day <= daysInMonth(year, month);
}

Moment toMoment(std::int64_t value, const Type& type) {
    switch (type.id) {
        case TypeId::Date: return {value, 0};
        case TypeId::Time: return {kDay1900, value};
        case TypeId::DateTime2: return {value / kUnitsPerDay, value % kUnitsPerDay};
        default: {
            const std::int64_t day = floorDiv(value, kTicksPerDay);
            return {day + kDay1900, ((value - day * kTicksPerDay) * 100'000 + 1) / 3};
        }
    }
}

std::optional<std::int64_t> fromMoment(const Moment& moment, const Type& type) {
    // In units that one rounding step of the type may carry into the next day.
    std::int64_t day = moment.day, units = moment.units;
    const auto roundTo = [&](std::int64_t step) {
        units = (units + step / 2) / step * step;
        if (units >= kUnitsPerDay) {
            units -= kUnitsPerDay;
            ++day;
        }
    };
    switch (type.id) {
        case TypeId::Date: break;
        case TypeId::Time:
        case TypeId::DateTime2: {
            std::int64_t step = 1;
            for (int i = type.scale; i < 7; ++i) step *= 10;
            roundTo(step);
            break;
        }
        case TypeId::SmallDateTime: {
            const auto ticks = fromMoment(moment, Type{.id = TypeId::DateTime});
            if (!ticks) return std::nullopt;
            constexpr std::int64_t kMinute = 60 * 300;
            const std::int64_t minute = floorDiv(*ticks + kMinute / 2, kMinute) * kMinute;
            constexpr std::int64_t kLastMinute = 65535LL * kTicksPerDay + kTicksPerDay - kMinute;  // 2079-06-06 23:59
            if (minute < 0 || minute > kLastMinute) return std::nullopt;
            return minute;
        }
        default: {
            const std::int64_t ticks = (day - kDay1900) * kTicksPerDay + (units * 3 + 50'000) / 100'000;
            if (day < kDay1753 || ticks >= (kDay9999 + 1 - kDay1900) * kTicksPerDay) return std::nullopt;
            return ticks;
        }
    }
    if (type.id == TypeId::Time) return units;
    if (day < 0 || day > kDay9999) return std::nullopt;
    return type.id == TypeId::Date ? day : day * kUnitsPerDay + units;
}

std::optional<DatePart> datePartByName(std::string_view name) {
    for (const PartName& row : kPartNames) {
        if (sameName(row.name, name)) return row.part;
    }
    return std::nullopt;
}

std::string_view datePartName(DatePart part) {
    return std::find_if(std::begin(kPartNames), std::end(kPartNames),
                        [&](const PartName& row) { return row.part == part; })
        ->name;
}

std::int64_t dateAdd(DatePart part, std::int64_t number, std::int64_t value, const Type& type) {
    requirePart(part, "dateadd", type);
    const auto overflow = [&]() -> SqlError { return SqlError(errorMessage<517>(typeName(type))); };
    Moment moment = toMoment(value, type);
    switch (part) {
        case DatePart::Year:
        case DatePart::Quarter:
        case DatePart::Month: {
            const std::int64_t months = number * (part == DatePart::Year ? 12 : part == DatePart::Quarter ? 3 : 1);
            const CalendarDay c = calendarDay(moment.day);
            const std::int64_t target = c.year * 12LL + c.month - 1 + months;
            if (target < 12 || target >= 10000LL * 12) throw overflow();
            const int year = static_cast<int>(target / 12), month = static_cast<int>(target % 12) + 1;
            moment.day = dayNumber(year, month, std::min(c.day, daysInMonth(year, month)));
            break;
        }
        case DatePart::DayOfYear:
        case DatePart::Day:
        case DatePart::Weekday: moment.day += number; break;
        case DatePart::Week: moment.day += number * 7; break;
        case DatePart::IsoWeek: raiseUnsupported(part, "dateadd", type);
        default: {
            // Nanoseconds are less than a unit; the others are whole units.
            const Int128 added = part == DatePart::Nanosecond ? Int128{number} / 100 : Int128{number} * unitsOf(part);
            Int128 day = (moment.units + added) / kUnitsPerDay;
            Int128 units = (moment.units + added) % kUnitsPerDay;
            if (units < 0) {
                units += kUnitsPerDay;
                --day;
            }
            if (day < -kDay9999 || day > kDay9999) throw overflow();
            moment.units = static_cast<std::int64_t>(units);
            if (type.id != TypeId::Time) moment.day += static_cast<std::int64_t>(day);
        }
    }
    if (moment.day < 0 || moment.day > kDay9999) throw overflow();
    const auto result = fromMoment(moment, type);
    if (!result) throw overflow();
    return *result;
}

std::int64_t dateDiff(DatePart part, const Moment& from, const Moment& to) {
    const CalendarDay a = calendarDay(from.day), b = calendarDay(to.day);
    Int128 result = 0;
    switch (part) {
        case DatePart::Year: result = b.year - a.year; break;
        case DatePart::Quarter: result = (b.year * 4 + (b.month - 1) / 3) - (a.year * 4 + (a.month - 1) / 3); break;
        case DatePart::Month: result = (b.year - a.year) * 12 + b.month - a.month; break;
        case DatePart::Week:  // weeks begin on Sunday whatever DATEFIRST says
            result = floorDiv(to.day + 1, 7) - floorDiv(from.day + 1, 7);
            break;
        case DatePart::IsoWeek: raiseUnsupported(part, "datediff", Type{.id = TypeId::DateTime});
        case DatePart::DayOfYear:
        case DatePart::Day:
        case DatePart::Weekday: result = to.day - from.day; break;
        case DatePart::Nanosecond:
            result = (Int128{to.day - from.day} * kUnitsPerDay + to.units - from.units) * 100;
            break;
        default: {
            const std::int64_t unit = unitsOf(part);
            result = Int128{to.day - from.day} * (kUnitsPerDay / unit) + to.units / unit - from.units / unit;
        }
    }
    if (result < INT_MIN || result > INT_MAX) {
        throw SqlError(errorMessage<535>());
    }
    return static_cast<std::int64_t>(result);
}

int datePartOf(DatePart part, std::int64_t value, const Type& type, int dateFirst) {
    requirePart(part, "datepart", type);
    const Moment moment = toMoment(value, type);
    const CalendarDay c = calendarDay(moment.day);
    const std::int64_t newYear = dayNumber(c.year, 1, 1);
    const auto weekdayIndex = [&](std::int64_t day) { return static_cast<int>((day - (dateFirst - 1) + 7) % 7); };
    const int fraction = static_cast<int>(moment.units % kUnitsPerSecond);
    switch (part) {
        case DatePart::Year: return c.year;
        case DatePart::Quarter: return (c.month - 1) / 3 + 1;
        case DatePart::Month: return c.month;
        case DatePart::DayOfYear: return static_cast<int>(moment.day - newYear) + 1;
        case DatePart::Day: return c.day;
        case DatePart::Week: return static_cast<int>((moment.day - newYear + weekdayIndex(newYear)) / 7) + 1;
        case DatePart::Weekday: return weekdayIndex(moment.day) + 1;
        case DatePart::Hour: return static_cast<int>(moment.units / kUnitsPerHour);
        case DatePart::Minute: return static_cast<int>(moment.units / kUnitsPerMinute % 60);
        case DatePart::Second: return static_cast<int>(moment.units / kUnitsPerSecond % 60);
        case DatePart::Millisecond:  // a datetime's thirds of 10 ms show as 3 and 7
            return type.id == TypeId::DateTime ? (fraction + 5'000) / 10'000 : fraction / 10'000;
        case DatePart::Microsecond: return fraction / 10;
        case DatePart::Nanosecond: return fraction * 100;
        case DatePart::IsoWeek: return isoWeek(moment.day);
    }
    return 0;
}

}  // namespace sandbox
