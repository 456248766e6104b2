#include "tests/sandbox/tsql/bind/bind_bench.h"

#include <stdexcept>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/tsql/parse/parser.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox::test {

BindBench::BindBench() {
    sqlite3_open(":memory:", &database_);
    registerFunctions(database_, functions_);
    functions_.variable = [this](std::int64_t slot) {
        const Variable& found = variables_.at(static_cast<std::size_t>(slot));
        return Typed{found.type, found.value};
    };
    sqlite3_create_function(database_, "t_set_var", 2, SQLITE_UTF8, this, &BindBench::setVariable, nullptr, nullptr);
    context.database = "shop";
    context.find = [this](std::string_view database, std::string_view schema,
                          std::string_view name) -> std::optional<ResolvedObject> {
        const bool here =
            (database.empty() || sameName(database, "shop")) && (schema.empty() || sameName(schema, "dbo"));
        const auto it = objects_.find(foldName(name));
        if (!here || it == objects_.end()) return std::nullopt;
        return ResolvedObject{it->second, "shop", "main"};
    };
    context.variable = [this](std::string_view name) -> std::optional<VariableRef> {
        const auto it = slots_.find(foldName(name));
        if (it == slots_.end()) return std::nullopt;
        return VariableRef{it->second, variables_[static_cast<std::size_t>(it->second)].type};
    };
}

BindBench::~BindBench() {
    sqlite3_close(database_);
}

void BindBench::setVariable(sqlite3_context* context, int, sqlite3_value** arguments) {
    auto& self = *static_cast<BindBench*>(sqlite3_user_data(context));
    Variable& target = self.variables_.at(static_cast<std::size_t>(sqlite3_value_int64(arguments[0])));
    target.value = readArgument(arguments[1], target.type);
    sqlite3_result_value(context, arguments[1]);
}

void BindBench::sql(const std::string& text) {
    char* message = nullptr;
    sqlite3_exec(database_, text.c_str(), nullptr, nullptr, &message);
    if (message == nullptr) return;
    const std::string told = message;
    sqlite3_free(message);
    throw std::runtime_error(told);
}

void BindBench::table(const std::string& name, const std::string& columns) {
    const ast::Batch batch = parseBatch("CREATE TABLE [" + name + "] (" + columns + ")");
    const auto& create = std::get<ast::CreateTable>(batch.statements.front()->node);
    auto object = std::make_shared<ObjectDef>();
    object->id = static_cast<int>(objects_.size()) + 1;
    object->name = name;
    object->storageName = name;
    std::string list;
    for (const ast::ColumnDefinition& each : create.definition.columns) {
        ColumnDef column;
        column.name = each.name;
        column.type = each.type.type;
        column.nullable = each.nullable.value_or(!each.identity.has_value());
        column.identity = each.identity.has_value();
        column.collation = each.collation;
        column.computedText = each.computedText;
        column.columnId = static_cast<int>(object->columns.size()) + 1;
        for (const ast::Constraint& constraint : each.constraints) {
            if (constraint.kind == ast::Constraint::Kind::Default) column.defaultText = constraint.exprText;
        }
        object->columns.push_back(column);
        if (!column.computedText.empty()) {
            object->columns.back().type = Type{.id = TypeId::Int};
            continue;
        }
        list += (list.empty() ? "\"" : ", \"") + each.name + "\" " + sqliteDeclaration(each.type.type, each.collation);
    }
    sql("CREATE TABLE \"" + name + "\" (" + list + ")");
    objects_[foldName(name)] = object;
}

void BindBench::view(const std::string& name, const std::string& text) {
    auto object = std::make_shared<ObjectDef>();
    object->id = static_cast<int>(objects_.size()) + 1;
    object->name = name;
    object->kind = ObjectKind::View;
    object->text = text;
    objects_[foldName(name)] = object;
}

void BindBench::fill(const std::string& table, const std::string& values) {
    sql("INSERT INTO \"" + table + "\" VALUES " + values);
}

void BindBench::variable(const std::string& name, const std::string& type, const std::string& value) {
    const ast::ExprPtr expression = parseExpression("CAST(" + value + " AS " + type + ")");
    const BoundQuery bound = bindScalar(context, *expression);
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database_, bound.sql.c_str(), -1, &statement, nullptr);
    sqlite3_step(statement);
    slots_[foldName(name)] = static_cast<int>(variables_.size());
    variables_.push_back({bound.columns[0].type, readColumn(statement, 0, bound.columns[0].type)});
    sqlite3_finalize(statement);
}

std::string BindBench::value(const std::string& name) {
    const Variable& found = variables_.at(static_cast<std::size_t>(slots_.at(foldName(name))));
    return isNull(found.value) ? "NULL" : displayText(found.value, found.type);
}

BoundQuery BindBench::bind(const std::string& text) {
    const ast::Batch batch = parseBatch(text);
    return bindSelect(context, *std::get<ast::SelectStatement>(batch.statements.front()->node).query);
}

BoundRows BindBench::run(const BoundQuery& query) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database_, query.sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        throw std::runtime_error(std::string(sqlite3_errmsg(database_)) + " in " + query.sql);
    }
    for (std::size_t i = 0; i < query.parameters.size(); ++i) {
        const Parameter& parameter = query.parameters[i];
        Value value = parameter.literal;
        if (parameter.kind == Parameter::Kind::Variable) {
            value = variables_.at(static_cast<std::size_t>(parameter.slot)).value;
        }
        bindValue(statement, static_cast<int>(i) + 1, parameter.type, value);
    }
    BoundRows out;
    for (const ResultColumn& column : query.columns) {
        out.columns.push_back((column.name.empty() ? "-" : column.name) + " " + typeDeclaration(column.type));
    }
    int code = 0;
    while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
        std::vector<std::string>& row = out.rows.emplace_back();
        for (std::size_t i = 0; i < query.columns.size(); ++i) {
            const Value value = readColumn(statement, static_cast<int>(i), query.columns[i].type);
            row.push_back(isNull(value) ? "NULL" : displayText(value, query.columns[i].type));
        }
    }
    const std::string message = sqlite3_errmsg(database_);
    sqlite3_finalize(statement);
    if (code != SQLITE_DONE) {
        rethrowIfFailed(functions_);
        throw std::runtime_error(message + " in " + query.sql);
    }
    return out;
}

BoundRows BindBench::select(const std::string& text) {
    return run(bind(text));
}

namespace {

std::string joined(const std::vector<std::vector<std::string>>& rows) {
    std::string out;
    for (const std::vector<std::string>& row : rows) {
        if (!out.empty()) out += "; ";
        for (std::size_t i = 0; i < row.size(); ++i) out += (i == 0 ? "" : "|") + row[i];
    }
    return out;
}

}  // namespace

std::string BindBench::rows(const std::string& text) {
    return joined(select(text).rows);
}

std::string BindBench::columns(const std::string& text) {
    std::string out;
    for (const ResultColumn& column : bind(text).columns) {
        if (!out.empty()) out += ", ";
        out += (column.name.empty() ? "-" : column.name) + " " + typeDeclaration(column.type);
    }
    return out;
}

std::string BindBench::errors(const std::string& text) {
    try {
        change(text);
    } catch (const SqlError& error) {
        std::string out;
        for (const Message& message : error.messages) {
            if (!out.empty()) out += "; ";
            out += std::to_string(message.number) + ":" + std::to_string(message.line) + " " + message.text;
        }
        return out;
    }
    return "none";
}

bool BindBench::missingObject(const std::string& text) {
    try {
        change(text);
    } catch (const MissingObject&) {
        return true;
    } catch (const SqlError&) {
        return false;
    }
    return false;
}

std::string BindBench::change(const std::string& text) {
    const ast::Batch batch = parseBatch(text);
    const ast::Statement& statement = *batch.statements.front();
    if (const auto* node = ast::as<ast::SelectStatement>(statement)) {
        return joined(run(bindSelect(context, *node->query)).rows);
    }
    if (const auto* node = ast::as<ast::Insert>(statement)) return joined(run(bindInsert(context, *node).source).rows);
    if (const auto* node = ast::as<ast::Update>(statement)) return joined(run(bindUpdate(context, *node).source).rows);
    if (const auto* node = ast::as<ast::Delete>(statement)) return joined(run(bindDelete(context, *node).source).rows);
    if (const auto* node = ast::as<ast::If>(statement)) {
        return joined(run(bindCondition(context, *node->condition)).rows);
    }
    throw std::logic_error("not a statement for the binder: " + text);
}

std::string BindBench::plan(const std::string& text) {
    const BoundQuery bound = bind(text);
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database_, ("EXPLAIN QUERY PLAN " + bound.sql).c_str(), -1, &statement, nullptr);
    std::string out;
    while (sqlite3_step(statement) == SQLITE_ROW) {
        out += reinterpret_cast<const char*>(sqlite3_column_text(statement, 3));
        out += '\n';
    }
    sqlite3_finalize(statement);
    return out;
}

}  // namespace sandbox::test
