// A point of time as the databases keep it: a calendar day and a time of day, without a zone. It is what date-times are
// from one database to the other and into a statement, so that 02:30 on the Sunday on which the clocks go forward is an
// hour like any other. QDateTime is only for the operator's own clock.
#pragma once

#include <QDate>
#include <QDateTime>
#include <QTime>
#include <compare>
#include <optional>

namespace torvik::db {

// In steps of 100 ns, so that datetime2(7) and the 1/300 s of datetime (which the server gives in milliseconds ending
// in 0, 3 and 7) both come and go unchanged.
class DateTime {
public:
    DateTime() = default;  // invalid
    explicit DateTime(QDate date, QTime time = QTime(0, 0), int hundredNanoseconds = 0);
    // What the operator's clock, or a field that he filled in, shows.
    explicit DateTime(const QDateTime& clock) : DateTime(clock.date(), clock.time()) {}
    static DateTime fromTicks(QDate date, qint64 ticksOfDay);
    // "dd.MM.yyyy", "yyyyMMdd" or "yyyy-MM-dd", then nothing or "hh:mm[:ss[.fff]]"; nothing for any other text.
    static std::optional<DateTime> fromText(const QString& text);

    // A day of the calendar and less than 24 hours.
    [[nodiscard]] bool isValid() const;
    [[nodiscard]] QDate date() const { return date_; }
    [[nodiscard]] QTime time() const;
    // The part of the second, in steps of 100 ns: 0 to 9999999.
    [[nodiscard]] int fraction() const { return int(ticks_ % 10'000'000); }
    // Steps of 100 ns since midnight.
    [[nodiscard]] qint64 ticksOfDay() const { return ticks_; }

    // In QDateTime's format letters; empty when invalid.
    [[nodiscard]] QString toString(const QString& format) const;
    // 'yyyymmdd hh:nn:ss:zzz' and 'yyyymmdd', in single quotes, as they stand in SQL text. Raise UsageError when
    // invalid: an empty literal would be the year 1900 to the server.
    [[nodiscard]] QString literal() const;
    [[nodiscard]] QString dateLiteral() const;

    // By day, then time; an invalid one is before all others.
    friend std::strong_ordering operator<=>(const DateTime& a, const DateTime& b);
    friend bool operator==(const DateTime& a, const DateTime& b) { return a <=> b == 0; }

private:
    QDate date_;
    qint64 ticks_ = 0;
};

}  // namespace torvik::db
