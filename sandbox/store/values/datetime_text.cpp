// The texts of dates: names of months and days, and CONVERT's styles. Reading is in datetime_read.cpp.
#include <array>

#include "sandbox/store/values/datetime.h"

namespace sandbox {
namespace {

constexpr std::array<std::string_view, 12> kMonths = {"January",   "February", "March",    "April",
                                                      "May",       "June",     "July",     "August",
                                                      "September", "October",  "November", "December"};
constexpr std::array<std::string_view, 12> kMonthsNorwegian = {"januar",    "februar", "mars",     "april",
                                                               "mai",       "juni",    "juli",     "august",
                                                               "september", "oktober", "november", "desember"};
constexpr std::array<std::string_view, 7> kWeekdays = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                                       "Friday", "Saturday", "Sunday"};
constexpr std::array<std::string_view, 7> kWeekdaysNorwegian = {"mandag", "tirsdag", "onsdag", "torsdag",
                                                                "fredag", "lørdag",  "søndag"};

// How a style writes. Y yyyy, y yy, M mm, D dd, d day with a blank, N Jan; H hh, h hour of twelve with a blank, i mi,
// s ss, f fraction, p AM or PM; anything else stands for itself.
struct StyleRow {
    int style;
    std::string_view date;
    std::string_view time;
    char between = ' ';
};
constexpr StyleRow kStyles[] = {
    {0, "N d Y", "h:ip"},
    {1, "M/D/y", ""},
    {2, "y.M.D", ""},
    {3, "D/M/y", ""},
    {4, "D.M.y", ""},
    {5, "D-M-y", ""},
    {6, "D N y", ""},
    {7, "N D, y", ""},
    {8, "", "H:i:s"},
    {9, "N d Y", "h:i:s:fp"},
    {10, "M-D-y", ""},
    {11, "y/M/D", ""},
    {12, "yMD", ""},
    {13, "D N Y", "H:i:s:f"},
    {14, "", "H:i:s:f"},
    {20, "Y-M-D", "H:i:s"},
    {21, "Y-M-D", "H:i:s.f"},
    {22, "M/D/y", "h:i:s p"},
    {23, "Y-M-D", ""},
    {24, "", "H:i:s"},
    {25, "Y-M-D", "H:i:s.f"},
    {100, "N d Y", "h:ip"},
    {101, "M/D/Y", ""},
    {102, "Y.M.D", ""},
    {103, "D/M/Y", ""},
    {104, "D.M.Y", ""},
    {105, "D-M-Y", ""},
    {106, "D N Y", ""},
    {107, "N D, Y", ""},
    {108, "", "H:i:s"},
    {109, "N d Y", "h:i:s:fp"},
    {110, "M-D-Y", ""},
    {111, "Y/M/D", ""},
    {112, "YMD", ""},
    {113, "D N Y", "H:i:s:f"},
    {114, "", "H:i:s:f"},
    {120, "Y-M-D", "H:i:s"},
    {121, "Y-M-D", "H:i:s.f"},
    {126, "Y-M-D", "H:i:s.f", 'T'},
    {127, "Y-M-D", "H:i:s.f", 'T'},
};

void appendNumber(std::string& out, int value, int width, char fill = '0') {
    std::string digits = std::to_string(value);
    if (static_cast<int>(digits.size()) < width) out.append(static_cast<std::size_t>(width) - digits.size(), fill);
    out += digits;
}

// The decimals of the second as the type has them; empty where it has none.
std::string fractionText(std::int64_t units, const Type& type) {
    std::string digits;
    const auto fraction = static_cast<int>(units % kUnitsPerSecond);
    if (type.id == TypeId::Time || type.id == TypeId::DateTime2) {
        appendNumber(digits, fraction, 7);
        return digits.substr(0, type.scale);
    }
    if (type.id == TypeId::Date) return {};
    appendNumber(digits, (fraction + 5'000) / 10'000, 3);
    return digits;
}

}  // namespace

std::string_view monthName(int month, bool norwegian) {
    return (norwegian ? kMonthsNorwegian : kMonths)[static_cast<std::size_t>(month - 1)];
}

std::string_view weekdayName(int weekday, bool norwegian) {
    return (norwegian ? kWeekdaysNorwegian : kWeekdays)[static_cast<std::size_t>(weekday)];
}

std::optional<std::string> writeDateText(std::int64_t value, const Type& type, int style, bool norwegian) {
    const bool newer = type.id == TypeId::Date || type.id == TypeId::Time || type.id == TypeId::DateTime2;
    if (style == 0 && newer) style = 121;
    const StyleRow* row = nullptr;
    for (const StyleRow& candidate : kStyles) {
        if (candidate.style == style) row = &candidate;
    }
    if (!row) return std::nullopt;
    if ((type.id == TypeId::Time && row->time.empty()) || (type.id == TypeId::Date && row->date.empty()))
        return std::nullopt;

    const Moment moment = toMoment(value, type);
    const CalendarDay c = calendarDay(moment.day);
    const auto minutes = static_cast<int>(moment.units / (60 * kUnitsPerSecond));
    const int hour = minutes / 60;
    const std::string fraction = fractionText(moment.units, type);
    // ISO 8601 leaves a datetime's zero milliseconds out.
    const bool noFraction = fraction.empty() || (row->between == 'T' && !newer && fraction == "000");

    std::string out;
    const auto write = [&](std::string_view form) {
        for (std::size_t i = 0; i < form.size(); ++i) {
            switch (form[i]) {
                case 'Y': appendNumber(out, c.year, 4); break;
                case 'y': appendNumber(out, c.year % 100, 2); break;
                case 'M': appendNumber(out, c.month, 2); break;
                case 'D': appendNumber(out, c.day, 2); break;
                case 'd': appendNumber(out, c.day, 2, ' '); break;
                case 'N': out += monthName(c.month, norwegian).substr(0, 3); break;
                case 'H': appendNumber(out, hour, 2); break;
                case 'h': appendNumber(out, hour % 12 == 0 ? 12 : hour % 12, 2, ' '); break;
                case 'i': appendNumber(out, minutes % 60, 2); break;
                case 's': appendNumber(out, static_cast<int>(moment.units / kUnitsPerSecond % 60), 2); break;
                case 'f': noFraction ? out.pop_back() : void(out += fraction); break;
                case 'p': out += hour < 12 ? "AM" : "PM"; break;
                default: out += form[i];
            }
        }
    };
    if (type.id != TypeId::Time) write(row->date);
    if (type.id == TypeId::Date || row->time.empty()) return out;
    if (!out.empty()) out += row->between;
    write(row->time);
    return out;
}

}  // namespace sandbox
