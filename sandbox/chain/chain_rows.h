// The model's chain as rows of tables: what stands in the back office and in a till before a fetch.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "sandbox/chain/chain_model.h"
#include "sandbox/chain/table_data.h"

namespace sandbox::chain {

// Where a till's database is and how to log in there, as its Internkundekasse row tells it.
struct TillAddress {
    std::string server;
    std::string database;
    std::string user;
    std::string password;
};

// The back office's own tables, parents first.
[[nodiscard]] std::vector<TableData> backOfficeTables(const Chain& chain,
                                                      const std::function<TillAddress(const Till&)>& addressOf);

// A till's registers (staff, items, payment forms ...) as before the first send, parents first.
[[nodiscard]] std::vector<TableData> tillRegisters(const Chain& chain, const Till& till);

// What a till has sold, settled and noted, parents first. Tables and columns that the till's version lacks are left
// out.
[[nodiscard]] std::vector<TableData> tillSales(const Chain& chain, const Till& till);

}  // namespace sandbox::chain
