// Finds rows by column values: one hash of a row set, made at the first search on a set of columns and kept until the
// rows change. Used by DataSet::Locate.
#pragma once

#include <QHash>
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
    [[nodiscard]] int find(const RowStore& rows, const std::vector<Key>& keys, LocateOptions options);

private:
    void build(const RowStore& rows, const std::vector<Key>& keys, LocateOptions options);

    std::vector<int> columns_;  // what the hash is of
    LocateOptions options_;
    bool built_ = false;
    QHash<QString, int> first_;
};

}  // namespace torvik::db
