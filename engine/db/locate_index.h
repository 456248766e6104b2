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
    // The first row that matches, or -1. A value that cannot be of its column's type matches nothing.
    [[nodiscard]] int find(const RowStore& rows, std::vector<Key> keys, LocateOptions options);

private:
    struct Slot {
        quint32 hash = 0;
        int row = -1;  // the first of its values; -1: none
    };
    void build(const RowStore& rows, const std::vector<Key>& keys, LocateOptions options);
    // The slot of these values, or the free one where they would stand. same(row) compares with a row.
    template <typename Same>
    [[nodiscard]] Slot& slotOf(quint32 hash, const Same& same);

    std::vector<int> columns_;  // what the table is of
    LocateOptions options_;
    std::vector<Slot> slots_;  // a power of two, at least half of them free; none: not built
};

}  // namespace torvik::db
