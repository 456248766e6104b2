// The catalogue views: sysobjects, sys.columns, INFORMATION_SCHEMA.TABLES, sysprocesses and their kin. Each is a SQLite
// virtual table whose rows come from the catalogue (or the process list) as the session sees it. Connection::find
// finds them like tables once connectCatalogue() was called.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "sandbox/store/databases/catalog.h"
#include "sandbox/store/databases/database.h"

namespace sandbox {

class Connection;

// Lets a connection find the catalogue views, and answers the functions about the catalogue for it. Called once.
void connectCatalogue(Connection& connection);

}  // namespace sandbox
