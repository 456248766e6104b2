// See parameter_set.h.
#include "engine/db/odbc/parameter_set.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace torvik::db::odbc {

namespace {

constexpr qsizetype kShortText = 4000;   // characters that fit nvarchar(n)
constexpr qsizetype kShortBytes = 8000;  // bytes that fit varbinary(n)
constexpr SQLSMALLINT kMaxDigits = 38;

FieldInfo ownType(const Value& value) {
    FieldInfo info;
    info.Type = FieldType::Text;
    if (std::holds_alternative<bool>(value.variant())) info.Type = FieldType::Bool;
    if (std::holds_alternative<qint64>(value.variant())) info.Type = FieldType::Integer;
    if (std::holds_alternative<double>(value.variant())) info.Type = FieldType::Float;
    if (std::holds_alternative<Decimal>(value.variant())) info.Type = FieldType::Decimal;
    if (std::holds_alternative<QByteArray>(value.variant())) info.Type = FieldType::Bytes;
    if (std::holds_alternative<QUuid>(value.variant())) info.Type = FieldType::Guid;
    if (const auto* time = std::get_if<DateTime>(&value.variant())) {
        info.Type = FieldType::DateTime;
        info.Legacy = time->ticksOfDay() % 10'000 == 0;  // whole milliseconds: datetime holds what it can
    }
    return info;
}

bool fitsInt(qint64 v) {
    return v >= std::numeric_limits<qint32>::min() && v <= std::numeric_limits<qint32>::max();
}

SQL_TIMESTAMP_STRUCT timestampOf(const DateTime& t) {
    SQL_TIMESTAMP_STRUCT s{};
    s.year = SQLSMALLINT(t.date().year());
    s.month = SQLUSMALLINT(t.date().month());
    s.day = SQLUSMALLINT(t.date().day());
    const qint64 seconds = t.ticksOfDay() / 10'000'000;
    s.hour = SQLUSMALLINT(seconds / 3600);
    s.minute = SQLUSMALLINT(seconds / 60 % 60);
    s.second = SQLUSMALLINT(seconds % 60);
    s.fraction = SQLUINTEGER(t.fraction()) * 100;
    return s;
}

SQLGUID guidOf(const QUuid& id) {
    SQLGUID g{};
    g.Data1 = id.data1;
    g.Data2 = id.data2;
    g.Data3 = id.data3;
    std::memcpy(g.Data4, id.data4, sizeof g.Data4);
    return g;
}

}  // namespace

// Fills the slot with the value (null: leaves it empty) and tells how it is bound.
ParameterSet::Binding ParameterSet::fill(Slot& slot, const FieldInfo& type, const Value& value) {
    const bool null = value.isNull();
    switch (type.Type) {
        case FieldType::Bool:
            slot.bit = SQLCHAR(value.toBool());
            slot.length = sizeof slot.bit;
            return {SQL_C_BIT, SQL_BIT, 1, 0, &slot.bit};
        case FieldType::Integer: {
            slot.integer = value.toInt();
            slot.length = sizeof slot.integer;
            const bool big = type.Size >= 19 || !fitsInt(slot.integer);
            return {SQL_C_SBIGINT, SQLSMALLINT(big ? SQL_BIGINT : SQL_INTEGER), SQLULEN(big ? 19 : 10), 0,
                    &slot.integer};
        }
        case FieldType::Float:
            slot.number = value.toDouble();
            slot.length = sizeof slot.number;
            return {SQL_C_DOUBLE, SQL_DOUBLE, 53, 0, &slot.number};
        case FieldType::Decimal: {
            int scale = type.Scale;
            if (!null) {
                const auto& decimal = std::get<Decimal>(value.variant());
                slot.bytes = decimal.toQString().toLatin1();
                scale = std::max(scale, decimal.Scale);
            }
            slot.length = slot.bytes.size();
            return {SQL_C_CHAR, SQL_DECIMAL, kMaxDigits, SQLSMALLINT(scale), slot.bytes.data()};
        }
        case FieldType::DateTime:
            if (!null) slot.time = timestampOf(value.toDateTime());
            slot.length = sizeof slot.time;
            return {SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, SQLULEN(type.Legacy ? 23 : 27),
                    SQLSMALLINT(type.Legacy ? 3 : 7), &slot.time};
        case FieldType::Date:
            if (!null) {
                const QDate day = value.toDateTime().date();
                slot.date = {SQLSMALLINT(day.year()), SQLUSMALLINT(day.month()), SQLUSMALLINT(day.day())};
            }
            slot.length = sizeof slot.date;
            return {SQL_C_TYPE_DATE, SQL_TYPE_DATE, 10, 0, &slot.date};
        case FieldType::Bytes: {
            slot.bytes = value.toBytes();
            slot.length = slot.bytes.size();
            const bool isShort = slot.length <= kShortBytes;
            return {SQL_C_BINARY, SQLSMALLINT(isShort ? SQL_VARBINARY : SQL_LONGVARBINARY),
                    isShort ? SQLULEN(kShortBytes) : SQLULEN(slot.length), 0,
                    const_cast<char*>(slot.bytes.constData())};  // no copy of what the argument holds too
        }
        case FieldType::Guid:
            if (!null) slot.guid = guidOf(std::get<QUuid>(value.variant()));
            slot.length = sizeof slot.guid;
            return {SQL_C_GUID, SQL_GUID, 16, 0, &slot.guid};
        case FieldType::Text: break;
    }
    slot.text = value.toQString();
    slot.length = slot.text.size() * qsizetype(sizeof(QChar));
    const bool isShort = slot.text.size() <= kShortText;
    return {SQL_C_WCHAR, SQLSMALLINT(isShort ? SQL_WVARCHAR : SQL_WLONGVARCHAR),
            isShort ? SQLULEN(kShortText) : SQLULEN(slot.text.size()), 0, wide(slot.text)};
}

void ParameterSet::bind(const Api& calls, const Handle& statement, const std::vector<Argument>& arguments) {
    SQLUSMALLINT place = 0;
    for (const Argument& argument : arguments) {
        const FieldInfo type = argument.Target ? *argument.Target : ownType(argument.Content);
        const Value value = argument.Target ? convertTo(argument.Content, type.Type) : argument.Content;
        Slot& slot = slots_.emplace_back();
        const Binding b = fill(slot, type, value);
        const SQLLEN room = slot.length;
        if (value.isNull()) slot.length = SQL_NULL_DATA;
        const SQLRETURN rc = calls.SQLBindParameter(statement.get(), ++place, SQL_PARAM_INPUT, b.cType, b.sqlType,
                                                    b.size, b.scale, b.data, room, &slot.length);
        if (!SQL_SUCCEEDED(rc)) throw StatementError(diagnostics(calls, statement), QString());
    }
}

}  // namespace torvik::db::odbc
