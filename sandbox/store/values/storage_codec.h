// How each T-SQL type lies in SQLite, and the way of values in and out. Used by everything that binds parameters,
// reads columns or makes tables.
//
//   bit .. bigint                   INTEGER
//   smallmoney, money               INTEGER, units of 1/10000
//   decimal, precision up to 18     INTEGER, unscaled
//   decimal, precision above 18     BLOB of 16 bytes: the unscaled value, big-endian, sign bit flipped (memcmp order)
//   real, float                     REAL
//   char .. ntext                   TEXT, UTF-8, blanks as they stand
//   binary, varbinary, image        BLOB
//   uniqueidentifier                BLOB of 16 bytes in the order in which SQL Server compares them
//   datetime, smalldatetime         INTEGER, ticks of 1/300 s since 1900-01-01
//   date                            INTEGER, days since 0001-01-01
//   time, datetime2                 INTEGER, units of 100 ns (since midnight, since 0001-01-01)
// Within one type SQLite's own comparison (with the column's collation for TEXT) is SQL Server's.
#pragma once

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "sandbox/store/values/decimal.h"
#include "sandbox/store/values/type.h"
#include "sandbox/store/values/value.h"

namespace sandbox {

// Binds a value that is already of `type` (convert() makes it so) to parameter `index`, 1-based. The text is copied.
void bindValue(sqlite3_stmt* statement, int index, const Type& type, const Value& value);

// The cell of the current row, column 0-based, as a value of `type`. Type Null gives Null.
[[nodiscard]] Value readColumn(sqlite3_stmt* statement, int column, const Type& type);

// The same for function arguments and results.
[[nodiscard]] Value readArgument(sqlite3_value* argument, const Type& type);
void setResult(sqlite3_context* context, const Type& type, const Value& value);

// "INTEGER", "REAL", "BLOB" or "TEXT COLLATE t_da_ci_as": a column's declaration; collation is a T-SQL name, empty for
// the default, and looked at for character types only.
[[nodiscard]] std::string sqliteDeclaration(const Type& type, std::string_view collation);

// A Type in one integer, so that generated SQL can hand types to functions as literals.
[[nodiscard]] std::int64_t encodeType(const Type& type);
[[nodiscard]] Type decodeType(std::int64_t code);

// Whether values of both types lie and compare alike in SQLite, so that a comparison or a union needs no t_cast.
// Decimals need equal scale and equal width of storage.
[[nodiscard]] bool sameStorage(const Type& a, const Type& b);

// The BLOB forms.
[[nodiscard]] std::array<std::uint8_t, 16> encodeWideDecimal(Int128 unscaled);
[[nodiscard]] Int128 decodeWideDecimal(std::span<const std::uint8_t, 16> bytes);
[[nodiscard]] std::array<std::uint8_t, 8> encodeRowVersion(std::int64_t value);  // the highest byte first
[[nodiscard]] std::array<std::uint8_t, 16> encodeGuid(const Guid& guid);
[[nodiscard]] Guid decodeGuid(std::span<const std::uint8_t, 16> bytes);

// The SQLite text by which values compare as SQL Server compares them: binary values without their trailing zero bytes,
// all others as they lie. It uses nothing but SQLite's own functions, so that an index can be made on it.
[[nodiscard]] std::string comparableSql(std::string_view sql, const Type& type);

}  // namespace sandbox
