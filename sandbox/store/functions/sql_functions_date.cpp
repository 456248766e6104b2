// Functions on dates and times.
#include "sandbox/store/functions/sql_functions_support.h"
#include "sandbox/store/values/convert_errors.h"
#include "sandbox/store/values/datetime.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox::functions {
namespace {

std::int64_t moved(std::int64_t units, const Type& to) {
    const Type from{.id = TypeId::DateTime2, .scale = 7};
    return fromMoment(toMoment(units, from), to).value_or(0);
}

void getDate(Call& call) {
    call.integer64(moved(call.session().now, Type{.id = TypeId::DateTime}));
}
void getUtcDate(Call& call) {
    call.integer64(moved(call.session().nowUtc, Type{.id = TypeId::DateTime}));
}
void sysDateTime(Call& call) {
    call.integer64(call.session().now);
}
void sysUtcDateTime(Call& call) {
    call.integer64(call.session().nowUtc);
}

// DATEADD(part, number, date, type of date)
void add(Call& call) {
    call.integer64(dateAdd(static_cast<DatePart>(call.integer(0)), call.integer(1), call.integer(2), call.type(3)));
}

// DATEDIFF(part, from, to, types of both)
void difference(Call& call) {
    call.integer64(dateDiff(static_cast<DatePart>(call.integer(0)), toMoment(call.integer(1), call.type(3)),
                            toMoment(call.integer(2), call.type(4))));
}

void part(Call& call) {
    call.integer64(
        datePartOf(static_cast<DatePart>(call.integer(0)), call.integer(1), call.type(2), call.session().dateFirst));
}

void name(Call& call) {
    const auto wanted = static_cast<DatePart>(call.integer(0));
    const Type type = call.type(2);
    const int n = datePartOf(wanted, call.integer(1), type, call.session().dateFirst);
    const bool norwegian = call.session().convert.norwegian;
    if (wanted == DatePart::Month) return call.string(monthName(n, norwegian));
    if (wanted == DatePart::Weekday)
        return call.string(weekdayName((n - 1 + call.session().dateFirst - 1) % 7, norwegian));
    call.string(std::to_string(n));
}

template <DatePart Part>
void onePart(Call& call) {
    call.integer64(datePartOf(Part, call.integer(0), call.type(1), 7));
}

// EOMONTH(date [, months], type of date)
void endOfMonth(Call& call) {
    const Type type = call.type(call.count() - 1), date{.id = TypeId::Date};
    std::int64_t day = toMoment(call.integer(0), type).day;
    if (call.count() > 2) day = dateAdd(DatePart::Month, call.integer(1), day, date);
    const CalendarDay c = calendarDay(day);
    call.integer64(dayNumber(c.year, c.month, daysInMonth(c.year, c.month)));
}

SqlError cannotConstruct(const char* type) {
    return SqlError(errorMessage<289>(type));
}

bool validArguments(Call& call, int first) {
    return call.integer(first) >= 1 && call.integer(first) <= 9999 && call.integer(first + 1) >= 1 &&
           call.integer(first + 1) <= 12 && call.integer(first + 2) >= 1 && call.integer(first + 2) <= 31 &&
           validDay(static_cast<int>(call.integer(first)), static_cast<int>(call.integer(first + 1)),
                    static_cast<int>(call.integer(first + 2)));
}

std::int64_t dayOfArguments(Call& call) {
    return dayNumber(static_cast<int>(call.integer(0)), static_cast<int>(call.integer(1)),
                     static_cast<int>(call.integer(2)));
}

void dateFromParts(Call& call) {
    if (!validArguments(call, 0)) throw cannotConstruct("date");
    call.integer64(dayOfArguments(call));
}

void dateTimeFromParts(Call& call) {
    const std::int64_t h = call.integer(3), m = call.integer(4), s = call.integer(5), ms = call.integer(6);
    const bool clock = h >= 0 && h < 24 && m >= 0 && m < 60 && s >= 0 && s < 60 && ms >= 0 && ms < 1000;
    if (!clock || !validArguments(call, 0)) throw cannotConstruct("datetime");
    const Moment moment{dayOfArguments(call), ((h * 60 + m) * 60 + s) * kUnitsPerSecond + ms * 10'000};
    const auto ticks = fromMoment(moment, Type{.id = TypeId::DateTime});
    if (!ticks) throw cannotConstruct("datetime");
    call.integer64(*ticks);
}

void isDateValue(Call& call) {
    const Type type = call.type(1);
    if (call.isNull(0)) return call.integer64(0);
    if (isTemporal(type.id))
        return call.integer64(type.id == TypeId::DateTime || type.id == TypeId::SmallDateTime ? 1 : 0);
    call.integer64(isCharacter(type.id) && looksLikeDate(call.text(0), call.session().convert) ? 1 : 0);
}

constexpr Registration kDates[] = {
    {"t_getdate", 0, always<getDate>, false},
    {"t_getutcdate", 0, always<getUtcDate>, false},
    {"t_sysdatetime", 0, always<sysDateTime>, false},
    {"t_sysutcdatetime", 0, always<sysUtcDateTime>, false},
    {"t_dateadd", 4, strict<add>},
    {"t_datediff", 5, strict<difference>},
    {"t_datepart", 3, strict<part>},
    {"t_datename", 3, strict<name>},
    {"t_year", 2, strict<onePart<DatePart::Year>>},
    {"t_month", 2, strict<onePart<DatePart::Month>>},
    {"t_day", 2, strict<onePart<DatePart::Day>>},
    {"t_eomonth", 2, strict<endOfMonth>},
    {"t_eomonth", 3, strict<endOfMonth>},
    {"t_datefromparts", 3, strict<dateFromParts>},
    {"t_datetimefromparts", 7, strict<dateTimeFromParts>},
    {"t_isdate", 2, always<isDateValue>},
};

}  // namespace

std::span<const Registration> dateFunctions() {
    return kDates;
}

}  // namespace sandbox::functions
