#include "sandbox/tsql/bind/bind_target.h"

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

bool requireUpdatable(Binder& binder, const Source& source, int line) {
    if (source.notUpdatable == NotUpdatable::No && !source.bases.empty()) return true;
    const bool groups = source.notUpdatable == NotUpdatable::Groups;
    const bool view = source.object.has_value();
    const std::string start = view ? "" : "Derived table '" + source.exposed + "' is not updatable because ";
    constexpr std::string_view kGroups =
        "it contains aggregates, or a DISTINCT or GROUP BY clause, or PIVOT or UNPIVOT operator.";
    if (groups && view) {
        binder.fail(4403, 16, 1, line,
                    "Cannot update the view or function '" + source.exposed + "' because " + std::string(kGroups));
    } else if (groups) {
        binder.fail(4418, 16, 1, line, start + std::string(kGroups));
    } else if (source.notUpdatable == NotUpdatable::No) {
        reportDerivedColumn(binder, source, line);
    } else if (view) {
        binder.fail(4426, 16, 1, line,
                    "View '" + source.exposed + "' is not updatable because the definition contains a UNION operator.");
    } else {
        binder.fail(4417, 16, 1, line, start + "the definition contains a UNION operator.");
    }
    return false;
}

void reportSeveralTables(Binder& binder, const Source& source, int line) {
    if (source.object) {
        binder.fail(4405, 16, 1, line,
                    "View or function '" + source.exposed +
                        "' is not updatable because the modification affects multiple base tables.");
    } else {
        binder.fail(4420, 16, 1, line,
                    "Derived table '" + source.exposed +
                        "' is not updatable because the modification affects multiple base tables.");
    }
}

void reportDerivedColumn(Binder& binder, const Source& source, int line) {
    if (source.object) {
        binder.fail(4406, 16, 1, line,
                    "Update or insert of view or function '" + source.exposed +
                        "' failed because it contains a derived or constant field.");
    } else {
        binder.fail(4421, 16, 1, line,
                    "Derived table '" + source.exposed +
                        "' is not updatable because a column of the derived table is derived or constant.");
    }
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
