// Rows in typed column blocks: no Value and no allocation a cell. What a DataSet holds and the ODBC fetch fills.
#pragma once

#include <cstring>
#include <memory>
#include <variant>
#include <vector>

#include "engine/db/field.h"

namespace torvik::db {

// Variable-length values, each whole in one chunk, found by an 8-byte pointer to its length and content.
class SliceColumn {
public:
    // nullptr data with length 0 appends an empty value.
    void append(const void* data, qsizetype bytes);
    void appendNull() { slices_.push_back(nullptr); }
    void set(qsizetype row, const void* data, qsizetype bytes) { slices_[size_t(row)] = keep(data, bytes); }
    void setNull(qsizetype row) { slices_[size_t(row)] = nullptr; }
    [[nodiscard]] bool isNull(qsizetype row) const { return !slices_[size_t(row)]; }
    [[nodiscard]] qsizetype bytes(qsizetype row) const;
    [[nodiscard]] const char* data(qsizetype row) const { return slices_[size_t(row)] + sizeof(qsizetype); }

private:
    const char* keep(const void* data, qsizetype bytes);

    std::vector<const char*> slices_;
    std::vector<std::unique_ptr<char[]>> chunks_;
    qsizetype left_ = 0;  // bytes free in the last chunk
    char* next_ = nullptr;
};

// Values of one size, and which of them are null.
template <typename T>
struct PlainColumn {
    std::vector<T> values;
    std::vector<bool> nulls;

    void append(const T& value) {
        values.push_back(value);
        nulls.push_back(false);
    }
    void appendNull() {
        values.emplace_back();
        nulls.push_back(true);
    }
};

// A decimal in 24 bytes.
struct PackedDecimal {
    quint64 Low = 0;
    qint64 High = 0;
    qint32 Scale = 0;

    static PackedDecimal of(const Decimal& d) { return {quint64(d.Unscaled), qint64(d.Unscaled >> 64), d.Scale}; }
    [[nodiscard]] Decimal toDecimal() const { return {Int128(High) * (Int128(1) << 64) + Low, Scale}; }
};

class ColumnBlock {
public:
    explicit ColumnBlock(FieldType type);

    void append(const Value& value);  // of the column's type, or null
    void set(qsizetype row, const Value& value);
    [[nodiscard]] Value value(qsizetype row) const;
    [[nodiscard]] bool isNull(qsizetype row) const;
    [[nodiscard]] QStringView text(qsizetype row) const;  // of a text column, not null; holds until the next change

    using Data = std::variant<PlainColumn<char>, PlainColumn<qint64>, PlainColumn<double>, PlainColumn<PackedDecimal>,
                              PlainColumn<DateTime>, PlainColumn<QUuid>, SliceColumn>;
    [[nodiscard]] Data& data() { return data_; }

private:
    FieldType type_;
    Data data_;
};

class RowStore {
public:
    explicit RowStore(const std::vector<FieldInfo>& columns);

    [[nodiscard]] qsizetype rowCount() const { return erased_ ? qsizetype(order_.size()) : stored_; }
    [[nodiscard]] int columnCount() const { return int(columns_.size()); }
    [[nodiscard]] Value value(qsizetype row, int column) const { return columns_[size_t(column)].value(place(row)); }
    [[nodiscard]] bool isNull(qsizetype row, int column) const { return columns_[size_t(column)].isNull(place(row)); }
    // Of a text column, not null; without a copy.
    [[nodiscard]] QStringView text(qsizetype row, int column) const {
        return columns_[size_t(column)].text(place(row));
    }
    void setValue(qsizetype row, int column, const Value& value) { columns_[size_t(column)].set(place(row), value); }
    void appendRow(const std::vector<Value>& values);
    void eraseRow(qsizetype row);

    // For the fetch: append count values to every column, then tell.
    [[nodiscard]] ColumnBlock& column(int index) { return columns_[size_t(index)]; }
    void rowsAppended(qsizetype count);

private:
    [[nodiscard]] qsizetype place(qsizetype row) const { return erased_ ? order_[size_t(row)] : row; }

    std::vector<ColumnBlock> columns_;
    std::vector<qsizetype> order_;  // where each row is stored, once a row has been erased
    bool erased_ = false;
    qsizetype stored_ = 0;
};

}  // namespace torvik::db
