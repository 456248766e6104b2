// See row_store.h.
#include "engine/db/row_store.h"

#include <algorithm>

namespace torvik::db {

namespace {

constexpr qsizetype kChunkBytes = 64 * 1024;

ColumnBlock::Data blockFor(FieldType type) {
    switch (type) {
        case FieldType::Bool: return PlainColumn<char>{};
        case FieldType::Integer: return PlainColumn<qint64>{};
        case FieldType::Float: return PlainColumn<double>{};
        case FieldType::Decimal: return PlainColumn<PackedDecimal>{};
        case FieldType::DateTime:
        case FieldType::Date: return PlainColumn<DateTime>{};
        case FieldType::Guid: return PlainColumn<QUuid>{};
        case FieldType::Text:
        case FieldType::Bytes: break;
    }
    return SliceColumn{};
}

// What a column of element type T stores for a value of the column's type.
void unpack(const Value& value, char& out) {
    out = char(std::get<bool>(value.variant()));
}
void unpack(const Value& value, qint64& out) {
    out = std::get<qint64>(value.variant());
}
void unpack(const Value& value, double& out) {
    out = std::get<double>(value.variant());
}
void unpack(const Value& value, PackedDecimal& out) {
    out = PackedDecimal::of(std::get<Decimal>(value.variant()));
}
void unpack(const Value& value, DateTime& out) {
    out = std::get<DateTime>(value.variant());
}
void unpack(const Value& value, QUuid& out) {
    out = std::get<QUuid>(value.variant());
}

Value pack(char v) {
    return v != 0;
}
Value pack(const PackedDecimal& v) {
    return v.toDecimal();
}
template <typename T>
Value pack(const T& v) {
    return v;
}

struct Bytes {
    const void* data;
    qsizetype size;
};
Bytes bytesOf(const Value& value) {
    if (const auto* text = std::get_if<QString>(&value.variant()))
        return {text->constData(), text->size() * qsizetype(sizeof(QChar))};
    const auto& bytes = std::get<QByteArray>(value.variant());
    return {bytes.constData(), bytes.size()};
}

}  // namespace

void SliceColumn::append(const void* data, qsizetype bytes) {
    slices_.push_back(keep(data, bytes));
}

qsizetype SliceColumn::bytes(qsizetype row) const {
    qsizetype length = 0;
    std::memcpy(&length, slices_[size_t(row)], sizeof length);
    return length;
}

const char* SliceColumn::keep(const void* data, qsizetype bytes) {
    constexpr qsizetype kAlign = sizeof(qsizetype);
    const qsizetype needed = (qsizetype(sizeof(qsizetype)) + bytes + kAlign - 1) / kAlign * kAlign;
    if (needed > left_) {
        const qsizetype size = std::max(needed, kChunkBytes);
        chunks_.push_back(std::make_unique_for_overwrite<char[]>(size_t(size)));
        next_ = chunks_.back().get();
        left_ = size;
    }
    char* slice = next_;
    std::memcpy(slice, &bytes, sizeof bytes);
    if (bytes > 0) std::memcpy(slice + sizeof bytes, data, size_t(bytes));
    next_ += needed;
    left_ -= needed;
    return slice;
}

ColumnBlock::ColumnBlock(FieldType type) : type_(type), data_(blockFor(type)) {}

void ColumnBlock::append(const Value& value) {
    std::visit(
        [&]<typename Column>(Column& column) {
            if (value.isNull()) {
                column.appendNull();
            } else if constexpr (std::is_same_v<Column, SliceColumn>) {
                const Bytes bytes = bytesOf(value);
                column.append(bytes.data, bytes.size);
            } else {
                column.appendNull();
                unpack(value, column.values.back());
                column.nulls.back() = false;
            }
        },
        data_);
}

void ColumnBlock::set(qsizetype row, const Value& value) {
    std::visit(
        [&]<typename Column>(Column& column) {
            if constexpr (std::is_same_v<Column, SliceColumn>) {
                if (value.isNull()) return column.setNull(row);
                const Bytes bytes = bytesOf(value);
                column.set(row, bytes.data, bytes.size);
            } else {
                column.nulls[size_t(row)] = value.isNull();
                if (!value.isNull()) unpack(value, column.values[size_t(row)]);
            }
        },
        data_);
}

bool ColumnBlock::isNull(qsizetype row) const {
    return std::visit(
        [&]<typename Column>(const Column& column) -> bool {
            if constexpr (std::is_same_v<Column, SliceColumn>)
                return column.isNull(row);
            else
                return column.nulls[size_t(row)];
        },
        data_);
}

QStringView ColumnBlock::text(qsizetype row) const {
    const auto& column = std::get<SliceColumn>(data_);
    return {reinterpret_cast<const QChar*>(column.data(row)), column.bytes(row) / qsizetype(sizeof(QChar))};
}

Value ColumnBlock::value(qsizetype row) const {
    if (isNull(row)) return {};
    return std::visit(
        [&]<typename Column>(const Column& column) -> Value {
            if constexpr (std::is_same_v<Column, SliceColumn>) {
                const char* data = column.data(row);
                const qsizetype bytes = column.bytes(row);
                if (type_ == FieldType::Bytes) return QByteArray(data, bytes);
                return text(row).toString();
            } else {
                return pack(column.values[size_t(row)]);
            }
        },
        data_);
}

RowStore::RowStore(const std::vector<FieldInfo>& columns) {
    columns_.reserve(columns.size());
    for (const FieldInfo& info : columns) columns_.emplace_back(info.Type);
}

void RowStore::appendRow(const std::vector<Value>& values) {
    for (size_t i = 0; i < columns_.size(); ++i) columns_[i].append(values[i]);
    rowsAppended(1);
}

void RowStore::rowsAppended(qsizetype count) {
    if (erased_)
        for (qsizetype i = 0; i < count; ++i) order_.push_back(stored_ + i);
    stored_ += count;
}

void RowStore::eraseRow(qsizetype row) {
    if (!erased_) {
        order_.resize(size_t(stored_));
        for (qsizetype i = 0; i < stored_; ++i) order_[size_t(i)] = i;
        erased_ = true;
    }
    order_.erase(order_.begin() + row);
}

}  // namespace torvik::db
