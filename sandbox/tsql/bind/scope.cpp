// Looking up a column in the tables of a query and of those around it. Who asked tells what is missing (207, 209,
// 4104).
#include "sandbox/tsql/bind/scope.h"

#include <algorithm>

#include "sandbox/store/values/collation.h"

namespace sandbox::binder {
namespace {

// Whether a table named so in a reference is this source. A source under an alias answers to the alias alone.
bool answersTo(const Source& source, const ast::ObjectName& name, std::string_view currentDatabase) {
    if (!sameName(source.exposed, name.name)) return false;
    if (name.schema.empty() && name.database.empty()) return true;
    if (source.hasAlias) return false;
    const std::string& schema = source.object ? source.object->object->schema : source.name.schema;
    if (!name.schema.empty() && !sameName(name.schema, schema.empty() ? "dbo" : schema)) return false;
    if (name.database.empty()) return true;
    const std::string_view database = source.name.database.empty() ? currentDatabase : source.name.database;
    return sameName(name.database, database);
}

}  // namespace

std::string quoted(std::string_view name) {
    std::string out = "\"";
    for (const char c : name) {
        if (c == '"') out += '"';
        out += c;
    }
    return out + '"';
}

const SourceColumn* Source::find(std::string_view columnName) const {
    const auto it = std::find_if(columns.begin(), columns.end(),
                                 [&](const SourceColumn& column) { return sameName(column.name, columnName); });
    return it == columns.end() ? nullptr : &*it;
}

std::string Source::display(std::string_view columnName) const {
    std::string table = name.name.empty() ? exposed : name.written();
    return table + "." + std::string(columnName);
}

Source* findSource(Scope& scope, const ast::ObjectName& name, std::string_view currentDatabase) {
    for (Scope* at = &scope; at != nullptr; at = at->parent) {
        for (Source* source : at->sources) {
            if (answersTo(*source, name, currentDatabase)) return source;
        }
    }
    return nullptr;
}

Lookup findColumn(Scope& scope, const ast::ColumnRef& reference, std::string_view currentDatabase) {
    Lookup found;
    if (reference.table) {
        for (Scope* at = &scope; at != nullptr; at = at->parent) {
            for (Source* source : at->sources) {
                if (!answersTo(*source, *reference.table, currentDatabase)) continue;
                found.scope = at;
                found.source = source;
                found.column = source->find(reference.name);
                if (found.column != nullptr) {
                    found.result = Lookup::Result::Found;
                } else {
                    found.result = source->missing ? Lookup::Result::Uncertain : Lookup::Result::Missing;
                }
                return found;
            }
        }
        found.result = Lookup::Result::Unbound;
        return found;
    }
    bool uncertain = false;
    for (Scope* at = &scope; at != nullptr; at = at->parent) {
        for (Source* source : at->sources) {
            uncertain = uncertain || source->missing;
            const SourceColumn* column = source->find(reference.name);
            if (column == nullptr) continue;
            if (found.column != nullptr) {
                found.result = Lookup::Result::Ambiguous;
                return found;
            }
            found = {Lookup::Result::Found, column, source, at};
        }
        if (found.column != nullptr) return found;
    }
    found.result = uncertain ? Lookup::Result::Uncertain : Lookup::Result::Missing;
    return found;
}

}  // namespace sandbox::binder
