// T-SQL's collations: their names, their comparison (ICU), and their counterparts registered in SQLite. Texts that
// differ in trailing blanks only are equal under all of them. Safe to use from any thread.
#pragma once

#include <sqlite3.h>

#include <string>
#include <string_view>

namespace sandbox {

inline constexpr std::string_view kDefaultCollation = "Danish_Norwegian_CI_AS";

// A collation's number, for generated SQL and for compare(). Empty and Database_Default are the default collation.
// Raises SqlError 448 for a name that is none (Windows and SQL collations of Danish_Norwegian and Latin1_General are
// known, with CI/CS, AS/AI, BIN, BIN2).
[[nodiscard]] int collationCode(std::string_view name);

// The name as a column definition keeps it: empty for Database_Default. Raises as collationCode does.
[[nodiscard]] std::string columnCollation(std::string_view name);

// The name to write after COLLATE in SQLite: "t_da_ci_as".
[[nodiscard]] std::string sqliteCollation(std::string_view name);

// Registers every collation on a connection.
void registerCollations(sqlite3* database);

// Below, equal or above zero: how two UTF-8 texts compare.
[[nodiscard]] int compare(int collation, std::string_view a, std::string_view b);

// Whether case, and accents, count.
[[nodiscard]] bool isCaseSensitive(int collation);
[[nodiscard]] bool isAccentSensitive(int collation);

// One UTF-16 unit without what the collation does not look at: characters that fold alike are equal in CHARINDEX,
// REPLACE and LIKE.
[[nodiscard]] char16_t foldUnit(int collation, char16_t unit);

// A name of an object, column or variable in the form in which names are looked up, without regard to case.
[[nodiscard]] std::string foldName(std::string_view name);
[[nodiscard]] bool sameName(std::string_view a, std::string_view b);

}  // namespace sandbox
