// Finds rows by column values: one hash table of a row set, made at the first search on a set of columns and kept until
// the rows change. Used by DataSet::Locate.
#pragma once

#include <QList>
#include <vector>

#include "engine/db/data_set.h"
#include "engine/db/row_store.h"

namespace torvik::db {

class LocateIndex {
public:
    struct Key {
        int Column;
        FieldType Type;
        Value Sought;
    };
    // The keys of a search by these names, to be given the values sought: those of the search before when it was by
    // the same names, as most are, else what keyOf gives for each name.
    template <typename KeyOf>
    [[nodiscard]] std::vector<Key>& keys(const QString& names, const KeyOf& keyOf) {
        if (names_ == names && !keys_.empty()) return keys_;
        std::vector<Key> found;  // keyOf raises for a name that is not there, and the keys then stay those of names_
        for (const QString& name : names.split(u';', Qt::SkipEmptyParts)) found.push_back(keyOf(name.trimmed()));
        keys_ = std::move(found);
        names_ = names;
        return keys_;
    }
    // The first row that matches the keys, or -1. A value that cannot be of its column's type matches nothing.
    [[nodiscard]] int find(const RowStore& rows, LocateOptions options);

private:
    struct Slot {
        quint32 hash = 0;
        int row = -1;  // the first of its values; -1: none
    };
    void build(const RowStore& rows, LocateOptions options);
    // The slot of these values, or the free one where they would stand. same(row) compares with a row.
    template <typename Same>
    [[nodiscard]] Slot& slotOf(quint32 hash, const Same& same);

    QString names_;
    std::vector<Key> keys_;

    std::vector<int> columns_;  // what the table is of
    LocateOptions options_;
    std::vector<Slot> slots_;  // a power of two, at least half of them free; none: not built
};

}  // namespace torvik::db
