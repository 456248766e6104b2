// Puts the made-up chain into databases through any connection that can run a batch: the sandbox's sessions, or a
// client of a real SQL Server.
#pragma once

#include <functional>
#include <string_view>

#include "sandbox/chain/chain_model.h"
#include "sandbox/chain/chain_rows.h"

namespace sandbox::chain {

// Runs one batch in the database to be filled; raises when the server answers an error.
using RunBatch = std::function<void(std::string_view batch)>;

// Schema, procedures and rows of the back office, into an empty database.
void installBackOffice(const Chain& chain, const std::function<TillAddress(const Till&)>& addressOf,
                       const RunBatch& run);

// Schema at the till's version, registers and sales, into an empty database.
void installTill(const Chain& chain, const Till& till, const RunBatch& run);

}  // namespace sandbox::chain
