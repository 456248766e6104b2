#include "sandbox/tsql/execute/constraint_errors.h"

#include "sandbox/store/values/convert.h"
#include "sandbox/tsql/execute/execute_rows.h"

namespace sandbox {

namespace {

SqlError conflict(std::string_view verb, std::string_view kind, const std::string& constraint,
                  const std::string& database, const std::string& table, const std::string& column) {
    std::string text = "The " + std::string(verb) + " statement conflicted with the " + std::string(kind) +
                       " constraint \"" + constraint + "\". The conflict occurred in database \"" + database +
                       "\", table \"" + table + "\"";
    if (!column.empty()) text += ", column '" + column + "'";
    return SqlError(Message{.number = 547, .severity = 16, .state = 0, .text = text + "."});
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
    return SqlError(Message{.number = 515,
                            .severity = 16,
                            .state = 2,
                            .text = "Cannot insert the value NULL into column '" + std::string(column) + "', table '" +
                                    fullName(table) + "'; column does not allow nulls. " + std::string(verb) +
                                    " fails."});
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
        return SqlError(Message{
            .number = 2627,
            .severity = 14,
            .state = 1,
            .text = std::string("Violation of ") + (index.primaryKey ? "PRIMARY KEY" : "UNIQUE KEY") + " constraint '" +
                    index.name + "'. Cannot insert duplicate key in object '" + ownerAndName(table) + "'." + value});
    }
    return SqlError(Message{.number = 2601,
                            .severity = 14,
                            .state = 1,
                            .text = "Cannot insert duplicate key row in object '" + ownerAndName(table) +
                                    "' with unique index '" + index.name + "'." + value});
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
    return SqlError(
        Message{.number = 8115,
                .severity = 16,
                .state = 1,
                .text = "Arithmetic overflow error converting IDENTITY to data type " + typeName(type) + "."});
}

}  // namespace sandbox
