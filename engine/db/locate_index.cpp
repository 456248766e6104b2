// See locate_index.h.
#include "engine/db/locate_index.h"

#include <algorithm>
#include <bit>

#include "engine/db/errors.h"

namespace torvik::db {

namespace {

using Key = LocateIndex::Key;

QStringView trimmed(QStringView text) {
    while (!text.isEmpty() && text.back() == u' ') text.chop(1);
    return text;
}

bool sameText(QStringView a, QStringView b, LocateOptions options) {
    const bool anyCase = options.testFlag(LocateOption::CaseInsensitive);
    return trimmed(a).compare(trimmed(b), anyCase ? Qt::CaseInsensitive : Qt::CaseSensitive) == 0;
}

size_t hashOfText(QStringView text, LocateOptions options) {
    const QStringView bare = trimmed(text);
    return options.testFlag(LocateOption::CaseInsensitive) ? qHash(bare.toString().toCaseFolded()) : qHash(bare);
}

// What two values share when they count as equal.
size_t hashOf(const Value& value, LocateOptions options) {
    const Value::Variant& v = value.variant();
    if (const auto* text = std::get_if<QString>(&v)) return hashOfText(*text, options);
    if (const auto* integer = std::get_if<qint64>(&v)) return qHash(*integer);
    if (const auto* number = std::get_if<double>(&v)) return qHash(*number);
    if (const auto* bit = std::get_if<bool>(&v)) return size_t(*bit) + 1;
    if (const auto* bytes = std::get_if<QByteArray>(&v)) return qHash(*bytes);
    if (const auto* id = std::get_if<QUuid>(&v)) return qHash(*id);
    if (const auto* time = std::get_if<DateTime>(&v))
        return qHashMulti(0, time->date().toJulianDay(), time->ticksOfDay());
    if (std::holds_alternative<Decimal>(v)) return qHash(value.toDouble());  // 1.50 is 1.5
    return 0;
}

quint32 folded(size_t hash) {
    return quint32(hash) ^ quint32(quint64(hash) >> 32);
}

size_t joined(size_t hash, size_t more) {
    return hash * 31 + more;
}

quint32 hashOfRow(const RowStore& rows, int row, const std::vector<Key>& keys, LocateOptions options) {
    size_t hash = 0;
    for (const Key& key : keys) {
        const bool text = key.Type == FieldType::Text && !rows.isNull(row, key.Column);
        hash = joined(hash, text ? hashOfText(rows.text(row, key.Column), options)
                                 : hashOf(rows.value(row, key.Column), options));
    }
    return folded(hash);
}

bool sameCell(const RowStore& rows, int row, const Key& key, LocateOptions options) {
    const auto* text = std::get_if<QString>(&key.Sought.variant());
    if (!text) return rows.value(row, key.Column) == key.Sought;
    return !rows.isNull(row, key.Column) && sameText(rows.text(row, key.Column), *text, options);
}

bool sameRows(const RowStore& rows, int a, int b, const std::vector<Key>& keys, LocateOptions options) {
    return std::ranges::all_of(keys, [&](const Key& key) {
        return sameCell(rows, a, {key.Column, key.Type, rows.value(b, key.Column)}, options);
    });
}

bool begins(const RowStore& rows, int row, const Key& key, LocateOptions options) {
    const bool anyCase = options.testFlag(LocateOption::CaseInsensitive);
    return rows.value(row, key.Column)
        .toQString()
        .startsWith(trimmed(key.Sought.toQString()), anyCase ? Qt::CaseInsensitive : Qt::CaseSensitive);
}

// The types that most searches are for need no conversion.
bool isOf(const Value& value, FieldType type) {
    return (type == FieldType::Text && std::holds_alternative<QString>(value.variant())) ||
           (type == FieldType::Integer && std::holds_alternative<qint64>(value.variant()));
}

// The last column need only begin with its value. Seldom used: row by row.
int findPartial(const RowStore& rows, const std::vector<Key>& keys, LocateOptions options) {
    for (int row = 0; row < int(rows.rowCount()); ++row) {
        const bool whole = std::all_of(keys.begin(), keys.end() - 1,
                                       [&](const Key& key) { return sameCell(rows, row, key, options); });
        if (whole && begins(rows, row, keys.back(), options)) return row;
    }
    return -1;
}

}  // namespace

template <typename Same>
LocateIndex::Slot& LocateIndex::slotOf(quint32 hash, const Same& same) {
    const size_t mask = slots_.size() - 1;
    for (size_t i = hash & mask;; i = (i + 1) & mask) {
        Slot& slot = slots_[i];
        if (slot.row < 0 || (slot.hash == hash && same(slot.row))) return slot;
    }
}

void LocateIndex::build(const RowStore& rows, LocateOptions options) {
    columns_.clear();
    for (const Key& key : keys_) columns_.push_back(key.Column);
    options_ = options;
    slots_.assign(std::bit_ceil(size_t(rows.rowCount()) * 2 + 2), {});
    for (int row = 0; row < int(rows.rowCount()); ++row) {
        const quint32 hash = hashOfRow(rows, row, keys_, options);
        Slot& slot = slotOf(hash, [&](int other) { return sameRows(rows, other, row, keys_, options); });
        if (slot.row < 0) slot = {hash, row};
    }
}

int LocateIndex::find(const RowStore& rows, LocateOptions options) {
    size_t hash = 0;
    try {
        for (Key& key : keys_) {
            if (!isOf(key.Sought, key.Type)) key.Sought = convertTo(key.Sought, key.Type);
            hash = joined(hash, hashOf(key.Sought, options));
        }
    } catch (const UsageError&) {
        return -1;
    }
    if (options.testFlag(LocateOption::PartialKey)) return findPartial(rows, keys_, options);
    const bool same = !slots_.empty() && options_ == options &&
                      std::ranges::equal(columns_, keys_, {}, {}, [](const Key& key) { return key.Column; });
    if (!same) build(rows, options);
    const auto matches = [&](int row) {
        return std::ranges::all_of(keys_, [&](const Key& key) { return sameCell(rows, row, key, options); });
    };
    return slotOf(folded(hash), matches).row;
}

}  // namespace torvik::db
