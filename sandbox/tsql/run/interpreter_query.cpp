// The statements that read and change rows: bound, their parameters filled in, run, their rows and counts told.
#include <sqlite3.h>

#include <algorithm>
#include <utility>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/tsql/execute/execute_output.h"
#include "sandbox/tsql/run/globals.h"
#include "sandbox/tsql/run/interpreter.h"
#include "sandbox/tsql/run/interpreter_bound.h"
#include "sandbox/tsql/run/reply_collector.h"

namespace sandbox {

namespace {

constexpr int kTableChanged = 3961;

}  // namespace

void Interpreter::bindParameters(const Statement& statement, const BoundQuery& query, std::span<const Typed> input) {
    int place = 0;
    for (const Parameter& parameter : query.parameters) {
        ++place;
        switch (parameter.kind) {
            case Parameter::Kind::Variable:
                bindValue(statement.get(), place, parameter.type,
                          frame().variables.at(static_cast<std::size_t>(parameter.slot)));
                break;
            case Parameter::Kind::Global:
                bindValue(statement.get(), place, parameter.type,
                          globalValue(session_, parameter.name, parameter.type));
                break;
            case Parameter::Kind::Literal: bindValue(statement.get(), place, parameter.type, parameter.literal); break;
            case Parameter::Kind::Input:
                if (parameter.slot > 0) {
                    bindValue(statement.get(), place, parameter.type,
                              input[static_cast<std::size_t>(parameter.slot) - 1].value);
                }
                break;
        }
    }
}

ExecuteContext Interpreter::executeContext(const BindContext& bind) {
    return {.connection = *session_.connection,
            .bind = bind,
            .bindParameters = [this](const Statement& statement, const BoundQuery& query,
                                     std::span<const Typed> input) { bindParameters(statement, query, input); },
            .info = [this](const Message& message) { inform(message); },
            .identityGiven =
                [this](std::int64_t value) {
                    session_.identity = value;
                    if (session_.frame) session_.frame->scopeIdentity = value;
                },
            .ansiWarnings = session_.settings.ansiWarnings,
            .nullByDefault = session_.settings.ansiNullDefault};
}

Typed Interpreter::evaluateBound(const BoundQuery& query) {
    requireNoSnapshot(query.reads);
    session_.startStatement();
    Statement statement = session_.connection->prepare(query.sql);
    bindParameters(statement, query, {});
    const Type& type = query.columns.at(0).type;
    if (!statement.step()) return {type, Null{}};
    return {type, readColumn(statement.get(), 0, type)};
}

Typed Interpreter::evaluate(const ast::Expr& expression, std::optional<Type> wanted) {
    if (const auto* literal = ast::as<ast::Literal>(expression); literal && !wanted) return literal->value;
    return evaluateBound(std::get<BoundQuery>(boundExpression(expression, wanted).bound));
}

// SET ROWCOUNT stops a statement after so many rows.
BoundQuery Interpreter::limited(const BoundQuery& query) const {
    BoundQuery out = query;
    if (session_.settings.rowCount > 0) {
        out.sql = "SELECT * FROM (" + query.sql + ") LIMIT " + std::to_string(session_.settings.rowCount);
    }
    return out;
}

void Interpreter::warnOfNulls() {
    bool& noted = session_.connection->functions().nullEliminated;
    if (std::exchange(noted, false) && session_.settings.ansiWarnings) {
        inform(errorMessage<8153>());
    }
}

namespace {

// SET TEXTSIZE cuts the long types.
void cutLong(Value& value, const Type& type, std::size_t most) {
    if (!isLob(type.id) && type.length != Type::kMax) return;
    if (auto* bytes = std::get_if<Bytes>(&value); bytes && bytes->size() > most) bytes->resize(most);
    auto* text = std::get_if<std::string>(&value);
    const std::size_t characters = isUnicode(type.id) ? most / 2 : most;
    if (!text || text->size() <= characters) return;
    std::size_t at = 0;
    for (std::size_t n = 0; at < text->size(); ++at) {
        if ((static_cast<unsigned char>((*text)[at]) & 0xC0) != 0x80 && n++ == characters) break;
    }
    text->resize(at);
}

}  // namespace

std::int64_t Interpreter::sendQuery(const BoundQuery& query) {
    requireNoSnapshot(query.reads);
    session_.startStatement();
    Statement statement = session_.connection->prepare(query.sql);
    bindParameters(statement, query, {});
    if (!query.assigns) reply_->columns(query.columns);
    if (session_.settings.formatOnly) return 0;
    const std::int64_t limit = session_.settings.rowCount;
    const auto textSize = static_cast<std::size_t>(session_.settings.textSize);
    std::vector<Value> cells(query.columns.size());
    std::int64_t rows = 0;
    while ((limit == 0 || rows < limit) && statement.step()) {
        ++rows;
        if (query.assigns) continue;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            cells[i] = readColumn(statement.get(), static_cast<int>(i), query.columns[i].type);
            cutLong(cells[i], query.columns[i].type, textSize);
        }
        reply_->row(cells);
    }
    return rows;
}

void Interpreter::runSelect(const ast::Statement& s) {
    const auto& select = *ast::as<ast::SelectStatement>(s);
    const BoundNode& known = bound(&s, [&](const BindContext& c) { return bindSelect(c, *select.query); });
    const auto& query = std::get<BoundQuery>(known.bound);
    if (!query.reads.empty()) beginImplicitly();
    if (query.into) {
        requireNoSnapshot(query.reads);
        requireWritable();
        const BindContext context = bindContext(*frame().unit, known.visible);
        session_.startStatement();
        const std::int64_t rows = executeSelectInto(executeContext(context), limited(query));
        session_.definitionsChanged();
        warnOfNulls();
        succeed(rows);
        done(rows);
        return;
    }
    lockForReading(*select.query, query);
    const std::int64_t rows = sendQuery(query);
    warnOfNulls();
    succeed(rows);
    done(query.assigns ? std::nullopt : std::optional(rows));
}

namespace {

constexpr std::string_view kLockHints[] = {"UPDLOCK",  "XLOCK",        "TABLOCKX",
                                           "HOLDLOCK", "SERIALIZABLE", "REPEATABLEREAD"};

bool asksForLocks(const ast::TableRef& table) {
    if (const auto* join = std::get_if<ast::Join>(&table.node)) {
        return asksForLocks(*join->left) || asksForLocks(*join->right);
    }
    const auto* named = std::get_if<ast::NamedTable>(&table.node);
    return named && std::any_of(named->hints.begin(), named->hints.end(), [](const std::string& hint) {
               return std::find(std::begin(kLockHints), std::end(kLockHints), hint) != std::end(kLockHints);
           });
}

bool asksForLocks(const ast::Query& query) {
    const auto* select = std::get_if<ast::Select>(&query.body->node);
    return select && std::any_of(select->from.begin(), select->from.end(),
                                 [](const ast::TableRefPtr& table) { return asksForLocks(*table); });
}

}  // namespace

// Lock hints, serializable and repeatable reading keep writers away until the transaction ends: here by the writer
// lock.
void Interpreter::lockForReading(const ast::Query& text, const BoundQuery& query) {
    const bool wanted = session_.settings.isolation == ast::Isolation::Serializable ||
                        session_.settings.isolation == ast::Isolation::RepeatableRead || asksForLocks(text);
    if (!wanted || !session_.connection->inTransaction()) return;
    for (const ResolvedObject& object : query.reads) {
        if (auto database = session_.connection->attach(object.database); database && !database->temporary()) {
            session_.connection->lockForWriting(*database);
        }
    }
}

void Interpreter::requireNoSnapshot(std::span<const ResolvedObject> objects) const {
    if (session_.settings.isolation != ast::Isolation::Snapshot) return;
    for (const ResolvedObject& object : objects) {
        const auto database = session_.connection->attach(object.database);
        if (object.object->system || !database || database->temporary() || sameName(object.database, "tempdb"))
            continue;
        throw SqlError(errorMessage<3952>(object.database));
    }
}

void Interpreter::requireIdentityInsert(const BoundInsert& insert) {
    const bool on = !session_.identityInsert.empty() && identityInsertKey(insert.target) == session_.identityInsert;
    const std::string& table = insert.target.object->name;
    if (insert.explicitIdentity && !on) {
        throw SqlError(errorMessage<544>(table));
    }
    if (!insert.explicitIdentity && on) {
        throw SqlError(errorMessage<545>(table));
    }
}

void Interpreter::change(const ast::Statement& s, const std::function<std::int64_t(const ExecuteContext&)>& action) {
    beginImplicitly();
    requireWritable();
    const BindContext context = bindContext(*frame().unit, node(&s).visible);
    session_.startStatement();
    std::int64_t rows = 0;
    if (!session_.settings.formatOnly) {
        try {
            rows = action(executeContext(context));
        } catch (const SqlError& e) {
            // The table was changed while this statement waited for its lock: it is bound anew, once.
            if (e.messages.front().number != kTableChanged) throw;
            rows = action(executeContext(context));
        }
    }
    warnOfNulls();
    succeed(rows);
    done(rows);
}

namespace {

// What a statement's OUTPUT clause needs, null where it has none.
std::unique_ptr<RowOutput> outputOf(const ExecuteContext& context, const std::optional<ast::Output>& clause,
                                    const ResolvedObject& target, OutputTables tables, Reply& reply) {
    if (!clause) return nullptr;
    const auto send = [&reply](const BoundQuery& query, std::span<const std::vector<Typed>> rows) {
        reply.columns(query.columns);
        for (const std::vector<Typed>& row : rows) {
            std::vector<Value> cells;
            for (const Typed& cell : row) cells.push_back(cell.value);
            reply.row(cells);
        }
    };
    return std::make_unique<RowOutput>(context, target, bindOutput(context.bind, *clause, target, tables), send);
}

}  // namespace

void Interpreter::runInsert(const ast::Statement& s, const ast::Insert& n) {
    const auto bind = [&](const BindContext& c) { return bindInsert(c, n); };
    if (std::get<BoundInsert>(bound(&s, bind).bound).fromExecute) return runInsertExecute(s, n);
    change(s, [&](const ExecuteContext& context) {
        const auto& insert = std::get<BoundInsert>(bound(&s, bind).bound);
        requireNoSnapshot({&insert.target, 1});
        requireNoSnapshot(insert.source.reads);
        requireIdentityInsert(insert);
        const auto output = outputOf(context, n.output, insert.target, {.inserted = true}, *reply_);
        if (session_.settings.rowCount == 0) return executeInsert(context, insert, output.get());
        BoundInsert fewer = insert;
        fewer.source = limited(insert.source);
        return executeInsert(context, fewer, output.get());
    });
}

void Interpreter::runUpdate(const ast::Statement& s) {
    const auto& n = *ast::as<ast::Update>(s);
    change(s, [&](const ExecuteContext& context) {
        const BoundNode& known = bound(&s, [&](const BindContext& c) { return bindUpdate(c, n); });
        const auto& update = std::get<BoundUpdate>(known.bound);
        requireNoSnapshot(update.source.reads);
        const auto output = outputOf(context, n.output, update.target, {.inserted = true, .deleted = true}, *reply_);
        if (session_.settings.rowCount == 0) return executeUpdate(context, update, output.get());
        BoundUpdate fewer = update;
        fewer.source = limited(update.source);
        return executeUpdate(context, fewer, output.get());
    });
}

void Interpreter::runDelete(const ast::Statement& s) {
    const auto& n = *ast::as<ast::Delete>(s);
    change(s, [&](const ExecuteContext& context) {
        const BoundNode& known = bound(&s, [&](const BindContext& c) { return bindDelete(c, n); });
        const auto& deletion = std::get<BoundDelete>(known.bound);
        requireNoSnapshot(deletion.source.reads);
        const auto output = outputOf(context, n.output, deletion.target, {.deleted = true}, *reply_);
        if (session_.settings.rowCount == 0) return executeDelete(context, deletion, output.get());
        BoundDelete fewer = deletion;
        fewer.source = limited(deletion.source);
        return executeDelete(context, fewer, output.get());
    });
}

void Interpreter::runInsertExecute(const ast::Statement& s, const ast::Insert& n) {
    const auto& call = *std::get<std::unique_ptr<ast::Execute>>(n.source);
    if (session_.collecting) {
        throw SqlError(errorMessage<8164>());
    }
    beginImplicitly();
    requireWritable();
    const ResolvedObject target = std::get<BoundInsert>(node(&s).bound).target;
    const std::vector<std::string> filled = std::get<BoundInsert>(node(&s).bound).filled;
    RowCollector collector(*reply_, filled.size());
    {
        struct Redirect {
            Interpreter& interpreter;
            Reply* outer;
            Redirect(Interpreter& i, Reply& to) : interpreter(i), outer(std::exchange(i.reply_, &to)) {
                i.session_.collecting = i.session_.transaction.count();
            }
            ~Redirect() {
                interpreter.reply_ = outer;
                interpreter.session_.collecting.reset();
            }
        } redirect(*this, collector);
        runExecute(call);
    }
    const BindContext context = bindContext(*frame().unit, node(&s).visible);
    session_.startStatement();
    std::int64_t rows = 0;
    for (const auto& set : collector.sets()) {
        const auto insert = bindInsertRows(context, target, filled, set.types, false);
        rows += executeInsertRows(executeContext(context), insert, set.rows);
    }
    succeed(rows);
    done(rows);
}

}  // namespace sandbox
