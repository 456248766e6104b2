// The dump of statements: one head a kind, the parts behind it.
#include <string_view>

#include "sandbox/tsql/syntax/ast_dump.h"

namespace sandbox::ast {
namespace {

constexpr std::string_view kAssign[] = {"=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^="};
constexpr std::string_view kTransactions[] = {"begin", "commit", "rollback", "save"};
constexpr std::string_view kCursors[] = {"open", "fetch", "close", "deallocate"};
constexpr std::string_view kIsolations[] = {"read-uncommitted", "read-committed", "repeatable-read", "serializable",
                                            "snapshot"};
constexpr std::string_view kObjects[] = {"table", "view", "procedure", "function", "trigger"};
constexpr std::string_view kVerbs[] = {"create", "alter", "create-or-alter"};

template <typename Enum, std::size_t N>
std::string word(const std::string_view (&names)[N], Enum value) {
    return std::string(names[static_cast<std::size_t>(value)]);
}

std::string optional(const ExprPtr& expr) {
    return expr ? " " + dump(*expr) : "";
}
std::string spaced(const std::string& text) {
    return text.empty() ? "" : " " + text;
}

std::string statements(const Statements& list) {
    std::string out;
    for (const StatementPtr& statement : list) out += " " + dump(*statement);
    return out;
}

std::string declare(const Declare& node) {
    std::string out = "(declare";
    for (const Declare::Item& item : node.items) {
        out += " (" + item.name + " ";
        out += item.table ? "table" + dumpTable(*item.table) : item.cursor ? "cursor" : dumpType(item.type);
        out += optional(item.value) + ")";
    }
    return out + ")";
}

std::string setOption(const SetOption& node) {
    return "(set " + dumpNames(node.names) + (node.on ? *node.on ? " on" : " off" : "") + optional(node.value) + ")";
}

std::string raiseError(const RaiseError& node) {
    return "(raiserror " + dump(*node.message) + optional(node.severity) + optional(node.state) +
           dumpList(node.arguments) + (node.log ? " log" : "") + (node.noWait ? " nowait" : "") +
           (node.setError ? " seterror" : "") + (node.oldForm ? " old" : "") + ")";
}

std::string createIndex(const CreateIndex& node) {
    std::string out = "(index " + node.name + (node.unique ? " unique" : "") + (node.clustered ? " clustered" : "") +
                      " " + node.table.written() + " (";
    for (const IndexColumn& column : node.columns) {
        if (&column != &node.columns.front()) out += " ";
        out += column.name + (column.descending ? "-" : "");
    }
    out += ")";
    if (!node.included.empty()) out += " (include " + dumpNames(node.included) + ")";
    if (node.where) out += " (where " + dump(*node.where) + ")";
    return out + (node.dropExisting ? " drop-existing" : "") + (node.ignoreDuplicates ? " ignore-dup" : "") + ")";
}

std::string dropIndex(const DropIndex& node) {
    std::string out = node.ifExists ? "(drop-index if-exists" : "(drop-index";
    for (const DropIndex::Item& item : node.items) out += " (" + item.table.written() + " " + item.name + ")";
    return out + ")";
}

std::string dropObjects(const DropObjects& node) {
    std::string out = "(drop-" + word(kObjects, node.kind) + (node.ifExists ? " if-exists" : "");
    for (const ObjectName& name : node.names) out += " " + name.written();
    return out + ")";
}

std::string createProcedure(const CreateProcedure& node) {
    std::string out = "(" + word(kVerbs, node.verb) + "-procedure " + node.name.written();
    for (const Parameter& parameter : node.parameters) out += " " + dumpParameter(parameter);
    return out + (node.recompile ? " recompile" : "") + (node.encrypted ? " encrypted" : "") + statements(node.body) +
           ")";
}

std::string createView(const CreateView& node) {
    std::string out = "(" + word(kVerbs, node.verb) + "-view " + node.name.written();
    if (!node.columns.empty()) out += "(" + dumpNames(node.columns) + ")";
    return out + " " + dump(*node.query) + (node.checkOption ? " check-option" : "") + ")";
}

std::string cursorCommand(const CursorCommand& node) {
    std::string out =
        "(" + word(kCursors, node.kind) + spaced(node.direction) + optional(node.distance) + " " + node.name;
    return out + (node.into.empty() ? "" : " (into " + dumpNames(node.into) + ")") + ")";
}

std::string insertBulk(const InsertBulk& node) {
    std::string out = "(insert-bulk " + node.table.written();
    for (const InsertBulk::Column& column : node.columns) {
        out += " (" + column.name + " " + dumpType(column.type);
        if (column.nullable) out += *column.nullable ? " null" : " not-null";
        out += spaced(column.collation) + ")";
    }
    return out + (node.options.empty() ? "" : " (with " + dumpNames(node.options) + ")") + ")";
}

}  // namespace

std::string dump(const Statement& statement) {
    return std::visit(
        Overloaded{
            [](const SelectStatement& n) { return dump(*n.query); },
            [](const Insert& n) { return dumpInsert(n); },
            [](const Update& n) { return dumpUpdate(n); },
            [](const Delete& n) { return dumpDelete(n); },
            [](const Merge& n) { return dumpMerge(n); },
            [](const Truncate& n) { return "(truncate " + n.table.written() + ")"; },
            [](const Declare& n) { return declare(n); },
            [](const SetVariable& n) {
                return "(set " + n.variable + " " + word(kAssign, n.op) + " " + dump(*n.value) + ")";
            },
            [](const SetOption& n) { return setOption(n); },
            [](const SetIdentityInsert& n) {
                return "(set IDENTITY_INSERT " + n.table.written() + (n.on ? " on)" : " off)");
            },
            [](const SetIsolation& n) { return "(isolation " + word(kIsolations, n.level) + ")"; },
            [](const Use& n) { return "(use " + n.database + ")"; },
            [](const Block& n) { return "(block" + statements(n.body) + ")"; },
            [](const If& n) {
                return "(if " + dump(*n.condition) + " " + dump(*n.then) +
                       (n.otherwise ? " " + dump(*n.otherwise) : "") + ")";
            },
            [](const While& n) { return "(while " + dump(*n.condition) + " " + dump(*n.body) + ")"; },
            [](const Break&) -> std::string { return "(break)"; },
            [](const Continue&) -> std::string { return "(continue)"; },
            [](const Label& n) { return "(label " + n.name + ")"; },
            [](const Goto& n) { return "(goto " + n.label + ")"; },
            [](const Return& n) { return "(return" + optional(n.value) + ")"; },
            [](const TryCatch& n) {
                return "(try" + statements(n.tryBody) + " (catch" + statements(n.catchBody) + "))";
            },
            [](const WaitFor& n) { return (n.isDelay ? "(delay " : "(time ") + dump(*n.value) + ")"; },
            [](const Print& n) { return "(print " + dump(*n.value) + ")"; },
            [](const RaiseError& n) { return raiseError(n); },
            [](const Throw& n) {
                return "(throw" + optional(n.number) + optional(n.message) + optional(n.state) + ")";
            },
            [](const Execute& n) { return dumpExecute(n); },
            [](const Transaction& n) {
                return "(" + word(kTransactions, n.kind) + spaced(n.name) + spaced(n.variable) + ")";
            },
            [](const DeclareCursor& n) {
                return "(cursor " + n.name + spaced(dumpNames(n.options)) + " " + dump(*n.query) + ")";
            },
            [](const CursorCommand& n) { return cursorCommand(n); },
            [](const CreateTable& n) { return "(table " + n.table.written() + dumpTable(n.definition) + ")"; },
            [](const AlterTable& n) { return dumpAlterTable(n); },
            [](const CreateIndex& n) { return createIndex(n); },
            [](const DropIndex& n) { return dropIndex(n); },
            [](const DropObjects& n) { return dropObjects(n); },
            [](const CreateView& n) { return createView(n); },
            [](const CreateProcedure& n) { return createProcedure(n); },
            [](const CreateDatabase& n) { return "(database " + n.name + spaced(n.collation) + ")"; },
            [](const AlterDatabase& n) {
                return "(alter-database " + n.name + spaced(n.newName) + spaced(n.collation) +
                       spaced(dumpNames(n.options)) + ")";
            },
            [](const DropDatabase& n) {
                return std::string(n.ifExists ? "(drop-database if-exists " : "(drop-database ") + dumpNames(n.names) +
                       ")";
            },
            [](const CreateSchema& n) { return "(schema " + n.name + spaced(n.owner) + ")"; },
            [](const DropSchema& n) {
                return std::string(n.ifExists ? "(drop-schema if-exists " : "(drop-schema ") + n.name + ")";
            },
            [](const Permission& n) {
                return "(" + n.verb + " " + dumpNames(n.permissions) + (n.object ? " on " + n.object->written() : "") +
                       " to " + dumpNames(n.principals) + ")";
            },
            [](const Dbcc& n) {
                return "(dbcc " + n.name + dumpList(n.arguments) + spaced(dumpNames(n.options)) + ")";
            },
            [](const Kill& n) { return "(kill " + dump(*n.spid) + ")"; },
            [](const Checkpoint&) -> std::string { return "(checkpoint)"; },
            [](const InsertBulk& n) { return insertBulk(n); },
            [](const Unsupported& n) { return "(unsupported '" + n.what + "'" + spaced(n.name) + ")"; },
        },
        statement.node);
}

std::string dump(const Batch& batch) {
    const std::string all = statements(batch.statements);
    return all.empty() ? all : all.substr(1);
}

}  // namespace sandbox::ast
