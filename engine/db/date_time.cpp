// See date_time.h.
#include "engine/db/date_time.h"

#include "engine/db/errors.h"

namespace torvik::db {

namespace {

constexpr qint64 kTicksPerMs = 10'000;
constexpr qint64 kTicksPerDay = qint64{86'400'000} * kTicksPerMs;

void requireValid(const DateTime& value) {
    if (!value.isValid()) throw UsageError(QStringLiteral("An invalid date cannot stand in a statement"));
}

}  // namespace

DateTime::DateTime(QDate date, QTime time, int hundredNanoseconds) : date_(date) {
    if (time.isValid())
        ticks_ = time.msecsSinceStartOfDay() * kTicksPerMs + hundredNanoseconds;
    else
        date_ = QDate();
}

DateTime DateTime::fromTicks(QDate date, qint64 ticksOfDay) {
    DateTime t;
    t.date_ = date;
    t.ticks_ = ticksOfDay;
    return t;
}

// Taken apart by hand: a QDateTime would refuse the hour that summer time leaves out.
std::optional<DateTime> DateTime::fromText(const QString& text) {
    QString trimmed = text.trimmed();
    trimmed.replace(u'T', u' ');
    const QString dayText = trimmed.section(u' ', 0, 0);
    const QString clockText = trimmed.section(u' ', 1).trimmed();
    QDate day;
    for (const char* form : {"dd.MM.yyyy", "yyyyMMdd", "yyyy-MM-dd"}) {
        day = QDate::fromString(dayText, QLatin1String(form));
        if (day.isValid()) break;
    }
    if (!day.isValid()) return std::nullopt;
    if (clockText.isEmpty()) return DateTime(day);
    for (const char* form : {"hh:mm:ss.zzz", "hh:mm:ss", "hh:mm"}) {
        const QTime clock = QTime::fromString(clockText, QLatin1String(form));
        if (clock.isValid()) return DateTime(day, clock);
    }
    return std::nullopt;
}

bool DateTime::isValid() const {
    return date_.isValid() && ticks_ >= 0 && ticks_ < kTicksPerDay;
}

QTime DateTime::time() const {
    return QTime::fromMSecsSinceStartOfDay(int(ticks_ / kTicksPerMs));
}

// UTC has every hour of every day once.
QString DateTime::toString(const QString& format) const {
    return isValid() ? QDateTime(date_, time(), Qt::UTC).toString(format) : QString();
}

QString DateTime::literal() const {
    requireValid(*this);
    return u'\'' + toString(QStringLiteral("yyyyMMdd HH:mm:ss:zzz")) + u'\'';
}

QString DateTime::dateLiteral() const {
    requireValid(*this);
    return u'\'' + date_.toString(QStringLiteral("yyyyMMdd")) + u'\'';
}

std::strong_ordering operator<=>(const DateTime& a, const DateTime& b) {
    if (a.isValid() != b.isValid()) return a.isValid() <=> b.isValid();
    if (!a.isValid()) return std::strong_ordering::equal;
    const auto days = a.date_.toJulianDay() <=> b.date_.toJulianDay();
    return days != 0 ? days : a.ticks_ <=> b.ticks_;
}

}  // namespace torvik::db
