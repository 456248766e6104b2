// msdb's tables about jobs and backups. They are ordinary tables, empty at first: nothing here runs jobs or backups.
#pragma once

#include <vector>

#include "sandbox/store/databases/catalog.h"

namespace sandbox {

// Without ids and storage names: whoever makes the tables gives them.
[[nodiscard]] std::vector<ObjectDef> msdbTables();

}  // namespace sandbox
