// The dump of tables, constraints, indexes, parameters and calls.
#include <string_view>

#include "sandbox/tsql/syntax/ast_dump.h"

namespace sandbox::ast {
namespace {

constexpr std::string_view kConstraints[] = {"primary", "unique", "foreign", "check", "default"};
constexpr std::string_view kActions[] = {"", "cascade", "set-null", "set-default"};

std::string indexColumns(const std::vector<IndexColumn>& columns) {
    std::string out;
    for (const IndexColumn& column : columns) {
        out += (out.empty() ? "" : " ") + column.name + (column.descending ? "-" : "");
    }
    return "(" + out + ")";
}

std::string clustered(std::optional<bool> value) {
    return !value ? "" : *value ? " clustered" : " nonclustered";
}

std::string action(const char* when, ReferenceAction value) {
    if (value == ReferenceAction::NoAction) return "";
    return " " + std::string(when) + "-" + std::string(kActions[static_cast<std::size_t>(value)]);
}

std::string constraint(const Constraint& node) {
    std::string out = "(" + std::string(kConstraints[static_cast<std::size_t>(node.kind)]);
    if (!node.name.empty()) out += " " + node.name;
    out += clustered(node.clustered);
    if (!node.columns.empty()) out += " " + indexColumns(node.columns);
    if (node.kind == Constraint::Kind::ForeignKey) {
        out += " " + node.parent.written() + "(" + dumpNames(node.parentColumns) + ")";
        out += action("delete", node.onDelete) + action("update", node.onUpdate);
    }
    if (node.expr) out += " " + dump(*node.expr);
    if (!node.forColumn.empty()) out += " for " + node.forColumn;
    if (node.withValues) out += " with-values";
    return out + ")";
}

std::string column(const ColumnDefinition& node) {
    std::string out = "(" + node.name + " " + (node.computed ? "as " + dump(*node.computed) : dumpType(node.type));
    if (node.persisted) out += " persisted";
    if (node.nullable) out += *node.nullable ? " null" : " not-null";
    if (node.identity) {
        out +=
            " identity(" + std::to_string(node.identity->seed) + "," + std::to_string(node.identity->increment) + ")";
    }
    if (node.rowGuid) out += " rowguid";
    if (!node.collation.empty()) out += " collate " + node.collation;
    for (const Constraint& part : node.constraints) out += " " + constraint(part);
    return out + ")";
}

}  // namespace

std::string dumpTable(const TableDefinition& definition) {
    std::string out;
    for (const ColumnDefinition& part : definition.columns) out += " " + column(part);
    for (const Constraint& part : definition.constraints) out += " " + constraint(part);
    for (const TableDefinition::InlineIndex& part : definition.indexes) {
        out += std::string(" (index ") + part.name + (part.unique ? " unique" : "") + clustered(part.clustered) + " " +
               indexColumns(part.columns) + ")";
    }
    return out;
}

std::string dumpAlterTable(const AlterTable& node) {
    return "(alter-table " + node.table.written() +
           std::visit(Overloaded{
                          [](const AddToTable& n) {
                              return " add" + std::string(n.withNoCheck ? "-nocheck" : "") + dumpTable(n.definition);
                          },
                          [](const AlterColumn& n) { return " alter " + column(n.column); },
                          [](const DropFromTable& n) {
                              std::string out = " drop";
                              for (const DropFromTable::Item& item : n.items) {
                                  out += std::string(item.isColumn ? " (column " : " (constraint ") + item.name +
                                         (item.ifExists ? " if-exists)" : ")");
                              }
                              return out;
                          },
                          [](const CheckConstraints& n) {
                              return std::string(n.withCheck ? " with-check" : "") +
                                     (n.enable ? " check " : " nocheck ") + (n.all ? "all" : dumpNames(n.names));
                          },
                          [](const SwitchTrigger& n) -> std::string {
                              return n.enable ? " enable-trigger" : " disable-trigger";
                          },
                      },
                      node.action) +
           ")";
}

std::string dumpParameter(const Parameter& node) {
    return "(" + node.name + " " + dumpType(node.type) + (node.defaultValue ? " " + dump(*node.defaultValue) : "") +
           (node.output ? " output)" : ")");
}

std::string dumpExecute(const Execute& node) {
    std::string out = "(exec";
    if (!node.returnVariable.empty()) out += " " + node.returnVariable + "=";
    if (!node.text.empty()) return out + " text" + dumpList(node.text) + ")";
    out += " " + (node.procedure ? node.procedure->written() : node.procedureVariable);
    for (const ExecArgument& argument : node.arguments) {
        out += " " + (argument.name.empty() ? "" : argument.name + "=") + dump(*argument.value) +
               (argument.output ? "!" : "");
    }
    return out + ")";
}

}  // namespace sandbox::ast
