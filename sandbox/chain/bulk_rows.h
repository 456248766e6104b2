// Fills a table of a stand-in server from the model's rows by a bulk load: several times as fast as INSERT statements
// of the same rows, and with the same outcome.
#pragma once

#include "sandbox/chain/table_data.h"

namespace sandbox {
class Session;
}

namespace sandbox::chain {

// Nothing for a table without rows. Raises std::runtime_error with the server's text.
void loadRows(Session& session, const TableData& table);

}  // namespace sandbox::chain
