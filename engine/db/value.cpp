// See value.h.
#include "engine/db/value.h"

#include <algorithm>
#include <array>
#include <cfenv>
#include <cmath>
#include <limits>

#include "engine/db/errors.h"

namespace torvik::db {

namespace {

constexpr qint64 kTicksPerMs = 10'000;
constexpr qint64 kTicksPerDay = qint64{86'400'000} * kTicksPerMs;

Int128 powerOfTen(int exponent) {
    Int128 result = 1;
    for (int i = 0; i < exponent; ++i) result *= 10;
    return result;
}

[[noreturn]] void refuse(const QString& text, const char* kind) {
    throw UsageError(QStringLiteral("'%1' is not a valid %2 value").arg(text, QLatin1String(kind)));
}

// The day from which a floating day count runs.
QDate dayZero() {
    return {1899, 12, 30};
}

qint64 roundedToInt(double v, const QString& text) {
    const double rounded = std::nearbyint(v);  // half to even
    if (!(rounded >= -9223372036854775808.0 && rounded < 9223372036854775808.0)) refuse(text, "integer");
    return qint64(rounded);
}

qint64 roundedToInt(const Decimal& d) {
    const Int128 unit = powerOfTen(d.Scale);
    Int128 whole = d.Unscaled / unit;
    const Int128 rest = (d.Unscaled % unit) * 2;
    const Int128 size = rest < 0 ? -rest : rest;
    if (size > unit || (size == unit && whole % 2 != 0)) whole += d.Unscaled < 0 ? -1 : 1;
    if (whole < std::numeric_limits<qint64>::min() || whole > std::numeric_limits<qint64>::max())
        refuse(d.toQString(), "integer");
    return qint64(whole);
}

QString timeText(const DateTime& t) {
    return t.toString(t.ticksOfDay() == 0 ? QStringLiteral("dd.MM.yyyy") : QStringLiteral("dd.MM.yyyy hh:mm:ss"));
}

// Digits as few as give the same number back, with an exponent only where it would take a screenful without.
QString floatText(double v) {
    const double size = std::abs(v);
    const bool plain = v == 0 || (size >= 1e-7 && size < 1e17);
    return QString::number(v, plain ? 'f' : 'g', QLocale::FloatingPointShortest);
}

template <typename... F>
struct Overload : F... {
    using F::operator()...;
};
template <typename... F>
Overload(F...) -> Overload<F...>;

}  // namespace

Value::Value(const DateTime& v) {
    if (v.isValid()) v_ = v;
}

QString Value::toQString() const {
    return std::visit(Overload{[](std::monostate) { return QString(); },
                               [](bool v) { return v ? QStringLiteral("True") : QStringLiteral("False"); },
                               [](qint64 v) { return QString::number(v); }, [](double v) { return floatText(v); },
                               [](const Decimal& v) {
                                   QString text = v.toQString();
                                   if (v.Scale == 0) return text;
                                   while (text.endsWith(u'0')) text.chop(1);
                                   if (text.endsWith(u'.')) text.chop(1);
                                   return text;
                               },
                               [](const DateTime& v) { return timeText(v); }, [](const QString& v) { return v; },
                               [](const QByteArray& v) { return QString::fromLocal8Bit(v); },
                               [](const QUuid& v) { return v.toString().toUpper(); }},
                      v_);
}

qint64 Value::toInt() const {
    return std::visit(Overload{[](std::monostate) { return qint64{0}; }, [](bool v) { return qint64{v}; },
                               [](qint64 v) { return v; }, [](double v) { return roundedToInt(v, QString::number(v)); },
                               [](const Decimal& v) { return roundedToInt(v); },
                               [](const DateTime& v) { return qint64(dayZero().daysTo(v.date())); },
                               [](const QString& v) {
                                   bool ok = false;
                                   const qint64 number = v.trimmed().toLongLong(&ok);
                                   if (!ok) refuse(v, "integer");
                                   return number;
                               },
                               [](const QByteArray& v) -> qint64 { refuse(QString::fromLocal8Bit(v), "integer"); },
                               [](const QUuid& v) -> qint64 { refuse(v.toString(), "integer"); }},
                      v_);
}

double Value::toDouble() const {
    return std::visit(
        Overload{[](std::monostate) { return 0.0; }, [](bool v) { return double(v); },
                 [](qint64 v) { return double(v); }, [](double v) { return v; },
                 [](const Decimal& v) { return v.toDouble(); },
                 [](const DateTime& v) {
                     return double(dayZero().daysTo(v.date())) + double(v.ticksOfDay()) / double(kTicksPerDay);
                 },
                 [](const QString& v) {
                     bool ok = false;
                     const double number = v.trimmed().replace(u',', u'.').toDouble(&ok);
                     if (!ok) refuse(v, "floating point");
                     return number;
                 },
                 [](const QByteArray& v) -> double { refuse(QString::fromLocal8Bit(v), "floating point"); },
                 [](const QUuid& v) -> double { refuse(v.toString(), "floating point"); }},
        v_);
}

bool Value::toBool() const {
    if (const auto* v = std::get_if<bool>(&v_)) return *v;
    if (const auto* text = std::get_if<QString>(&v_)) {
        if (text->compare(u"true", Qt::CaseInsensitive) == 0) return true;
        if (text->compare(u"false", Qt::CaseInsensitive) == 0) return false;
    }
    return toDouble() != 0;
}

DateTime Value::toDateTime() const {
    if (const auto* v = std::get_if<DateTime>(&v_)) return *v;
    if (isNull()) return {};
    if (const auto* text = std::get_if<QString>(&v_)) {
        if (text->trimmed().isEmpty()) return {};
        if (const auto time = DateTime::fromText(*text)) return *time;
        refuse(*text, "date and time");
    }
    if (std::holds_alternative<QByteArray>(v_) || std::holds_alternative<QUuid>(v_))
        refuse(toQString(), "date and time");
    const double days = toDouble();
    const double whole = std::floor(days);
    const qint64 ms = std::llround((days - whole) * 86'400'000);
    const QDate date = dayZero().addDays(qint64(whole) + ms / 86'400'000);
    return DateTime::fromTicks(date, ms % 86'400'000 * kTicksPerMs);
}

QByteArray Value::toBytes() const {
    if (const auto* v = std::get_if<QByteArray>(&v_)) return *v;
    if (isNull()) return {};
    return toQString().toLocal8Bit();
}

Value convertTo(const Value& value, FieldType type) {
    if (value.isNull()) return {};
    switch (type) {
        case FieldType::Bool: return value.toBool();
        case FieldType::Integer: return value.toInt();
        case FieldType::Float: return value.toDouble();
        case FieldType::Decimal: {
            if (std::holds_alternative<Decimal>(value.variant())) return value;
            QString text = value.toQString().replace(u',', u'.');
            if (std::holds_alternative<double>(value.variant()))
                text = QString::number(value.toDouble(), 'f', QLocale::FloatingPointShortest);
            if (std::holds_alternative<bool>(value.variant())) text = QString::number(value.toInt());
            if (std::holds_alternative<DateTime>(value.variant())) refuse(text, "decimal");
            const auto number = Decimal::fromText(text);
            if (!number) refuse(text, "decimal");
            return *number;
        }
        case FieldType::DateTime: {
            const DateTime time = value.toDateTime();
            return time.date().isValid() ? Value(time) : Value();
        }
        case FieldType::Date: {
            const DateTime time = value.toDateTime();
            return DateTime(time.date());
        }
        case FieldType::Text: return value.toQString();
        case FieldType::Bytes: return value.toBytes();
        case FieldType::Guid: {
            if (std::holds_alternative<QUuid>(value.variant())) return value;
            const QUuid id = QUuid::fromString(value.toQString().trimmed());
            if (id.isNull() && !value.toQString().contains(u"00000000-0000-0000-0000-000000000000"))
                refuse(value.toQString(), "GUID");
            return id;
        }
    }
    return value;
}

}  // namespace torvik::db
