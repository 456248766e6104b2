// Puts the made-up chain into databases through any connection that can run a batch: the sandbox's sessions, or a
// client of a real SQL Server. A connection that knows a faster way for rows than INSERT statements tells it.
#pragma once

#include <functional>
#include <string_view>

#include "sandbox/chain/chain_model.h"
#include "sandbox/chain/chain_rows.h"

namespace sandbox::chain {

// Runs one batch in the database to be filled; raises when the server answers an error.
using RunBatch = std::function<void(std::string_view batch)>;

// How a database is filled. Without an `insert` of its own a table's rows go in as INSERT batches.
struct Filling {
    RunBatch run;
    std::function<void(const TableData& table)> insert{};
};

// Schema, procedures and rows of the back office, into an empty database.
void installBackOffice(const Chain& chain, const std::function<TillAddress(const Till&)>& addressOf,
                       const Filling& filling);

// Schema at the till's version, registers and sales, into an empty database.
void installTill(const Chain& chain, const Till& till, const Filling& filling);

}  // namespace sandbox::chain
