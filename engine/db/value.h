// One value of a column or parameter, typed and exact, with the conversions that callers use. Used by every class of
// engine/db; rows themselves are kept in typed column blocks (row_store.h) and become Values when read.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUuid>
#include <optional>
#include <variant>

namespace torvik::db {

// What a column holds, as the caller sees it.
enum class FieldType { Bool, Integer, Float, Decimal, DateTime, Date, Text, Bytes, Guid };

__extension__ using Int128 = __int128;

// An exact decimal number of up to 38 digits: Unscaled / 10^Scale. Money has Scale 4.
struct Decimal {
    Int128 Unscaled = 0;
    int Scale = 0;

    // "-12.50", with exactly Scale decimals.
    [[nodiscard]] QString toQString() const;
    [[nodiscard]] double toDouble() const;
    // Of "12", "-0.50", ".5"; nothing when the text is no number of at most 38 digits.
    static std::optional<Decimal> fromText(QStringView text);
    // Compares the numbers: 1.50 equals 1.5.
    friend bool operator==(const Decimal& a, const Decimal& b);
};

// A point of time without a zone, in steps of 100 ns, so that datetime2(7) and the 1/300 s of datetime (which the
// server gives in milliseconds ending in 0, 3 and 7) both come and go unchanged.
class DateTime {
public:
    DateTime() = default;
    DateTime(QDate date, QTime time, int hundredNanoseconds = 0);
    explicit DateTime(const QDateTime& local) : DateTime(local.date(), local.time()) {}

    [[nodiscard]] QDate date() const { return date_; }
    [[nodiscard]] QTime time() const;
    // The part of the second, in steps of 100 ns: 0 to 9999999.
    [[nodiscard]] int fraction() const { return int(ticks_ % 10'000'000); }
    // Steps of 100 ns since midnight.
    [[nodiscard]] qint64 ticksOfDay() const { return ticks_; }
    static DateTime fromTicks(QDate date, qint64 ticksOfDay);

    [[nodiscard]] QDateTime toQDateTime() const { return {date_, time()}; }
    friend auto operator<=>(const DateTime&, const DateTime&) = default;

private:
    QDate date_;
    qint64 ticks_ = 0;
};

// Null, or one value. Implicitly made of what callers have at hand.
class Value {
public:
    using Variant = std::variant<std::monostate, bool, qint64, double, Decimal, DateTime, QString, QByteArray, QUuid>;

    Value() = default;
    Value(bool v) : v_(v) {}
    Value(int v) : v_(qint64{v}) {}
    Value(unsigned v) : v_(qint64{v}) {}
    Value(long v) : v_(qint64{v}) {}
    Value(long long v) : v_(qint64{v}) {}
    Value(double v) : v_(v) {}
    Value(const Decimal& v) : v_(v) {}
    Value(const DateTime& v) : v_(v) {}
    Value(const QDateTime& v);  // an invalid one is null
    Value(const QDate& v);
    Value(const QString& v) : v_(v) {}
    Value(const char16_t* v) : v_(QString::fromUtf16(v)) {}
    Value(const char* utf8) : v_(QString::fromUtf8(utf8)) {}
    Value(const QByteArray& v) : v_(v) {}
    Value(const QUuid& v) : v_(v) {}

    [[nodiscard]] bool isNull() const { return v_.index() == 0; }
    [[nodiscard]] const Variant& variant() const { return v_; }

    // Null is "". Numbers with a point and no more digits than needed; dates "dd.MM.yyyy", with " hh:mm:ss" when the
    // time is not midnight; a bool "True"/"False"; a GUID in braces and upper case; bytes as text of that encoding.
    [[nodiscard]] QString toQString() const;
    // Null is 0. A fraction is rounded (half to even). Raises UsageError when the text is no number or out of range.
    [[nodiscard]] qint64 toInt() const;
    [[nodiscard]] double toDouble() const;
    [[nodiscard]] bool toBool() const;
    // Null and the empty text are an invalid date. A number is a day count from 30.12.1899.
    [[nodiscard]] QDateTime toDateTime() const;
    [[nodiscard]] DateTime toExactDateTime() const;
    [[nodiscard]] QByteArray toBytes() const;

    // Same type and same content; null equals null. For key comparison across types see DataSet::Locate.
    friend bool operator==(const Value& a, const Value& b) { return a.v_ == b.v_; }

private:
    Variant v_;
};

// Value as the given type, for a column that holds it; null stays null. Raises UsageError when it cannot be.
[[nodiscard]] Value convertTo(const Value& value, FieldType type);

}  // namespace torvik::db
