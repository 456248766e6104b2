// The catalogue views: sysobjects, sys.columns, INFORMATION_SCHEMA.TABLES, sysprocesses and their kin. Each is a SQLite
// virtual table whose rows come from the catalogue (or the process list) as the session sees it. Connection::find
// finds them like tables.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "sandbox/store/databases/catalog.h"
#include "sandbox/store/databases/database.h"

namespace sandbox {

class Connection;
struct SystemView;

// schema empty: where SQL Server lets the bare name stand for the view. nullptr when there is none.
[[nodiscard]] const SystemView* findSystemView(std::string_view schema, std::string_view name);
// Its table's name in SQLite, for one database.
[[nodiscard]] std::string systemViewStorage(const Database& database, const SystemView& view);
// Makes the virtual table on the connection.
[[nodiscard]] std::shared_ptr<const ObjectDef> registerSystemView(Connection& connection,
                                                                  const std::shared_ptr<Database>& database,
                                                                  const SystemView& view);

}  // namespace sandbox
