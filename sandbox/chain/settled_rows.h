// What a run over a chain leaves beside the Pos tables, told by the model alone: credit orders, store statistics,
// stock, hourly sales, gift cards and credit notes at the back office, and the marks on the tills.
#pragma once

#include <cstddef>
#include <vector>

#include "sandbox/chain/chain_model.h"
#include "sandbox/chain/table_data.h"

namespace sandbox::chain {

// What a run does beside the copy.
struct SettledOptions {
    bool chainInstallation = true;  // else a single back office
    bool creditOrders = true;
    bool vouchers = true;  // gift cards and credit notes
};

// The back office's rows after one run over tills that had never been fetched. `walk` are their indices in the order in
// which they were fetched: of two settlements of one time, the later one's number of sales stands. A table's name may
// be a join, its columns expressions: numbers that the back office gives out are told by what they lead to.
[[nodiscard]] std::vector<TableData> settledTables(const Chain& chain, const std::vector<std::size_t>& walk,
                                                   const SettledOptions& options);

// How many orders of the back office the run has made.
[[nodiscard]] std::size_t creditOrderCount(const Chain& chain, const std::vector<std::size_t>& walk);

// The rows of those tables of a till that the run has changed.
[[nodiscard]] std::vector<TableData> markedTables(const Till& till, const SettledOptions& options);

}  // namespace sandbox::chain
