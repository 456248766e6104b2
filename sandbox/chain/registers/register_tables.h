// The registers of the back office and of a till as tables in memory: what the chain begins with, every column told.
// The back office's are what a send reads, the till's what it writes.
#pragma once

#include <functional>

#include "sandbox/chain/chain_model.h"
#include "sandbox/chain/chain_rows.h"
#include "sandbox/chain/registers/kept_table.h"

namespace sandbox::chain {

[[nodiscard]] KeptTables officeRegisters(const Chain& chain, const std::function<TillAddress(const Till&)>& addressOf);

// Before the first send; tables and columns that the till's version lacks are left out. Of the till's documents those
// columns stand here that the deletion of items changes.
[[nodiscard]] KeptTables tillRegistersBefore(const Chain& chain, const Till& till);

}  // namespace sandbox::chain
