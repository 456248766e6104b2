// Binds the arguments of a statement to its "?" marks, each with the SQL type that loses nothing. Internal.
#pragma once

#include <deque>
#include <vector>

#include "engine/db/argument.h"
#include "engine/db/odbc/api.h"

namespace torvik::db::odbc {

class ParameterSet {
public:
    // arguments must outlive the statement's execution. Raises StatementError when the driver refuses one.
    void bind(const Api& calls, const Handle& statement, const std::vector<Argument>& arguments);

private:
    struct Slot {
        SQLLEN length = 0;
        SQLCHAR bit = 0;
        SQLBIGINT integer = 0;
        double number = 0;
        QByteArray bytes;  // of a Bytes value, or a decimal's digits
        QString text;
        SQL_TIMESTAMP_STRUCT time{};
        SQL_DATE_STRUCT date{};
        SQLGUID guid{};
    };
    // How a slot is bound.
    struct Binding {
        SQLSMALLINT cType;
        SQLSMALLINT sqlType;
        SQLULEN size;
        SQLSMALLINT scale;
        SQLPOINTER data;
    };
    static Binding fill(Slot& slot, const FieldInfo& type, const Value& value);

    std::deque<Slot> slots_;  // addresses stay
};

}  // namespace torvik::db::odbc
