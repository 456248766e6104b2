#include "sandbox/tsql/bind_target.h"

namespace sandbox::binder {

std::string fullName(const ResolvedObject& table) {
    return table.database + "." + table.object->schema + "." + table.object->name;
}

bool isView(const ResolvedObject& found) {
    return found.object->kind == ObjectKind::View;
}

bool isStored(const ColumnDef& column) {
    return column.computedText.empty();
}

std::optional<ResolvedObject> resolveTarget(Binder& binder, const ast::Target& target) {
    if (!target.variable.empty()) return binder.resolveVariableTable(target.variable, target.place.line);
    std::optional<ResolvedObject> found = binder.resolve(target.name);
    if (!found) binder.reportMissing(target.name);
    return found;
}

void reportNotSupported(Binder& binder, std::string_view what, int line) {
    binder.report(binder::notSupported(what, line));
}

void reportMissingColumn(Binder& binder, const std::string& name, int line) {
    binder.fail(207, 16, 1, line, "Invalid column name '" + name + "'.");
}

void reportNamedTwice(Binder& binder, const std::string& name, int line) {
    binder.fail(264, 16, 1, line,
                "The column name '" + name +
                    "' is specified more than once in the SET clause or column list of an INSERT. A column cannot be "
                    "assigned more than one value in the same clause. Modify the clause to make sure that a column is "
                    "updated only once. If this statement updates or inserts columns into a view, column aliasing can "
                    "conceal the duplication in your code.");
}

void reportNotModifiable(Binder& binder, const std::string& name, int line) {
    binder.fail(271, 16, 1, line,
                "The column \"" + name +
                    "\" cannot be modified because it is either a computed column or is the result of a UNION "
                    "operator.");
}

}  // namespace sandbox::binder
