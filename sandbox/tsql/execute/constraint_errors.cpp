// The messages of broken constraints: which one, of which table, with which key.
#include "sandbox/tsql/execute/constraint_errors.h"

#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/execute/execute_rows.h"

namespace sandbox {

namespace {

SqlError conflict(std::string_view verb, std::string_view kind, const std::string& constraint,
                  const std::string& database, const std::string& table, const std::string& column) {
    const std::string inColumn = column.empty() ? "" : ", column '" + column + "'";
    return SqlError(errorMessage<547>(verb, kind, constraint, database, table, inColumn));
}

// Of table variables too.
std::string ownerAndName(const FoundObject& table) {
    return table.object->schema + "." + table.object->name;
}

std::string onlyOne(const std::vector<std::string>& columns) {
    return columns.size() == 1 ? columns.front() : "";
}

}  // namespace

SqlError nullNotAllowed(const FoundObject& table, std::string_view column, std::string_view verb) {
    return SqlError(errorMessage<515>(column, fullName(table), verb));
}

std::string keyText(const ObjectDef& table, const IndexDef& index, const std::vector<Value>& row) {
    std::string text;
    for (const IndexDef::Key& key : index.keys) {
        const ColumnDef* column = table.findColumn(key.column);
        const auto place = static_cast<std::size_t>(column - table.columns.data());
        text += text.empty() ? "(" : ", ";
        text += isNull(row[place]) ? "<NULL>" : displayText(row[place], column->type);
    }
    return text + ")";
}

SqlError duplicateKey(const FoundObject& table, const IndexDef& index, const std::string& key) {
    const std::string value = " The duplicate key value is " + key + ".";
    if (index.primaryKey || index.uniqueConstraint) {
        return SqlError(errorMessage<2627>(index.primaryKey ? "PRIMARY KEY" : "UNIQUE KEY", index.name,
                                           ownerAndName(table), value));
    }
    return SqlError(errorMessage<2601>(ownerAndName(table), " with unique index '" + index.name + "'", value));
}

SqlError parentMissing(const FoundObject& child, const ForeignKeyDef& key, std::string_view verb) {
    const bool same = key.parentId == child.object->id;
    return conflict(verb, same ? "FOREIGN KEY SAME TABLE" : "FOREIGN KEY", key.name, child.database->name(),
                    key.parentSchema + "." + key.parentTable, onlyOne(key.parentColumns));
}

SqlError childExists(const FoundObject& child, const ForeignKeyDef& key, std::string_view verb) {
    const bool same = key.parentId == child.object->id;
    return conflict(verb, same ? "SAME TABLE REFERENCE" : "REFERENCE", key.name, child.database->name(),
                    shortName(child), onlyOne(key.columns));
}

SqlError checkBroken(const FoundObject& table, const CheckDef& check, std::string_view verb) {
    return conflict(verb, "CHECK", check.name, table.database->name(), shortName(table), check.column);
}

SqlError identityOverflow(const Type& type) {
    return SqlError(errorMessage<8115>("IDENTITY", typeName(type)));
}

}  // namespace sandbox
