// The session's entry points; what they do is the interpreter's.
#include "sandbox/tsql/run/session.h"

#include <algorithm>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parser.h"
#include "sandbox/tsql/run/interpreter.h"
#include "sandbox/tsql/run/session_bulk.h"

namespace sandbox {

namespace {

std::vector<CallArgument> toArguments(std::span<const Argument> given) {
    std::vector<CallArgument> arguments;
    arguments.reserve(given.size());
    for (const Argument& a : given) {
        arguments.push_back(
            {.name = a.name, .value = a.value, .output = a.output, .useDefault = a.useDefault, .target = std::nullopt});
    }
    return arguments;
}

// What a bulk load's client sends for a char, nchar or binary may be shorter than that: it is padded.
Value paddedToType(const Value& value, const Type& type) {
    Type varying = type;
    switch (type.id) {
        case TypeId::Char: varying.id = TypeId::VarChar; break;
        case TypeId::NChar: varying.id = TypeId::NVarChar; break;
        case TypeId::Binary: varying.id = TypeId::VarBinary; break;
        default: return value;
    }
    return convertForStore(value, varying, type);
}

}  // namespace

Session::Session(Engine& engine, const LoginInfo& login) : state_(std::make_unique<SessionState>(engine, login)) {}

Session::~Session() = default;

void Session::watch(StatementWatch* watch) {
    state_->watch = watch;
}

void Session::batch(std::string_view text, Reply& reply) {
    Interpreter(*state_, reply).runBatch(text);
}

void Session::call(const std::string& procedure, std::span<const Argument> arguments, Reply& reply) {
    Interpreter(*state_, reply).callProcedure(procedure, toArguments(arguments));
}

void Session::execute(std::string_view text, std::string_view declarations, std::span<const Argument> arguments,
                      Reply& reply) {
    Interpreter(*state_, reply).runText(text, declarations, toArguments(arguments));
}

std::vector<ResultColumn> Session::describe(std::string_view text, std::string_view declarations) {
    state_->connection->clearInterrupt();
    SilentReply silent;
    return Interpreter(*state_, silent).describe(text, declarations);
}

// ---- bulk load

BulkTarget Session::beginBulk(std::string_view statement) {
    state_->cancelled = false;
    state_->connection->clearInterrupt();
    const ast::InsertBulk parsed = parseInsertBulk(statement);
    auto load = std::make_unique<BulkLoad>(*state_);
    load->bind = load->interpreter.bindContext(load->unit, 0);
    const auto found = load->bind.find(parsed.table.database, parsed.table.schema, parsed.table.name);
    if (!found) {
        throw SqlError(errorMessage<208, 82>(parsed.table.written()).atLine(1), Effect::Scope);
    }
    BulkTarget target;
    std::vector<std::string> names;
    bool keepIdentity = false;
    for (const auto& column : parsed.columns) {
        const ColumnDef* known = found->object->findColumn(column.name);
        if (!known) {
            throw SqlError(errorMessage<207>(column.name).atLine(column.place.line), Effect::Scope);
        }
        keepIdentity = keepIdentity || known->identity;
        names.push_back(column.name);
        load->types.push_back(column.type.type);
        target.columns.push_back(
            {column.name, column.type.type, column.nullable.value_or(known->nullable), known->identity});
    }
    const auto has = [&](std::string_view option) {
        return std::find(parsed.options.begin(), parsed.options.end(), option) != parsed.options.end();
    };
    load->execute = std::make_unique<ExecuteContext>(load->interpreter.executeContext(load->bind));
    state_->startStatement();
    load->watched.emplace(state_->watch, statement);
    load->insert = std::make_unique<BulkInsert>(
        *load->execute, bindInsertRows(load->bind, *found, names, load->types, keepIdentity),
        BulkInsert::Options{.checkConstraints = has("CHECK_CONSTRAINTS"), .keepNulls = has("KEEP_NULLS")});
    state_->bulk = std::move(load);
    return target;
}

void Session::bulkRow(std::span<const Value> cells) {
    BulkLoad& load = *state_->bulk;
    try {
        std::vector<Typed> row;
        row.reserve(cells.size());
        for (std::size_t i = 0; i < cells.size(); ++i)
            row.push_back({load.types.at(i), paddedToType(cells[i], load.types[i])});
        load.insert->row(row);
    } catch (...) {
        state_->bulk.reset();
        throw;
    }
}

std::int64_t Session::endBulk() {
    const auto load = std::move(state_->bulk);
    const std::int64_t count = load->insert->finish();
    state_->rowCount = count;
    state_->error = 0;
    return count;
}

void Session::abortBulk() {
    state_->bulk.reset();
}

// ---- transaction manager requests

namespace {

ast::Transaction transaction(ast::Transaction::Kind kind, const std::string& name) {
    return {.kind = kind, .name = name, .variable = {}};
}

}  // namespace

void Session::beginTransaction(const std::string& name, Reply& reply) {
    Interpreter(*state_, reply).transactionRequest({transaction(ast::Transaction::Kind::Begin, name)});
}

void Session::commitTransaction(bool beginAnother, Reply& reply) {
    std::vector<ast::Transaction> steps{transaction(ast::Transaction::Kind::Commit, {})};
    if (beginAnother) steps.push_back(transaction(ast::Transaction::Kind::Begin, {}));
    Interpreter(*state_, reply).transactionRequest(steps);
}

void Session::rollbackTransaction(const std::string& name, bool beginAnother, Reply& reply) {
    std::vector<ast::Transaction> steps{transaction(ast::Transaction::Kind::Rollback, name)};
    if (beginAnother) steps.push_back(transaction(ast::Transaction::Kind::Begin, {}));
    Interpreter(*state_, reply).transactionRequest(steps);
}

void Session::saveTransaction(const std::string& name, Reply& reply) {
    Interpreter(*state_, reply).transactionRequest({transaction(ast::Transaction::Kind::Save, name)});
}

// ---- state

void Session::cancel() {
    state_->connection->interrupt();
}

bool Session::cancelled() const {
    return state_->cancelled;
}

void Session::reset(bool keepTransaction) {
    state_->reset(keepTransaction);
}

int Session::spid() const {
    return state_->spid;
}

const std::string& Session::database() const {
    return state_->database();
}

}  // namespace sandbox
