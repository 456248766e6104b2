// One value of a column or parameter, typed and exact, with the conversions that callers use. Used by every class of
// engine/db; rows themselves are kept in typed column blocks (row_store.h) and become Values when read.
#pragma once

#include <QByteArray>
#include <QString>
#include <QUuid>
#include <variant>

#include "engine/db/date_time.h"
#include "engine/db/decimal.h"

namespace torvik::db {

// What a column holds, as the caller sees it.
enum class FieldType { Bool, Integer, Float, Decimal, DateTime, Date, Text, Bytes, Guid };

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
    Value(const DateTime& v);                                  // an invalid one is null, as are the two below
    Value(const QDateTime& clock) : Value(DateTime(clock)) {}  // what the operator's clock shows
    Value(const QDate& v) : Value(DateTime(v)) {}
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
    // Null and the empty text are an invalid date. A number is a day count from 30.12.1899. Raises UsageError when it
    // is none.
    [[nodiscard]] DateTime toDateTime() const;
    [[nodiscard]] QByteArray toBytes() const;

    // Same type and same content; null equals null. For key comparison across types see DataSet::Locate.
    friend bool operator==(const Value& a, const Value& b) { return a.v_ == b.v_; }

private:
    Variant v_;
};

// Value as the given type, for a column that holds it; null stays null. Raises UsageError when it cannot be.
[[nodiscard]] Value convertTo(const Value& value, FieldType type);

}  // namespace torvik::db
