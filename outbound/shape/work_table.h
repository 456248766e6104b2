// A table on the till that an export is loaded into, dropped and made anew by the send: as data, with the batches that
// do it.
#pragma once

#include <QString>
#include <span>

namespace torvik {

struct WorkTable {
    const char* name;
    const char* create;  // CREATE TABLE, its indexes, and what else belongs to its making
};

// Drops the table if it is there.
[[nodiscard]] QString dropTableSql(const char* name);
// Drops each table if it is there, and makes it.
[[nodiscard]] QString createTablesSql(std::span<const WorkTable* const> tables);

}  // namespace torvik
