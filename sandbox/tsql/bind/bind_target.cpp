// What a statement changes: a table, or the one base table of a view or derived table.
#include "sandbox/tsql/bind/bind_target.h"

#include "sandbox/store/values/error_table.h"

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
    if (groups && view) {
        binder.fail(errorMessage<4403>(source.exposed), line);
    } else if (groups) {
        binder.fail(errorMessage<4418>(source.exposed), line);
    } else if (source.notUpdatable == NotUpdatable::No) {
        reportDerivedColumn(binder, source, line);
    } else if (view) {
        binder.fail(errorMessage<4426>(source.exposed), line);
    } else {
        binder.fail(errorMessage<4417>(source.exposed), line);
    }
    return false;
}

void reportSeveralTables(Binder& binder, const Source& source, int line) {
    if (source.object) {
        binder.fail(errorMessage<4405>(source.exposed), line);
    } else {
        binder.fail(errorMessage<4420>(source.exposed), line);
    }
}

void reportDerivedColumn(Binder& binder, const Source& source, int line) {
    if (source.object) {
        binder.fail(errorMessage<4406>(source.exposed), line);
    } else {
        binder.fail(errorMessage<4421>(source.exposed), line);
    }
}

void reportNotSupported(Binder& binder, std::string_view what, int line) {
    binder.report(binder::notSupported(what, line));
}

void reportMissingColumn(Binder& binder, const std::string& name, int line) {
    binder.fail(errorMessage<207>(name), line);
}

void reportNamedTwice(Binder& binder, const std::string& name, int line) {
    binder.fail(errorMessage<264>(name), line);
}

void reportNotModifiable(Binder& binder, const std::string& name, int line) {
    binder.fail(errorMessage<271>(name), line);
}

}  // namespace sandbox::binder
