// The SQLite side of an index that comes or goes. Used by CREATE INDEX, DROP INDEX and ALTER TABLE; the caller holds
// the Write and keeps the catalogue.
#pragma once

#include "sandbox/tsql/execute/execute_rows.h"

namespace sandbox {

// Raises 1505 where two rows have the same key, with 1750 where the index is a constraint's.
void buildIndex(const ExecuteContext& context, const FoundObject& table, const IndexDef& index);
void removeIndex(const ExecuteContext& context, const FoundObject& table, const IndexDef& index);

}  // namespace sandbox
