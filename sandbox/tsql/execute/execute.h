// The statements that write: rows (INSERT, UPDATE, DELETE, bulk load) and definitions (CREATE, ALTER, DROP, TRUNCATE).
// The interpreter calls one function a statement; each is whole or leaves nothing, and raises SqlError.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/databases/connection.h"
#include "sandbox/tsql/bind/bind.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox {

// What the statements need of the session that runs them.
struct ExecuteContext {
    Connection& connection;
    const BindContext& bind;
    // Binds a query's parameters before its first step. input: the row for parameters of kind Input, first slot 1.
    std::function<void(const Statement& statement, const BoundQuery& query, std::span<const Typed> input)>
        bindParameters;
    std::function<void(const Message&)> info;                               // messages of severity 10 and below
    std::function<void(std::int64_t)> identityGiven = [](std::int64_t) {};  // for SCOPE_IDENTITY and @@IDENTITY
    bool ansiWarnings = true;
    bool nullByDefault = true;  // a column of which nothing is said may be null
};

// ---- rows; each gives the number of rows affected

[[nodiscard]] std::int64_t executeInsert(const ExecuteContext& context, const BoundInsert& insert);
[[nodiscard]] std::int64_t executeUpdate(const ExecuteContext& context, const BoundUpdate& update);
[[nodiscard]] std::int64_t executeDelete(const ExecuteContext& context, const BoundDelete& deletion);

// INSERT ... EXEC: rows as the procedure gave them; insert is bindInsertRows' answer.
[[nodiscard]] std::int64_t executeInsertRows(const ExecuteContext& context, const BoundInsert& insert,
                                             std::span<const std::vector<Typed>> rows);

// Makes the table and fills it.
[[nodiscard]] std::int64_t executeSelectInto(const ExecuteContext& context, const BoundQuery& query);

// INSERT BULK under way. Everything it stored is undone unless finish() was called.
class BulkInsert {
public:
    struct Options {
        bool checkConstraints = false;  // else foreign keys and checks are not looked at
        bool keepNulls = false;         // else a null becomes its column's default
    };
    // insert: bindInsertRows' answer for the announced columns. The context must outlive this.
    BulkInsert(const ExecuteContext& context, BoundInsert insert, Options options);
    ~BulkInsert();
    BulkInsert(const BulkInsert&) = delete;
    BulkInsert& operator=(const BulkInsert&) = delete;

    void row(std::span<const Typed> cells);
    [[nodiscard]] std::int64_t finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

// DBCC CHECKIDENT: tells the current value (7998), and with reseed changes it. `to` empty with reseed: corrects the
// value to the column's highest.
void checkIdentity(const ExecuteContext& context, std::string_view table, bool reseed, std::optional<std::int64_t> to);

// ---- definitions

void executeCreateTable(const ExecuteContext& context, const ast::CreateTable& statement);
// DECLARE @t TABLE: name with its "@".
void executeDeclareTable(const ExecuteContext& context, std::string_view name, const ast::TableDefinition& definition);
void executeAlterTable(const ExecuteContext& context, const ast::AlterTable& statement);
void executeTruncate(const ExecuteContext& context, const ast::Truncate& statement);
void executeCreateIndex(const ExecuteContext& context, const ast::CreateIndex& statement);
void executeDropIndex(const ExecuteContext& context, const ast::DropIndex& statement);
void executeDrop(const ExecuteContext& context, const ast::DropObjects& statement);
// Views and procedures, bound and found good by the caller. text: the whole CREATE statement. columns: a view's, with
// names, types and nullability.
void executeCreateModule(const ExecuteContext& context, ObjectKind kind, ast::Verb verb, const ast::ObjectName& name,
                         std::string text, std::vector<ParameterDef> parameters = {},
                         std::vector<ColumnDef> columns = {});
void executeRename(const ExecuteContext& context, std::string_view object, std::string_view newName,
                   std::string_view type);  // sp_rename

// Outside of a transaction only (226).
void executeCreateDatabase(const ExecuteContext& context, const ast::CreateDatabase& statement);
void executeDropDatabase(const ExecuteContext& context, const ast::DropDatabase& statement);

// In the current database.
void executeCreateSchema(const ExecuteContext& context, const ast::CreateSchema& statement);
void executeDropSchema(const ExecuteContext& context, const ast::DropSchema& statement);  // an empty one

}  // namespace sandbox
