// The one table whose rows a query shows, and how a row of it is found again: what makes a query's rows editable.
// Internal; used by Query.
#pragma once

#include <QString>
#include <vector>

#include "engine/db/argument.h"

namespace torvik::db {

class Connection;

// The table of "SELECT ... FROM table ...", as written. Raises UsageError when the text selects from several tables, or
// from something else than a table.
[[nodiscard]] QString tableOfSelect(const QString& text);

class EditTarget {
public:
    // Asks the server for the table's key: its primary key, else its first unique index, whose columns are all among
    // columns. Without one a row is found by all its values but the long ones.
    EditTarget(Connection& connection, const QString& selectText, const std::vector<FieldInfo>& columns, int timeout);

    [[nodiscard]] const QString& tableName() const { return table_; }
    [[nodiscard]] const std::vector<int>& key() const { return key_; }

    // Each raises StatementError when not exactly one row was met; nothing is changed then.
    void update(Connection& connection, const std::vector<Value>& before, const std::vector<Value>& after,
                const std::vector<bool>& set, int timeout) const;
    void erase(Connection& connection, const std::vector<Value>& before, int timeout) const;
    // Fills in the identity column that the server chose.
    void insert(Connection& connection, std::vector<Value>& values, const std::vector<bool>& set, int timeout) const;

private:
    [[nodiscard]] QString where(const std::vector<Value>& before, std::vector<Argument>& arguments) const;
    void changeOne(Connection& connection, const QString& statement, std::vector<Argument> arguments,
                   int timeout) const;

    QString table_;
    std::vector<FieldInfo> columns_;
    std::vector<int> key_;
    bool unique_ = false;
};

}  // namespace torvik::db
