// See bulk_cell.h.
#include "engine/db/odbc/bulk_cell.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace torvik::db::odbc {

// The server's type, and the type number under which bulk copy knows a value of it.
struct BulkCell::Carried {
    int serverType;
    Kind kind;
    int bindType;
    int bindTypeUtf16;
    int width;
};

const BulkCell::Carried* BulkCell::carried(int serverType) {
    static constexpr Carried kTable[] = {
        {48, Kind::Integer, 48, 48, 1},        // tinyint
        {52, Kind::Integer, 52, 52, 2},        // smallint
        {56, Kind::Integer, 56, 56, 4},        // int
        {127, Kind::Integer, 127, 127, 8},     // bigint
        {104, Kind::Bit, 50, 50, 1},           // bit
        {62, Kind::Float, 62, 62, 8},          // float
        {59, Kind::Real, 59, 59, 4},           // real
        {60, Kind::Money, 60, 60, 8},          // money
        {122, Kind::Money, 122, 122, 4},       // smallmoney
        {106, Kind::Decimal, 39, 39, 0},       // decimal, as text: drivers disagree about its struct
        {108, Kind::Decimal, 39, 39, 0},       // numeric
        {61, Kind::DateTime, 61, 61, 8},       // datetime
        {58, Kind::SmallDateTime, 58, 58, 4},  // smalldatetime
        {175, Kind::Text, 39, 103, 0},         // char
        {167, Kind::Text, 39, 103, 0},         // varchar
        {239, Kind::Text, 39, 103, 0},         // nchar
        {231, Kind::Text, 39, 103, 0},         // nvarchar
        {173, Kind::Bytes, 37, 37, 0},         // binary
        {165, Kind::Bytes, 37, 37, 0},         // varbinary
        {36, Kind::Guid, 36, 36, 16},          // uniqueidentifier
    };
    const auto* found = std::ranges::find(kTable, serverType, &Carried::serverType);
    return found == std::end(kTable) ? nullptr : found;
}

namespace {

constexpr int kChar = 175;
constexpr int kNChar = 239;
constexpr int kNVarChar = 231;
constexpr int kBinary = 173;
constexpr int kMoneyScale = 4;
constexpr qint64 kTicksPerSecond = 10'000'000;
constexpr qint64 kLegacyTicksPerDay = qint64{300} * 86'400;

// FreeTDS gives a value so much room, however wide its column is, and writes on behind it.
constexpr qsizetype kFreeTdsRoom = 4096;

const QDate& legacyDayZero() {
    static const QDate day(1900, 1, 1);
    return day;
}

// What code page 1252 has at 0x80 to 0x9F.
constexpr std::u16string_view kWindowsOnly = u"€‚ƒ„…†‡ˆ‰Š‹ŒŽ‘’“”•–—˜™š›œžŸ";

bool isLatinText(char16_t c) {
    return c < 0x80 || (c >= 0xA0 && c <= 0xFF) || kWindowsOnly.find(c) != std::u16string_view::npos;
}

// The number with so many decimals, rounded away from zero at the half as the server does it; nothing when it has more
// digits than `precision`.
std::optional<Int128> scaled(const Decimal& d, int precision, int scale) {
    Int128 value = d.Unscaled;
    for (int i = d.Scale; i < scale; ++i)
        if (__builtin_mul_overflow(value, Int128{10}, &value)) return std::nullopt;
    Int128 unit = 1;
    for (int i = scale; i < d.Scale; ++i) unit *= 10;
    if (unit > 1) {
        const Int128 rest = value % unit;
        value /= unit;
        if ((rest < 0 ? -rest : rest) * 2 >= unit) value += d.Unscaled < 0 ? -1 : 1;
    }
    Int128 limit = 1;
    for (int i = 0; i < precision; ++i) limit *= 10;
    if (value >= limit || value <= -limit) return std::nullopt;
    return value;
}

}  // namespace

std::optional<BulkCell> BulkCell::of(const TableColumn& column, TextForm form) {
    const Carried* how = carried(column.Type);
    if (!how || column.Bytes < 0 || column.Derived) return std::nullopt;
    return BulkCell(column, *how, form);
}

BulkCell::BulkCell(const TableColumn& column, const Carried& how, TextForm form)
    : column_(column),
      kind_(how.kind),
      bindType_(form == TextForm::Utf8 ? how.bindType : how.bindTypeUtf16),
      width_(how.width),
      form_(form),
      unicode_(column.Type == kNChar || column.Type == kNVarChar),
      fixed_(column.Type == kChar || column.Type == kNChar || column.Type == kBinary) {
    const int longest = kind_ == Kind::Text ? column.Bytes * 3 : kind_ == Kind::Decimal ? 48 : column.Bytes;
    buffer_.resize(kPrefix + std::max(longest, width_));
}

const unsigned char* BulkCell::address() const {
    return reinterpret_cast<const unsigned char*>(buffer_.constData());
}

bool BulkCell::keepBytes(const void* data, qsizetype size) {
    const qint32 length = qint32(size);
    char* to = buffer_.data();
    std::memcpy(to, &length, sizeof length);
    if (size > 0) std::memcpy(to + kPrefix, data, size_t(size));
    return true;
}

template <typename T>
bool BulkCell::keep(const T& value) {
    return keepBytes(&value, sizeof value);
}

bool BulkCell::put(const Value& value) {
    if (value.isNull()) {
        const qint32 null = -1;
        std::memcpy(buffer_.data(), &null, sizeof null);
        return column_.Nullable;
    }
    const Value::Variant& v = value.variant();
    switch (kind_) {
        case Kind::Bit:
            if (const auto* bit = std::get_if<bool>(&v)) return keep(quint8(*bit));
            break;
        case Kind::Integer:
            if (const auto* integer = std::get_if<qint64>(&v)) return putInteger(*integer);
            break;
        case Kind::Float:
            if (const auto* number = std::get_if<double>(&v)) return std::isfinite(*number) && keep(*number);
            break;
        case Kind::Real:
            if (const auto* number = std::get_if<double>(&v))
                return std::abs(*number) <= double(std::numeric_limits<float>::max()) && keep(float(*number));
            break;
        case Kind::Money:
            if (const auto* decimal = std::get_if<Decimal>(&v)) return putMoney(*decimal);
            break;
        case Kind::Decimal:
            if (const auto* decimal = std::get_if<Decimal>(&v)) return putDecimal(*decimal);
            break;
        case Kind::DateTime:
            if (const auto* time = std::get_if<DateTime>(&v)) return putDateTime(*time);
            break;
        case Kind::SmallDateTime:
            if (const auto* time = std::get_if<DateTime>(&v)) return putSmallDateTime(*time);
            break;
        case Kind::Text:
            if (const auto* text = std::get_if<QString>(&v)) return putText(*text);
            break;
        case Kind::Bytes:
            if (const auto* bytes = std::get_if<QByteArray>(&v)) return putBytes(*bytes);
            break;
        case Kind::Guid:
            if (const auto* id = std::get_if<QUuid>(&v)) {
                static_assert(sizeof(QUuid) == 16);
                return keepBytes(id, sizeof *id);
            }
            break;
    }
    return false;
}

bool BulkCell::putInteger(qint64 value) {
    switch (width_) {
        case 1: return value >= 0 && value <= std::numeric_limits<quint8>::max() && keep(quint8(value));
        case 2: return value == qint16(value) && keep(qint16(value));
        case 4: return value == qint32(value) && keep(qint32(value));
        default: return keep(value);
    }
}

// Ten-thousandths; those of money in two halves, the higher one first.
bool BulkCell::putMoney(const Decimal& value) {
    const auto amount = scaled(value, 19, kMoneyScale);
    if (!amount || *amount != Int128(qint64(*amount))) return false;
    const auto whole = qint64(*amount);
    if (width_ == 4) return whole == qint32(whole) && keep(qint32(whole));
    struct {
        qint32 high;
        quint32 low;
    } halves{qint32(whole >> 32), quint32(whole)};
    return keep(halves);
}

bool BulkCell::putDecimal(const Decimal& value) {
    const auto number = scaled(value, column_.Precision, column_.Scale);
    if (!number) return false;
    const QByteArray text = Decimal{*number, column_.Scale}.toQString().toLatin1();
    return keepBytes(text.constData(), text.size());
}

// Days since 1900 and 1/300 s of the day.
bool BulkCell::putDateTime(const DateTime& value) {
    if (value.date().year() < 1753 || value.date().year() > 9999) return false;
    struct {
        qint32 days;
        qint32 ticks;
    } point{qint32(legacyDayZero().daysTo(value.date())),
            qint32((value.ticksOfDay() * 300 + kTicksPerSecond / 2) / kTicksPerSecond)};
    if (point.ticks == kLegacyTicksPerDay) point = {point.days + 1, 0};
    return keep(point);
}

// Days since 1900 and minutes of the day. Which way about half a minute is rounded is left to the server.
bool BulkCell::putSmallDateTime(const DateTime& value) {
    const qint64 days = legacyDayZero().daysTo(value.date());
    const qint64 seconds = value.ticksOfDay() / kTicksPerSecond;
    if (seconds % 60 >= 29 && seconds % 60 <= 31) return false;
    const qint64 minutes = (seconds + 30) / 60;
    if (days < 0 || days + minutes / 1440 > std::numeric_limits<quint16>::max()) return false;
    struct {
        quint16 days;
        quint16 minutes;
    } point{quint16(days + minutes / 1440), quint16(minutes % 1440)};
    return keep(point);
}

bool BulkCell::hasRoomFor(qsizetype bytes) const {
    return bytes <= column_.Bytes && (form_ != TextForm::Utf8 || bytes <= kFreeTdsRoom);
}

bool BulkCell::putBytes(const QByteArray& value) {
    if (!hasRoomFor(value.size()) || (fixed_ && !hasRoomFor(column_.Bytes))) return false;
    return keepBytes(value.constData(), value.size()) && (!fixed_ || pad('\0', value.size(), column_.Bytes));
}

// Fills the value of `length` bytes up to `full`.
bool BulkCell::pad(char with, qsizetype length, qsizetype full) {
    std::memset(buffer_.data() + kPrefix + length, with, size_t(full - length));
    const qint32 now = qint32(full);
    std::memcpy(buffer_.data(), &now, sizeof now);
    return true;
}

bool BulkCell::putText(const QString& value) {
    const qsizetype width = unicode_ ? 2 : 1;
    const qsizetype room = column_.Bytes / width;
    if (!hasRoomFor(value.size() * width) || (fixed_ && !hasRoomFor(column_.Bytes))) return false;
    for (const QChar each : value) {
        const char16_t c = each.unicode();
        if (c >= 0x80 && !(unicode_ ? !each.isSurrogate() : column_.Latin && isLatinText(c))) return false;
    }
    if (form_ == TextForm::Utf16) {
        const QString text = fixed_ ? value.leftJustified(room) : value;
        return keepBytes(text.utf16(), text.size() * qsizetype(sizeof(QChar)));
    }
    char* const start = buffer_.data() + kPrefix;
    char* to = start;
    for (const QChar each : value) {
        const char16_t c = each.unicode();
        if (c < 0x80) {
            *to++ = char(c);
        } else if (c < 0x800) {
            *to++ = char(0xC0 | (c >> 6));
            *to++ = char(0x80 | (c & 0x3F));
        } else {
            *to++ = char(0xE0 | (c >> 12));
            *to++ = char(0x80 | ((c >> 6) & 0x3F));
            *to++ = char(0x80 | (c & 0x3F));
        }
    }
    return pad(' ', to - start, (to - start) + (fixed_ ? room - value.size() : 0));
}

}  // namespace torvik::db::odbc
