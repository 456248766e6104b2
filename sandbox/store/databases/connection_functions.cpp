// Connection's answers to OBJECT_ID, OBJECTPROPERTY, COL_LENGTH, DB_ID and their kin: the hooks of FunctionContext.
#include <algorithm>
#include <array>

#include "sandbox/store/databases/connection.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/views/system_view_rows.h"

namespace sandbox {

namespace {

struct NameParts {
    std::string database, schema, name;
};

// "db.schema.name" with [brackets] and "quotes"; parts left out are empty. None where it has more than three parts.
std::optional<NameParts> splitName(std::string_view text) {
    std::vector<std::string> parts{""};
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '.') {
            parts.emplace_back();
        } else if (c == '[' || c == '"') {
            const char close = c == '[' ? ']' : '"';
            for (++i; i < text.size(); ++i) {
                if (text[i] != close) {
                    parts.back() += text[i];
                } else if (i + 1 < text.size() && text[i + 1] == close) {
                    parts.back() += text[i++];
                } else {
                    break;
                }
            }
        } else if (c != ' ' || !parts.back().empty()) {
            parts.back() += c;
        }
    }
    for (std::string& part : parts) part.erase(part.find_last_not_of(' ') + 1);
    if (parts.size() > 3) return std::nullopt;
    parts.insert(parts.begin(), 3 - parts.size(), "");
    return NameParts{parts[0], parts[1], parts[2]};
}

bool isKind(const views::ObjectRow& row, std::string_view kind) {
    std::string wanted(kind);
    wanted.erase(wanted.find_last_not_of(' ') + 1);
    const std::string_view type = row.type.substr(0, row.type.find(' '));
    return wanted.empty() || sameName(wanted, type);
}

int yes(bool value) {
    return value ? 1 : 0;
}

bool anyIndex(const ObjectDef& table, bool (*is)(const IndexDef&)) {
    return std::any_of(table.indexes.begin(), table.indexes.end(), is);
}

// A property of OBJECTPROPERTY and how an object answers it. onTables: NULL for everything else.
struct ObjectProperty {
    std::string_view name;
    bool onTables;
    int (*get)(const views::ObjectRow&);
};

constexpr ObjectProperty kObjectProperties[] = {
    {"IsTable", false, [](const views::ObjectRow& o) { return yes(o.type == "U "); }},
    {"IsUserTable", false, [](const views::ObjectRow& o) { return yes(o.type == "U "); }},
    {"IsSystemTable", false, [](const views::ObjectRow&) { return 0; }},
    {"IsMSShipped", false, [](const views::ObjectRow&) { return 0; }},
    {"IsView", false, [](const views::ObjectRow& o) { return yes(o.type == "V "); }},
    {"IsProcedure", false, [](const views::ObjectRow& o) { return yes(o.type == "P "); }},
    {"IsScalarFunction", false, [](const views::ObjectRow& o) { return yes(o.type == "FN"); }},
    {"IsTrigger", false, [](const views::ObjectRow&) { return 0; }},
    {"IsConstraint", false, [](const views::ObjectRow& o) { return yes(o.parent != 0); }},
    {"IsPrimaryKey", false, [](const views::ObjectRow& o) { return yes(o.type == "PK"); }},
    {"IsUniqueCnst", false, [](const views::ObjectRow& o) { return yes(o.type == "UQ"); }},
    {"IsForeignKey", false, [](const views::ObjectRow& o) { return yes(o.type == "F "); }},
    {"IsCheckCnst", false, [](const views::ObjectRow& o) { return yes(o.type == "C "); }},
    {"IsDefaultCnst", false, [](const views::ObjectRow& o) { return yes(o.type == "D "); }},
    {"IsQuotedIdentOn", false, [](const views::ObjectRow&) { return 1; }},
    {"IsAnsiNullsOn", false, [](const views::ObjectRow&) { return 1; }},
    {"OwnerId", false, [](const views::ObjectRow&) { return 1; }},
    {"SchemaId", false, [](const views::ObjectRow&) { return 1; }},
    {"TableHasPrimaryKey", true,
     [](const views::ObjectRow& o) {
         return yes(anyIndex(*o.object, [](const IndexDef& i) { return i.primaryKey; }));
     }},
    {"TableHasUniqueCnst", true,
     [](const views::ObjectRow& o) {
         return yes(anyIndex(*o.object, [](const IndexDef& i) { return i.uniqueConstraint; }));
     }},
    {"TableHasIndex", true, [](const views::ObjectRow& o) { return yes(!o.object->indexes.empty()); }},
    {"TableHasClustIndex", true,
     [](const views::ObjectRow& o) { return yes(anyIndex(*o.object, [](const IndexDef& i) { return i.clustered; })); }},
    {"TableHasNonclustIndex", true,
     [](const views::ObjectRow& o) {
         return yes(anyIndex(*o.object, [](const IndexDef& i) { return !i.clustered; }));
     }},
    {"TableHasIdentity", true,
     [](const views::ObjectRow& o) {
         return yes(std::any_of(o.object->columns.begin(), o.object->columns.end(),
                                [](const ColumnDef& c) { return c.identity; }));
     }},
    {"TableHasForeignKey", true, [](const views::ObjectRow& o) { return yes(!o.object->foreignKeys.empty()); }},
    {"TableHasCheckCnst", true, [](const views::ObjectRow& o) { return yes(!o.object->checks.empty()); }},
    {"TableHasDefaultCnst", true,
     [](const views::ObjectRow& o) {
         return yes(std::any_of(o.object->columns.begin(), o.object->columns.end(),
                                [](const ColumnDef& c) { return !c.defaultName.empty(); }));
     }},
};

struct ColumnProperty {
    std::string_view name;
    int (*get)(const ColumnDef&);
};

constexpr ColumnProperty kColumnProperties[] = {
    {"AllowsNull", [](const ColumnDef& c) { return yes(c.nullable); }},
    {"IsIdentity", [](const ColumnDef& c) { return yes(c.identity); }},
    {"IsComputed", [](const ColumnDef& c) { return yes(!c.computedText.empty()); }},
    {"ColumnId", [](const ColumnDef& c) { return c.columnId; }},
    {"Precision",
     [](const ColumnDef& c) {
         return isCharacter(c.type.id) || isBinary(c.type.id) ? c.type.length : views::typeFacts(c.type).precision;
     }},
    {"Scale", [](const ColumnDef& c) { return views::typeFacts(c.type).scale; }},
};

}  // namespace

std::optional<FoundObject> Connection::findByText(std::string_view text) {
    const std::optional<NameParts> parts = splitName(text);
    if (!parts) return std::nullopt;
    return find(parts->database, parts->schema, parts->name);
}

void Connection::setCatalogHooks() {
    functions_.objectId = [this](std::string_view name, std::string_view kind) -> std::optional<std::int32_t> {
        if (const auto found = findByText(name)) {
            // Temporary tables are tempdb's: another database's name for one means nothing.
            const std::optional<NameParts> written = splitName(name);
            const bool named = written && !written->database.empty();
            const bool inTempdb = sameName(named ? written->database : current_->name(), "tempdb");
            if (found->object->name.starts_with('#') && !inTempdb) return std::nullopt;
            std::string wanted(kind);
            wanted.erase(wanted.find_last_not_of(' ') + 1);
            const bool view = found->object->system || found->object->kind == ObjectKind::View;
            const std::string_view type = view                                           ? "V"
                                          : found->object->kind == ObjectKind::Table     ? "U"
                                          : found->object->kind == ObjectKind::Procedure ? "P"
                                                                                         : "FN";
            if (wanted.empty() || sameName(wanted, type)) return found->object->id;
            return std::nullopt;
        }
        const auto parts = splitName(name);
        const auto database = parts ? attach(parts->database) : nullptr;
        if (!database) return std::nullopt;
        for (const views::ObjectRow& row : views::allObjects(*this, *database)) {
            if (row.parent != 0 && sameName(row.name, parts->name) && isKind(row, kind)) return row.id;
        }
        return std::nullopt;
    };
    functions_.objectName = [this](std::int32_t id, std::optional<std::int32_t> in) -> std::optional<std::string> {
        const auto database = in ? databases_.findById(*in) : current_;
        if (!database) return std::nullopt;
        const auto row = views::objectById(*this, *database, id);
        return row ? std::optional<std::string>(row->name) : std::nullopt;
    };
    functions_.objectDefinition = [this](std::int32_t id) -> std::optional<std::string> {
        const auto object = catalog(*current_)->findById(id);
        return object && !object->text.empty() ? std::optional(object->text) : std::nullopt;
    };
    functions_.objectProperty = [this](std::int32_t id, std::string_view property) -> std::optional<std::int32_t> {
        const auto row = views::objectById(*this, *current_, id);
        if (!row) return std::nullopt;
        for (const ObjectProperty& p : kObjectProperties) {
            if (!sameName(p.name, property)) continue;
            return p.onTables && row->type != "U " ? std::nullopt : std::optional<std::int32_t>(p.get(*row));
        }
        return std::nullopt;
    };
    functions_.columnLength = [this](std::string_view table, std::string_view column) -> std::optional<std::int32_t> {
        const auto found = findByText(table);
        const ColumnDef* def = found ? found->object->findColumn(column) : nullptr;
        return def == nullptr ? std::nullopt : std::optional<std::int32_t>(views::typeFacts(def->type).bytes);
    };
    functions_.columnName = [this](std::int32_t table, std::int32_t column) -> std::optional<std::string> {
        const auto object = catalog(*current_)->findById(table);
        if (!object) return std::nullopt;
        for (const ColumnDef& def : object->columns) {
            if (def.columnId == column) return def.name;
        }
        return std::nullopt;
    };
    functions_.columnProperty = [this](std::int32_t table, std::string_view column,
                                       std::string_view property) -> std::optional<std::int32_t> {
        const auto object = catalog(*current_)->findById(table);
        const ColumnDef* def = object ? object->findColumn(column) : nullptr;
        if (def == nullptr) return std::nullopt;
        for (const ColumnProperty& p : kColumnProperties) {
            if (sameName(p.name, property)) return p.get(*def);
        }
        return std::nullopt;
    };
    functions_.databaseIdOf = [this](std::string_view name) -> std::optional<std::int32_t> {
        const auto database = databases_.find(name);
        return database ? std::optional<std::int32_t>(database->id()) : std::nullopt;
    };
    functions_.databaseNameOf = [this](std::int32_t id) -> std::optional<std::string> {
        const auto database = databases_.findById(id);
        return database ? std::optional(database->name()) : std::nullopt;
    };
    functions_.databaseProperty = [this](std::string_view name, std::string_view property) -> Value {
        const auto database = databases_.find(name);
        if (!database) return {};
        if (sameName(property, "Collation")) return database->facts().collation;
        if (sameName(property, "Status")) return std::string("ONLINE");
        if (sameName(property, "Updateability")) return std::string("READ_WRITE");
        if (sameName(property, "UserAccess")) return std::string("MULTI_USER");
        if (sameName(property, "Recovery")) return std::string("SIMPLE");
        if (sameName(property, "Version")) return std::int64_t{852};
        return {};
    };
    const auto identity = [this](std::string_view table, auto read) -> std::optional<Decimal> {
        const auto found = findByText(table);
        if (!found) return std::nullopt;
        for (const ColumnDef& column : found->object->columns) {
            if (column.identity) return Decimal{read(*found, column), 0};
        }
        return std::nullopt;
    };
    functions_.identCurrent = [identity](std::string_view table) {
        return identity(table, [](const FoundObject& found, const ColumnDef& column) {
            return found.database->lastIdentity(found.object->id).value_or(column.identitySeed);
        });
    };
    functions_.identSeed = [identity](std::string_view table) {
        return identity(table, [](const FoundObject&, const ColumnDef& column) { return column.identitySeed; });
    };
    functions_.identIncrement = [identity](std::string_view table) {
        return identity(table, [](const FoundObject&, const ColumnDef& column) { return column.identityIncrement; });
    };
    functions_.collation = databases_.collation();
}

}  // namespace sandbox
