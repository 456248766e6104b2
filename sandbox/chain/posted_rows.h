// What the back office must hold of a chain's sales once every settlement has been fetched, told by the model alone:
// the measure that whole runs are held against.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "sandbox/chain/chain_model.h"
#include "sandbox/chain/table_data.h"

namespace sandbox::chain {

// The Pos tables, rows of all tills of `chain` whose index is in `fetched`, in the order of their keys. Columns that
// hold the moment of the fetch itself (Pos_Op_Synkronisert) are left out.
[[nodiscard]] std::vector<TableData> postedTables(const Chain& chain, const std::set<std::size_t>& fetched);
[[nodiscard]] std::vector<TableData> postedTables(const Chain& chain);  // all tills fetched

}  // namespace sandbox::chain
