// The meta tables of a database's file: what its catalogue, its identity values and its row version are, and the
// registry of a folder's databases. Used by Databases when it opens and makes files, and by Connection when a catalogue
// changes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/store/databases/catalog.h"
#include "sandbox/store/databases/database.h"

struct sqlite3;

namespace sandbox {

// Raises SqliteError.
[[nodiscard]] sqlite3* openFile(const std::filesystem::path& file);
void execute(sqlite3* sqlite, const std::string& sql);

// schema: the SQLite schema in which the file is attached.
void makeMetaTables(sqlite3* sqlite);
[[nodiscard]] std::shared_ptr<Catalog> readCatalog(sqlite3* sqlite);
void writeObject(sqlite3* sqlite, const std::string& schema, const ObjectDef& object);
void eraseObject(sqlite3* sqlite, const std::string& schema, std::int32_t id);
[[nodiscard]] std::map<std::int32_t, std::int64_t> readIdentities(sqlite3* sqlite);
void writeIdentity(sqlite3* sqlite, const std::string& schema, std::int32_t objectId,
                   std::optional<std::int64_t> value);
[[nodiscard]] std::int32_t readLastObjectId(sqlite3* sqlite);
void writeLastObjectId(sqlite3* sqlite, const std::string& schema, std::int32_t id);
[[nodiscard]] std::optional<std::int64_t> readRowVersion(sqlite3* sqlite);
void writeRowVersion(sqlite3* sqlite, const std::string& schema, std::int64_t value);

// The list of a folder's databases, a file of its own.
void makeRegistry(sqlite3* sqlite);
[[nodiscard]] std::vector<Database::Facts> readDatabases(sqlite3* registry);
void writeDatabase(sqlite3* registry, const Database::Facts& facts);
void eraseDatabase(sqlite3* registry, int id);

}  // namespace sandbox
