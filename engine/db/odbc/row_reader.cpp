// See row_reader.h.
#include "engine/db/odbc/row_reader.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace torvik::db::odbc {

namespace {

constexpr SQLULEN kBlockBytes = 512 * 1024;
constexpr SQLULEN kMaxBlockRows = 1000;
constexpr qsizetype kFirstPiece = 64 * 1024;
constexpr qsizetype kLargestPiece = 8 * 1024 * 1024;
constexpr SQLULEN kLongestBound = 8000;  // characters or bytes; what is longer, or may be, is read in pieces
constexpr qsizetype kDecimalText = 48;   // 38 digits, sign, point, end

// Type numbers of SQL Server that the standard lacks.
constexpr SQLSMALLINT kTime2 = -154;
constexpr SQLSMALLINT kXml = -152;

void setType(FieldInfo& info, SQLSMALLINT sqlType) {
    switch (sqlType) {
        case SQL_BIT: info.Type = FieldType::Bool; break;
        case SQL_TINYINT:
        case SQL_SMALLINT:
        case SQL_INTEGER:
        case SQL_BIGINT: info.Type = FieldType::Integer; break;
        case SQL_REAL:
            info.Single = true;
            info.Type = FieldType::Float;
            break;
        case SQL_FLOAT:
        case SQL_DOUBLE: info.Type = FieldType::Float; break;
        case SQL_DECIMAL:
        case SQL_NUMERIC: info.Type = FieldType::Decimal; break;
        case SQL_TYPE_DATE: info.Type = FieldType::Date; break;
        case SQL_TYPE_TIMESTAMP: info.Type = FieldType::DateTime; break;
        case SQL_GUID: info.Type = FieldType::Guid; break;
        case SQL_BINARY:
        case SQL_VARBINARY:
        case SQL_LONGVARBINARY: info.Type = FieldType::Bytes; break;
        case SQL_TYPE_TIME:
        case kTime2:
            info.Type = FieldType::Text;
            info.Size = 16;
            break;
        default: info.Type = FieldType::Text; break;
    }
    info.Fixed = sqlType == SQL_CHAR || sqlType == SQL_WCHAR || sqlType == SQL_BINARY;
    info.Unicode = sqlType == SQL_WCHAR || sqlType == SQL_WVARCHAR || sqlType == SQL_WLONGVARCHAR;
    const bool sized = info.Type == FieldType::Text || info.Type == FieldType::Bytes;
    info.Long = sized && (sqlType == SQL_LONGVARCHAR || sqlType == SQL_WLONGVARCHAR || sqlType == SQL_LONGVARBINARY ||
                          sqlType == kXml || info.Size <= 0 || SQLULEN(info.Size) > kLongestBound);
    if (info.Long) info.Size = 0;
}

// The server's name of a column's type: datetime and datetime2 look the same otherwise.
QString typeName(const Api& calls, const Handle& statement, SQLUSMALLINT place) {
    std::array<SQLWCHAR, 128> name{};
    SQLSMALLINT length = 0;
    calls.SQLColAttributeW(statement.get(), place, SQL_DESC_TYPE_NAME, name.data(), SQLSMALLINT(sizeof name), &length,
                           nullptr);
    return QString::fromUtf16(reinterpret_cast<const char16_t*>(name.data()));
}

struct Shape {
    SQLSMALLINT cType;
    qsizetype width;  // bytes a row
};
Shape shapeOf(const FieldInfo& info) {
    switch (info.Type) {
        case FieldType::Bool: return {SQL_C_BIT, sizeof(SQLCHAR)};
        case FieldType::Integer: return {SQL_C_SBIGINT, sizeof(SQLBIGINT)};
        case FieldType::Float:
            return info.Single ? Shape{SQL_C_FLOAT, sizeof(SQLREAL)} : Shape{SQL_C_DOUBLE, sizeof(SQLDOUBLE)};
        case FieldType::Decimal: return {SQL_C_CHAR, kDecimalText};
        case FieldType::DateTime:
        case FieldType::Date: return {SQL_C_TYPE_TIMESTAMP, sizeof(SQL_TIMESTAMP_STRUCT)};
        case FieldType::Guid: return {SQL_C_GUID, sizeof(SQLGUID)};
        case FieldType::Bytes: return {SQL_C_BINARY, qsizetype(std::max<qint64>(info.Size, 1))};
        case FieldType::Text: break;
    }
    return {SQL_C_WCHAR, qsizetype(info.Size + 1) * qsizetype(sizeof(SQLWCHAR))};
}

// What a bound cell's bytes are as the store's type.
template <typename T>
T cellAs(const char* cell) {
    T value;
    std::memcpy(&value, cell, sizeof value);
    return value;
}

PackedDecimal decimalOf(const char* cell, SQLLEN length) {
    Decimal d;
    bool negative = false;
    bool point = false;
    for (SQLLEN i = 0; i < length && cell[i] != 0; ++i) {
        if (cell[i] == '-') negative = true;
        if (cell[i] == '.') point = true;
        if (cell[i] < '0' || cell[i] > '9') continue;
        d.Unscaled = d.Unscaled * 10 + (cell[i] - '0');
        d.Scale += point;
    }
    if (negative) d.Unscaled = -d.Unscaled;
    return PackedDecimal::of(d);
}

// The shortest decimal of a real, so that 0.1 stays 0.1 as a double.
double doubleOf(float single) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), single).ptr;
    double value = 0;
    std::from_chars(text.data(), end, value);
    return value;
}

DateTime dateTimeOf(const SQL_TIMESTAMP_STRUCT& t) {
    const qint64 seconds = (qint64{t.hour} * 60 + t.minute) * 60 + t.second;
    return DateTime::fromTicks(QDate(t.year, t.month, t.day), seconds * 10'000'000 + t.fraction / 100);
}

QUuid uuidOf(const SQLGUID& g) {
    return {g.Data1,    g.Data2,    g.Data3,    g.Data4[0], g.Data4[1], g.Data4[2],
            g.Data4[3], g.Data4[4], g.Data4[5], g.Data4[6], g.Data4[7]};
}

// Appends what the driver put into a cell of the column's shape.
template <typename Column>
void appendCell(Column& target, const char* cell, SQLLEN length, const FieldInfo& info) {
    if (length == SQL_NULL_DATA) {
        target.appendNull();
        return;
    }
    if constexpr (std::is_same_v<Column, SliceColumn>) {
        const Shape shape = shapeOf(info);
        const SQLLEN room = shape.width - (shape.cType == SQL_C_WCHAR ? SQLLEN(sizeof(SQLWCHAR)) : 0);
        if (length < 0 || length > room)
            throw Error(QStringLiteral("Column '%1' holds a value longer than its type says").arg(info.Name));
        target.append(cell, length);
    } else if constexpr (std::is_same_v<Column, PlainColumn<PackedDecimal>>) {
        target.append(decimalOf(cell, length));
    } else if constexpr (std::is_same_v<Column, PlainColumn<DateTime>>) {
        const DateTime value = dateTimeOf(cellAs<SQL_TIMESTAMP_STRUCT>(cell));
        if (!value.isValid())
            throw Error(QStringLiteral("Row %1 of column '%2' holds no valid date and time")
                            .arg(target.values.size() + 1)
                            .arg(info.Name));
        target.append(value);
    } else if constexpr (std::is_same_v<Column, PlainColumn<QUuid>>) {
        target.append(uuidOf(cellAs<SQLGUID>(cell)));
    } else if constexpr (std::is_same_v<Column, PlainColumn<double>>) {
        target.append(info.Single ? doubleOf(cellAs<float>(cell)) : cellAs<double>(cell));
    } else if constexpr (std::is_same_v<Column, PlainColumn<qint64>>) {
        target.append(cellAs<SQLBIGINT>(cell));
    } else {
        target.append(*cell);
    }
}

}  // namespace

std::vector<FieldInfo> describeColumns(const Api& calls, const Handle& statement) {
    SQLSMALLINT count = 0;
    if (!SQL_SUCCEEDED(calls.SQLNumResultCols(statement.get(), &count)) || count <= 0) return {};
    std::vector<FieldInfo> columns;
    for (SQLUSMALLINT i = 1; i <= SQLUSMALLINT(count); ++i) {
        std::array<SQLWCHAR, 256> name{};
        SQLSMALLINT nameLength = 0;
        SQLSMALLINT type = 0;
        SQLULEN size = 0;
        SQLSMALLINT scale = 0;
        SQLSMALLINT nullable = 0;
        if (!SQL_SUCCEEDED(calls.SQLDescribeColW(statement.get(), i, name.data(), SQLSMALLINT(name.size()), &nameLength,
                                                 &type, &size, &scale, &nullable)))
            throw StatementError(diagnostics(calls, statement), QString());
        FieldInfo info;
        info.Name = QString::fromUtf16(reinterpret_cast<const char16_t*>(name.data()));
        info.Size = qint64(size);
        info.Scale = scale;
        info.Nullable = nullable != SQL_NO_NULLS;
        setType(info, type);
        if (info.Type == FieldType::DateTime) info.Legacy = !typeName(calls, statement, i).contains(u"datetime2");
        columns.push_back(std::move(info));
    }
    return columns;
}

struct RowReader::Buffer {
    Shape shape;
    std::unique_ptr<char[]> cells;
    std::vector<SQLLEN> lengths;
};

RowReader::RowReader(const Api& calls, const Handle& statement, std::vector<FieldInfo> columns)
    : calls_(calls), statement_(statement), columns_(std::move(columns)) {
    bind();
}

RowReader::~RowReader() {
    calls_.SQLFreeStmt(statement_.get(), SQL_UNBIND);
    calls_.SQLSetStmtAttrW(statement_.get(), SQL_ATTR_ROWS_FETCHED_PTR, nullptr, 0);
    calls_.SQLSetStmtAttrW(statement_.get(), SQL_ATTR_ROW_ARRAY_SIZE, number(1), 0);
}

void RowReader::bind() {
    const auto firstLong = std::ranges::find_if(columns_, [](const FieldInfo& info) { return info.Long; });
    qsizetype rowBytes = 0;
    for (auto column = columns_.begin(); column != firstLong; ++column) {
        const Shape shape = shapeOf(*column);
        rowBytes += shape.width + qsizetype(sizeof(SQLLEN));
        bound_.push_back({shape, nullptr, {}});
    }
    if (firstLong == columns_.end())
        blockRows_ = std::clamp<SQLULEN>(kBlockBytes / SQLULEN(std::max<qsizetype>(rowBytes, 1)), 1, kMaxBlockRows);
    calls_.SQLSetStmtAttrW(statement_.get(), SQL_ATTR_ROW_ARRAY_SIZE, number(blockRows_), 0);
    calls_.SQLSetStmtAttrW(statement_.get(), SQL_ATTR_ROWS_FETCHED_PTR, &fetched_, 0);
    SQLUSMALLINT place = 0;
    for (Buffer& buffer : bound_) {
        buffer.cells = std::make_unique_for_overwrite<char[]>(size_t(buffer.shape.width) * blockRows_);
        buffer.lengths.resize(blockRows_);
        if (!SQL_SUCCEEDED(calls_.SQLBindCol(statement_.get(), ++place, buffer.shape.cType, buffer.cells.get(),
                                             buffer.shape.width, buffer.lengths.data())))
            throw StatementError(diagnostics(calls_, statement_), QString());
    }
}

SQLRETURN RowReader::fetch(RowStore& rows) {
    fetched_ = 0;
    const SQLRETURN rc = calls_.SQLFetch(statement_.get());
    if (rc == SQL_NO_DATA || (rc == SQL_ERROR && fetched_ == 0)) return rc;
    store(rows, fetched_);
    if (fetched_ > 0)
        for (size_t column = bound_.size(); column < columns_.size(); ++column) {
            const SQLRETURN got = readUnbound(column, rows);
            if (!SQL_SUCCEEDED(got)) return got;
        }
    rows.rowsAppended(qsizetype(fetched_));
    return rc;
}

void RowReader::store(RowStore& rows, SQLULEN count) {
    for (size_t column = 0; column < bound_.size(); ++column) {
        const Buffer& buffer = bound_[column];
        std::visit(
            [&](auto& target) {
                for (SQLULEN row = 0; row < count; ++row)
                    appendCell(target, buffer.cells.get() + row * SQLULEN(buffer.shape.width), buffer.lengths[row],
                               columns_[column]);
            },
            rows.column(int(column)).data());
    }
}

// One value of the current row, from the first long column on: those behind it are read the same way, since drivers
// want columns in order.
SQLRETURN RowReader::readUnbound(size_t column, RowStore& rows) {
    const FieldInfo& info = columns_[column];
    if (info.Type == FieldType::Text || info.Type == FieldType::Bytes) return readPieces(column, rows);
    const Shape shape = shapeOf(info);
    std::array<char, 64> cell{};
    SQLLEN length = 0;
    const SQLRETURN rc =
        calls_.SQLGetData(statement_.get(), SQLUSMALLINT(column + 1), shape.cType, cell.data(), shape.width, &length);
    if (SQL_SUCCEEDED(rc))
        std::visit([&](auto& target) { appendCell(target, cell.data(), length, info); },
                   rows.column(int(column)).data());
    return rc;
}

// A text or bytes of any length: the buffer grows with what is left of it.
SQLRETURN RowReader::readPieces(size_t column, RowStore& rows) {
    const bool text = columns_[column].Type == FieldType::Text;
    const SQLUSMALLINT place = SQLUSMALLINT(column + 1);
    auto& target = std::get<SliceColumn>(rows.column(int(column)).data());
    const qsizetype terminator = text ? qsizetype(sizeof(SQLWCHAR)) : 0;
    if (piece_.size() < kFirstPiece) piece_.resize(kFirstPiece);
    qsizetype have = 0;
    for (;;) {
        SQLLEN left = 0;
        const SQLRETURN rc = calls_.SQLGetData(statement_.get(), place, SQLSMALLINT(text ? SQL_C_WCHAR : SQL_C_BINARY),
                                               piece_.data() + have, piece_.size() - have, &left);
        if (rc == SQL_NO_DATA) break;
        if (!SQL_SUCCEEDED(rc)) return rc;
        if (left == SQL_NULL_DATA) {
            target.appendNull();
            return SQL_SUCCESS;
        }
        const qsizetype room = piece_.size() - have - terminator;
        if (left != SQL_NO_TOTAL && left <= room) {
            have += left;
            if (rc == SQL_SUCCESS) break;
            continue;
        }
        have += room;
        const qsizetype rest = left == SQL_NO_TOTAL ? 0 : left - room;
        piece_.resize(have + terminator + std::max(rest, std::min(have, kLargestPiece)));
    }
    target.append(piece_.constData(), have);
    if (piece_.size() > kLargestPiece) piece_ = QByteArray();
    return SQL_SUCCESS;
}

}  // namespace torvik::db::odbc
