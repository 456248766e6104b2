// What SQLite calls while it runs a generated statement: T-SQL's operators, conversions and functions, registered on a
// connection. The binder writes the calls (function_table.h plans those of T-SQL functions, the helpers below write the
// rest); the session owns the FunctionContext.
//
// Types in calls are encodeType() integers, collations are collationCode() integers. NULL in gives NULL out unless
// told.
//
//   t_cast(v, from, to [, style])         CAST and CONVERT
//   t_try_cast(v, from, to [, style])     NULL where the conversion fails
//   t_store(v, from, to, table, column)   for storing into a column: 8152 where non-blank text is cut
//   t_add t_sub t_mul t_div t_mod (a, b, typeA, typeB, result)    any numbers, money, decimals, dates
//   t_iadd t_isub t_imul t_idiv t_imod (a, b, result)             both integers already
//   t_fadd t_fsub t_fmul t_fdiv (a, b)                            both float already
//   t_neg(a, type)  t_not(a, type)  t_xor(a, b)                   & and | are SQLite's
//   t_concat(a, b, result)                text or binary, cut to the result's length
//   t_pad(text, n)                        blanks up to n characters
//   t_like(text, pattern, escape, collation, unicode)   1, 0 or NULL; escape NULL for none; unicode: 1 where either
//                                         side is nchar or nvarchar, so that trailing blanks count
//   t_cmp(a, b, collation)                -1, 0, 1
//   t_var(slot)                           FunctionContext::variable, asked anew for each row
//   t_rows(n, limit)                      n; raises where TOP, OFFSET or FETCH cannot have so many (RowLimit)
//   t_depth(n, most)                      n; 530 where a recursion is deeper than most (0: no limit)
//   t_nn(x)                               x; notes a NULL for warning 8153 (nullEliminated)
//   t_scalar(x)                           aggregate: the one value of a subquery, NULL of none, 512 of more:
//                                         (SELECT t_scalar(c) FROM (SELECT ... AS c ... LIMIT 2))
// Aggregates are written from planAggregate(); SUM, AVG and their kin note NULLs for warning 8153 themselves.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/convert_types.h"
#include "sandbox/store/values/error.h"
#include "sandbox/store/values/type.h"
#include "sandbox/store/values/value.h"

namespace sandbox {

// One session's side of the functions; outlives the connection that it is registered on. A hook that is not set makes
// its function give NULL.
struct FunctionContext {
    ConvertContext convert;
    int dateFirst = 7;
    std::int64_t now = 0;  // local time, datetime2 units; set at the start of each statement
    std::int64_t nowUtc = 0;
    std::string user = "dbo";
    std::string login;
    std::string host;
    std::string program;
    int spid = 0;
    std::string serverName;
    std::string database;  // the current one
    std::int32_t databaseId = 0;
    std::string collation;  // the server's, for SERVERPROPERTY and DATABASEPROPERTYEX

    std::function<Typed(std::int64_t slot)> variable;
    std::function<std::optional<std::int32_t>(std::string_view name, std::string_view kind)>
        objectId;  // kind may be empty
    std::function<std::optional<std::string>(std::int32_t id, std::optional<std::int32_t> database)> objectName;
    std::function<std::optional<std::string>(std::int32_t id, std::optional<std::int32_t> database)> objectSchema;
    std::function<std::optional<std::string>(std::int32_t id)> objectDefinition;
    std::function<std::optional<std::int32_t>(std::int32_t id, std::string_view property)> objectProperty;
    std::function<std::optional<std::int32_t>(std::string_view table, std::string_view column)> columnLength;
    std::function<std::optional<std::string>(std::int32_t table, std::int32_t column)> columnName;
    std::function<std::optional<std::int32_t>(std::int32_t table, std::string_view column, std::string_view property)>
        columnProperty;
    std::function<std::optional<std::int32_t>(std::string_view name)> schemaIdOf;
    std::function<std::optional<std::string>(std::int32_t id)> schemaNameOf;
    std::function<std::optional<std::int32_t>(std::string_view name)> databaseIdOf;
    std::function<std::optional<std::string>(std::int32_t id)> databaseNameOf;
    std::function<Value(std::string_view database, std::string_view property)> databaseProperty;  // text or int64
    std::function<std::optional<Decimal>(std::string_view table)> identCurrent, identSeed, identIncrement;
    std::function<std::optional<Decimal>()> scopeIdentity, lastIdentity;  // SCOPE_IDENTITY(), @@IDENTITY
    std::function<const Message*()> caughtError;     // ERROR_NUMBER() and the like; nullptr outside CATCH
    std::function<std::int32_t()> transactionState;  // XACT_STATE()
    std::function<std::int32_t(bool global, std::string_view name)> cursorStatus;
    std::function<std::string(std::string_view principal, std::string_view resource, std::string_view owner)>
        applicationLockMode;
    std::function<bool(std::string_view principal, std::string_view resource, std::string_view mode,
                       std::string_view owner)>
        applicationLockFree;

    bool nullEliminated = false;  // an aggregate left a NULL out; the session clears it
    std::optional<double> rand;   // RAND() without a seed: one value a statement; the session clears it
    std::uint64_t randState = 0x9E3779B97F4A7C15u;
    std::optional<SqlError> failure;  // what a function raised before SQLite's step failed
};

// What t_rows(n, limit) checks: a number of rows must be one that its clause takes (127, 1031, 10742, 10744).
enum class RowLimit { Count, Percent, Offset, Fetch };

// Registers all functions, aggregates and collations on the connection. context must outlive it.
void registerFunctions(sqlite3* database, FunctionContext& context);

// Throws the failure that a function left, and forgets it. Call after every step that gave an error.
void rethrowIfFailed(FunctionContext& context);

// SQLite text for the common calls; `sql` arguments are whole SQLite expressions.
[[nodiscard]] std::string castSql(std::string_view sql, const Type& from, const Type& to, int style = 0,
                                  bool tryCast = false);  // `sql` itself where nothing is to be done
[[nodiscard]] std::string storeSql(std::string_view sql, const Type& from, const Type& to, std::string_view table,
                                   std::string_view column);
// a and b as they are; result is binaryResultType(op, a, b). Casts what the operator needs cast.
[[nodiscard]] std::string arithmeticSql(BinaryOp op, std::string_view a, const Type& typeA, std::string_view b,
                                        const Type& typeB, const Type& result);
[[nodiscard]] std::string negateSql(std::string_view a, const Type& type);
[[nodiscard]] std::string complementSql(std::string_view a, const Type& type);
// escape: a SQLite expression, empty for none.
[[nodiscard]] std::string likeSql(std::string_view text, const Type& textType, std::string_view pattern,
                                  const Type& patternType, std::string_view escape, int collation);
// A SQLite literal for a value of a type: 12, x'00FF', 'it''s', 1.5, NULL.
[[nodiscard]] std::string literalSql(const Value& value, const Type& type);

// T-SQL's LIKE and PATINDEX on their own.
[[nodiscard]] bool matchesLike(std::string_view text, std::string_view pattern, std::optional<char16_t> escape,
                               int collation, bool unicode);

}  // namespace sandbox
