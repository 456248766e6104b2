// Statements that define, and administration: tables, modules, databases, permissions, DBCC.
#include <algorithm>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/run/interpreter.h"

namespace sandbox {

namespace {

[[noreturn]] void raiseUnsupported(const std::string& what) {
    throw SqlError(errorMessage<40510>(what));
}

// Errors of a module's body, and of making it, are told under its name.
SqlError named(SqlError error, const std::string& module) {
    for (Message& m : error.messages) {
        if (m.procedure.empty()) m.procedure = module;
    }
    error.effect = Effect::Scope;
    return error;
}

void underName(const std::string& module, const std::function<void()>& action) {
    try {
        action();
    } catch (const SqlError& e) {
        throw named(e, module);
    }
}

std::vector<ColumnDef> viewColumns(const ast::CreateView& n, const BoundQuery& query) {
    if (!n.columns.empty() && n.columns.size() != query.columns.size()) {
        const bool more = query.columns.size() > n.columns.size();
        throw SqlError(more ? errorMessage<4501>(n.name.name) : errorMessage<4502>(n.name.name));
    }
    std::vector<ColumnDef> columns;
    for (std::size_t i = 0; i < query.columns.size(); ++i) {
        ColumnDef column;
        column.name = n.columns.empty() ? query.columns[i].name : n.columns[i];
        column.type = query.columns[i].type;
        column.nullable = query.columns[i].nullable;
        column.columnId = static_cast<int>(i) + 1;
        if (column.name.empty()) {
            throw SqlError(errorMessage<4511>(i + 1));
        }
        for (const ColumnDef& other : columns) {
            if (sameName(other.name, column.name)) {
                throw SqlError(errorMessage<4506>(column.name, n.name.name));
            }
        }
        columns.push_back(std::move(column));
    }
    return columns;
}

}  // namespace

void Interpreter::define(const std::function<void(const ExecuteContext&)>& action) {
    if (!session_.settings.formatOnly) {
        beginImplicitly();
        requireWritable();
        const BindContext context = bindContext(*frame().unit, frame().unit->variables.size());
        session_.startStatement();
        try {
            action(executeContext(context));
        } catch (const SqlError&) {
            session_.definitionsChanged();  // DROP of several objects may have dropped some
            throw;
        }
        session_.definitionsChanged();
    }
    succeed(0);
    done(std::nullopt);
}

// Modules are kept as the text of the whole batch, so that the lines of their errors are its lines.
std::string Interpreter::moduleText(const ast::Extent& verb) const {
    std::string text = session_.frame->unit->text;
    return text.replace(verb.begin, verb.end - verb.begin, "CREATE");
}

void Interpreter::runCreateProcedure(const ast::CreateProcedure& n) {
    std::string text = moduleText(n.verbText);
    std::shared_ptr<Unit> unit;
    underName(n.name.name, [&] { unit = parseProcedure(text, session_.settings.quotedIdentifier); });
    unit->database = session_.database();
    unit->schema = n.name.schema;
    std::vector<ParameterDef> parameters;
    for (std::size_t i = 0; i < n.parameters.size(); ++i) {
        const ast::Parameter& p = n.parameters[i];
        if (!p.type.known) {
            std::vector<Message> messages = unknownType(p.name, static_cast<std::ptrdiff_t>(i) + 1, p.type.written);
            for (Message& message : messages) message.line = p.place.line;
            throw CompileError{named(SqlError(std::move(messages), Effect::Scope), n.name.name)};
        }
        parameters.push_back({p.name, p.type.type, p.output, p.defaultValue != nullptr});
    }
    try {
        compile(*unit);
    } catch (const SqlError& e) {
        throw CompileError{named(e, n.name.name)};
    }
    underName(n.name.name, [&] {
        define([&](const ExecuteContext& context) {
            executeCreateModule(context, ObjectKind::Procedure, n.verb, n.name, std::move(text), std::move(parameters));
        });
    });
}

void Interpreter::runCreateView(const ast::CreateView& n) {
    BoundQuery query;
    try {
        BindContext context = bindContext(*frame().unit, 0);
        context.schema = n.name.schema;
        query = bindSelect(context, *n.query);
    } catch (const SqlError& e) {
        throw CompileError{named(e, n.name.name)};
    }
    underName(n.name.name, [&] {
        std::vector<ColumnDef> columns = viewColumns(n, query);
        define([&](const ExecuteContext& context) {
            executeCreateModule(context, ObjectKind::View, n.verb, n.name, moduleText(n.verbText), {},
                                std::move(columns));
        });
    });
}

// This server has one kind of login that may do all; a grant to everybody says nothing new.
void Interpreter::runPermission(const ast::Permission& n) {
    if (n.verb != "GRANT") raiseUnsupported(n.verb);
    for (const std::string& principal : n.principals) {
        if (sameName(principal, "public") || sameName(principal, "dbo") || sameName(principal, "guest")) continue;
        throw SqlError(errorMessage<15151>("find", "user", principal));
    }
    if (n.object && !session_.connection->find(n.object->database, n.object->schema, n.object->name)) {
        throw SqlError(errorMessage<15151>("find", "object", n.object->name));
    }
    succeed(0);
    done(std::nullopt);
}

void Interpreter::runAlterDatabase(const ast::AlterDatabase& n) {
    if (!n.name.empty() && !session_.shared.databases.find(n.name)) {
        throw SqlError({errorMessage<5011>(n.name), errorMessage<5069>()}, Effect::Statement);
    }
    // What this server is anyway.
    static constexpr std::string_view kHolds[] = {"RECOVERY SIMPLE", "MULTI_USER",      "READ_WRITE",
                                                  "AUTO_CLOSE OFF",  "AUTO_SHRINK OFF", "ONLINE"};
    if (!n.newName.empty()) raiseUnsupported("ALTER DATABASE MODIFY NAME");
    if (!n.collation.empty()) raiseUnsupported("ALTER DATABASE COLLATE");
    for (const std::string& option : n.options) {
        if (std::find(std::begin(kHolds), std::end(kHolds), option) == std::end(kHolds)) {
            raiseUnsupported("ALTER DATABASE SET " + option);
        }
    }
    succeed(0);
    done(std::nullopt);
}

void Interpreter::runDbcc(const ast::Dbcc& n) {
    if (n.name != "CHECKIDENT") raiseUnsupported("DBCC " + n.name);
    std::vector<Typed> arguments;
    for (const auto& argument : n.arguments) arguments.push_back(evaluate(*argument));
    if (arguments.empty() || !std::holds_alternative<std::string>(arguments[0].value)) {
        throw SqlError(errorMessage<2560>(1));
    }
    bool reseed = true;
    std::optional<std::int64_t> to;
    if (arguments.size() > 1) {
        const auto* word = std::get_if<std::string>(&arguments[1].value);
        if (word && sameName(*word, "NORESEED"))
            reseed = false;
        else if (!word || !sameName(*word, "RESEED"))
            throw SqlError(errorMessage<2560>(2));
    }
    if (arguments.size() > 2) {
        to = std::get<std::int64_t>(convert(arguments[2].value, arguments[2].type, Type{.id = TypeId::BigInt}));
    }
    const bool quiet = std::find(n.options.begin(), n.options.end(), "NO_INFOMSGS") != n.options.end();
    const BindContext context = bindContext(*frame().unit, 0);
    ExecuteContext execute = executeContext(context);
    if (quiet) execute.info = [](const Message&) {};
    beginImplicitly();
    requireWritable();
    checkIdentity(execute, std::get<std::string>(arguments[0].value), reseed, to);
    if (!quiet) {
        inform(errorMessage<2528>());
    }
    succeed(0);
    done(std::nullopt);
}

void Interpreter::renameObject(const std::string& object, const std::string& newName, const std::string& type) {
    static const Unit kNone;
    beginImplicitly();
    requireWritable();
    const BindContext context = bindContext(session_.frame ? *session_.frame->unit : kNone, 0);
    executeRename(executeContext(context), object, newName, type);
    session_.definitionsChanged();
    inform(errorMessage<15477>().in("sp_rename"));
}

void Interpreter::runDefinition(const ast::Statement& s) {
    std::visit(
        ast::Overloaded{
            [&](const ast::CreateTable& n) { define([&](const ExecuteContext& c) { executeCreateTable(c, n); }); },
            [&](const ast::AlterTable& n) { define([&](const ExecuteContext& c) { executeAlterTable(c, n); }); },
            [&](const ast::Truncate& n) { define([&](const ExecuteContext& c) { executeTruncate(c, n); }); },
            [&](const ast::CreateIndex& n) { define([&](const ExecuteContext& c) { executeCreateIndex(c, n); }); },
            [&](const ast::DropIndex& n) { define([&](const ExecuteContext& c) { executeDropIndex(c, n); }); },
            [&](const ast::DropObjects& n) { define([&](const ExecuteContext& c) { executeDrop(c, n); }); },
            [&](const ast::CreateDatabase& n) {
                define([&](const ExecuteContext& c) { executeCreateDatabase(c, n); });
            },
            [&](const ast::DropDatabase& n) { define([&](const ExecuteContext& c) { executeDropDatabase(c, n); }); },
            [&](const ast::CreateSchema& n) { define([&](const ExecuteContext& c) { executeCreateSchema(c, n); }); },
            [&](const ast::DropSchema& n) { define([&](const ExecuteContext& c) { executeDropSchema(c, n); }); },
            [&](const ast::CreateProcedure& n) { runCreateProcedure(n); },
            [&](const ast::CreateView& n) { runCreateView(n); },
            [&](const ast::AlterDatabase& n) { runAlterDatabase(n); },
            [&](const ast::Permission& n) { runPermission(n); },
            [&](const ast::Dbcc& n) { runDbcc(n); },
            [&](const ast::Checkpoint&) {
                succeed(0);
                done(std::nullopt);
            },
            [&](const ast::Kill&) { raiseUnsupported("KILL"); },
            [&](const ast::Merge&) { raiseUnsupported("MERGE"); },
            [&](const ast::InsertBulk&) { raiseUnsupported("INSERT BULK inside a batch"); },
            [&](const ast::Unsupported& n) { raiseUnsupported(n.what); },
            [&](const auto&) {},
        },
        s.node);
}

}  // namespace sandbox
