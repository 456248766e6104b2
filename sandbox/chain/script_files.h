// A demo chain as files to be run on any SQL Server: one script a database, with its schema and all its rows.
#pragma once

#include <filesystem>
#include <string>

#include "sandbox/chain/chain_model.h"

namespace sandbox::chain {

// Writes <database>.sql for the back office and for each till into `folder`, which is made if need be. Each makes its
// database and fills it; the back office's tills are told to be on `server`, with the login pos. UTF-8, batches end
// with "go". Raises std::runtime_error when a file cannot be written.
void writeScripts(const Chain& chain, const std::filesystem::path& folder, const std::string& server);

}  // namespace sandbox::chain
