// See locate_index.h.
#include "engine/db/locate_index.h"

#include <algorithm>

#include "engine/db/errors.h"

namespace torvik::db {

namespace {

constexpr QChar kNull(u'\u0000');
constexpr QChar kBetween(u'\u001f');

// A text that two values share exactly when they count as equal.
QString comparable(const Value& value, LocateOptions options) {
    if (value.isNull()) return QString(kNull);
    if (const auto* text = std::get_if<QString>(&value.variant())) {
        qsizetype length = text->size();
        while (length > 0 && text->at(length - 1) == u' ') --length;
        const QString trimmed = text->first(length);
        return options.testFlag(LocateOption::CaseInsensitive) ? trimmed.toCaseFolded() : trimmed;
    }
    if (const auto* time = std::get_if<DateTime>(&value.variant()))
        return QString::number(time->date().toJulianDay()) + u':' + QString::number(time->ticksOfDay());
    if (const auto* bytes = std::get_if<QByteArray>(&value.variant())) return QString::fromLatin1(*bytes);
    return value.toQString();
}

QString rowKey(const RowStore& rows, qsizetype row, const std::vector<LocateIndex::Key>& keys, LocateOptions options) {
    QString key;
    for (const auto& part : keys) {
        key += comparable(rows.value(row, part.Column), options);
        key += kBetween;
    }
    return key;
}

}  // namespace

void LocateIndex::build(const RowStore& rows, const std::vector<Key>& keys, LocateOptions options) {
    columns_.clear();
    for (const Key& key : keys) columns_.push_back(key.Column);
    options_ = options;
    first_.clear();
    first_.reserve(rows.rowCount());
    for (qsizetype row = rows.rowCount() - 1; row >= 0; --row)
        first_.insert(rowKey(rows, row, keys, options), int(row));
    built_ = true;
}

int LocateIndex::find(const RowStore& rows, const std::vector<Key>& keys, LocateOptions options) {
    QString sought;
    try {
        for (const Key& key : keys) {
            sought += comparable(convertTo(key.Sought, key.Type), options);
            sought += kBetween;
        }
    } catch (const UsageError&) {
        return -1;
    }
    if (options.testFlag(LocateOption::PartialKey)) {
        sought.chop(1);
        for (qsizetype row = 0; row < rows.rowCount(); ++row)
            if (rowKey(rows, row, keys, options).startsWith(sought)) return int(row);
        return -1;
    }
    const bool same = built_ && options_ == options &&
                      std::ranges::equal(columns_, keys, {}, {}, [](const Key& key) { return key.Column; });
    if (!same) build(rows, keys, options);
    return first_.value(sought, -1);
}

}  // namespace torvik::db
