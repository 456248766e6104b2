// Reading of date texts: ISO 8601, separated numbers in the session's order, names of months, times before and after.
#include <array>
#include <cctype>
#include <span>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/datetime.h"
#include "sandbox/store/values/text.h"

namespace sandbox {
namespace {

// 1 to 12, 0 for a word that is no month. Names count in full or by their first three letters.
int monthByName(std::string_view word) {
    for (int month = 1; month <= 12; ++month) {
        for (const bool norwegian : {false, true}) {
            const std::string_view name = monthName(month, norwegian);
            if (sameName(word, name) || sameName(word, name.substr(0, 3))) return month;
        }
    }
    return 0;
}

// CONVERT's styles, reading: the order of the numbers.
std::optional<DateOrder> orderOfStyle(int style) {
    switch (style % 100) {
        case 1:
        case 10:
        case 22: return DateOrder::Mdy;
        case 2:
        case 11:
        case 12:
        case 20:
        case 21:
        case 23:
        case 25:
        case 26:
        case 27: return DateOrder::Ymd;
        case 3:
        case 4:
        case 5: return DateOrder::Dmy;
        default: return std::nullopt;
    }
}

// Reads date and time in whatever order they come.
class Reader {
public:
    Reader(std::string_view text, DateOrder order, bool isoFirst, int maxFraction)
        : text_(text), order_(order), isoFirst_(isoFirst), maxFraction_(maxFraction) {}

    DateText read() {
        if (isoForm()) {
            isoFirst_ = true;
            readDate();
            ++at_;  // T
            if (fault_ == DateTextFault::None) readTime();
            skipZone();
            skipBlanks();
        } else {
            bool date = false, time = false;
            for (skipBlanks(); at_ < text_.size() && fault_ == DateTextFault::None; skipBlanks()) {
                if (!time && atTime()) {
                    readTime();
                    time = true;
                } else if (!date) {
                    readDate();
                    date = true;
                } else {
                    fault_ = DateTextFault::Syntax;
                }
            }
        }
        if (fault_ == DateTextFault::None && at_ < text_.size()) fault_ = DateTextFault::Syntax;
        return {moment_, fault_};
    }

private:
    struct Part {
        int value = 0;
        int digits = 0;  // 0: the name of a month
    };

    bool digitAt(std::size_t i) const { return i < text_.size() && text_[i] >= '0' && text_[i] <= '9'; }
    bool letterAt(std::size_t i) const {
        return i < text_.size() && (std::isalpha(static_cast<unsigned char>(text_[i])) || (text_[i] & 0x80));
    }
    char charAt(std::size_t i) const { return i < text_.size() ? text_[i] : '\0'; }
    void skipBlanks() {
        while (charAt(at_) == ' ' || charAt(at_) == '\t') ++at_;
    }
    std::size_t runOfDigits(std::size_t from) const {
        std::size_t end = from;
        while (digitAt(end)) ++end;
        return end - from;
    }

    // yyyy-mm-ddT
    bool isoForm() const {
        return text_.size() > 10 && runOfDigits(0) == 4 && text_[4] == '-' && runOfDigits(5) == 2 && text_[7] == '-' &&
               runOfDigits(8) == 2 && (text_[10] == 'T' || text_[10] == 't');
    }

    // AM or PM at a place: 1 or 2, else 0.
    int halfDay(std::size_t i) const {
        const char first = static_cast<char>(std::toupper(static_cast<unsigned char>(charAt(i))));
        const char second = static_cast<char>(std::toupper(static_cast<unsigned char>(charAt(i + 1))));
        if (second != 'M' || letterAt(i + 2)) return 0;
        return first == 'A' ? 1 : first == 'P' ? 2 : 0;
    }

    bool atTime() const {
        const std::size_t digits = runOfDigits(at_);
        if (digits == 0 || digits > 2) return false;
        std::size_t next = at_ + digits;
        if (charAt(next) == ':') return true;
        while (charAt(next) == ' ') ++next;
        return halfDay(next) != 0;
    }

    int number(std::size_t digits) {
        int value = 0;
        for (std::size_t i = 0; i < digits; ++i) value = value * 10 + (text_[at_++] - '0');
        return value;
    }

    void readTime() {
        std::array<int, 3> clock{};
        std::int64_t fraction = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            const std::size_t digits = runOfDigits(at_);
            if (digits == 0 || digits > 2) return fail(DateTextFault::Syntax);
            clock[i] = number(digits);
            if (charAt(at_) != ':' || i == 2) break;
            ++at_;
        }
        const char mark = charAt(at_);
        if (mark == '.' || mark == ':') {
            ++at_;
            const std::size_t digits = runOfDigits(at_);
            const std::size_t most = mark == ':' ? 3 : static_cast<std::size_t>(maxFraction_);
            if (digits == 0 || digits > most) return fail(DateTextFault::Syntax);
            fraction = number(digits);
            // Behind a colon stand milliseconds, behind a point decimals of a second.
            for (std::size_t i = mark == ':' ? 3 : digits; i < 7; ++i) fraction *= 10;
        }
        std::size_t next = at_;
        while (charAt(next) == ' ') ++next;
        if (const int half = halfDay(next)) {
            at_ = next + 2;
            if (half == 1 && clock[0] > 12) return fail(DateTextFault::Range);
            if (half == 1 && clock[0] == 12) clock[0] = 0;
            if (half == 2 && clock[0] < 12) clock[0] += 12;
        }
        if (clock[0] > 23 || clock[1] > 59 || clock[2] > 59) return fail(DateTextFault::Range);
        moment_.units = ((clock[0] * 60LL + clock[1]) * 60 + clock[2]) * kUnitsPerSecond + fraction;
    }

    void skipZone() {
        if (charAt(at_) == 'Z' || charAt(at_) == 'z') {
            ++at_;
        } else if ((charAt(at_) == '+' || charAt(at_) == '-') && runOfDigits(at_ + 1) == 2 && charAt(at_ + 3) == ':' &&
                   runOfDigits(at_ + 4) == 2) {
            at_ += 6;
        }
    }

    void readDate() {
        std::array<Part, 3> parts{};
        std::size_t count = 0;
        bool separated = true;  // by a mark, not by blanks alone
        while (count < 3 && fault_ == DateTextFault::None) {
            if (count > 0 && atTime()) break;
            if (const std::size_t digits = runOfDigits(at_); digits > 0) {
                if (digits > 8) return fail(DateTextFault::Syntax);
                parts[count++] = {number(digits), static_cast<int>(digits)};
                if (count == 1 && digits > 4) break;
            } else if (letterAt(at_)) {
                const std::size_t begin = at_;
                while (letterAt(at_)) ++at_;
                const int month = monthByName(text_.substr(begin, at_ - begin));
                if (month == 0) return fail(DateTextFault::Syntax);
                parts[count++] = {month, 0};
            } else {
                return fail(DateTextFault::Syntax);
            }
            if (count == 3) break;
            const std::size_t end = at_;
            skipBlanks();
            const char mark = charAt(at_);
            const bool hasMark = mark == '-' || mark == '/' || mark == '.' || mark == ',';
            if (hasMark) {
                ++at_;
                skipBlanks();
            }
            if (at_ >= text_.size() || (count == 1 && parts[0].digits == 4 && !hasMark && !letterAt(at_))) {
                at_ = end;
                if (hasMark) return fail(DateTextFault::Syntax);
                break;
            }
            separated = separated && hasMark;
        }
        finishDate(std::span(parts).first(count), separated);
    }

    void finishDate(std::span<const Part> parts, bool separated) {
        std::size_t names = 0, name = 0;
        for (std::size_t i = 0; i < parts.size(); ++i) {
            if (parts[i].digits == 0) ++names, name = i;
        }
        if (names > 1) return fail(DateTextFault::Syntax);
        if (names == 1) return finishNamed(parts, name);
        if (parts.size() == 1) return finishUnseparated(parts[0]);
        if (parts.size() != 3 || !separated) return fail(DateTextFault::Syntax);

        std::optional<std::size_t> year;
        for (std::size_t i = 0; i < 3; ++i) {
            if (parts[i].digits == 3 || parts[i].digits > 4 || (parts[i].digits == 4 && year))
                return fail(DateTextFault::Syntax);
            if (parts[i].digits == 4) year = i;
        }
        constexpr std::array<std::array<std::size_t, 3>, 6> kPlaces = {{
            // year, month, day
            {2, 0, 1},
            {2, 1, 0},
            {0, 1, 2},
            {0, 2, 1},
            {1, 0, 2},
            {1, 2, 0},
        }};
        const auto& places = kPlaces[static_cast<std::size_t>(order_)];
        if (!year) {
            return setDay(fullYear(parts[places[0]]), parts[places[1]].value, parts[places[2]].value);
        }
        // The year shows by its digits; month and day follow the order of the session.
        const bool monthFirst = places[1] < places[2] || (*year == 0 && isoFirst_);
        const std::size_t first = *year == 0 ? 1 : 0, second = *year == 2 ? 1 : 2;
        setDay(parts[*year].value, parts[monthFirst ? first : second].value, parts[monthFirst ? second : first].value);
    }

    void finishUnseparated(const Part& part) {
        if (part.digits == 8) return setDay(part.value / 10000, part.value / 100 % 100, part.value % 100);
        if (part.digits == 6)
            return setDay(fullYear({part.value / 10000, 2}), part.value / 100 % 100, part.value % 100);
        if (part.digits == 4) return setDay(part.value, 1, 1);
        fail(DateTextFault::Syntax);
    }

    // "Feb 28 2024", "28 Feb 24", "2024 Feb 28", "Feb 2024".
    void finishNamed(std::span<const Part> parts, std::size_t name) {
        std::array<Part, 2> numbers{};
        std::size_t count = 0;
        for (const Part& part : parts) {
            if (part.digits > 4 || part.digits == 3) return fail(DateTextFault::Syntax);
            if (part.digits != 0) numbers[count++] = part;
        }
        const int month = parts[name].value;
        if (count == 1) {
            if (numbers[0].digits != 4) return fail(DateTextFault::Syntax);
            return setDay(numbers[0].value, month, 1);
        }
        if (count != 2) return fail(DateTextFault::Syntax);
        const bool yearFirst = numbers[0].digits == 4;
        setDay(fullYear(numbers[yearFirst ? 0 : 1]), month, numbers[yearFirst ? 1 : 0].value);
    }

    // The two digit year cutoff is 2049.
    static int fullYear(const Part& part) {
        if (part.digits == 4) return part.value;
        return part.value + (part.value < 50 ? 2000 : 1900);
    }

    void setDay(int year, int month, int day) {
        if (!validDay(year, month, day)) return fail(DateTextFault::Range);
        moment_.day = dayNumber(year, month, day);
    }

    void fail(DateTextFault fault) { fault_ = fault; }

    std::string_view text_;
    std::size_t at_ = 0;
    DateOrder order_;
    bool isoFirst_;
    int maxFraction_;
    Moment moment_;
    DateTextFault fault_ = DateTextFault::None;
};

}  // namespace

DateText readDateText(std::string_view text, DateOrder order, int style, bool isoFirst, int maxFraction) {
    text = trimBlanks(text);
    if (text.empty()) return {};
    const auto fixed = orderOfStyle(style);
    return Reader(text, fixed.value_or(order), isoFirst, maxFraction).read();
}

}  // namespace sandbox
