// A small world for binder tests: tables in a SQLite database in memory, a catalogue of them, variables, and a way to
// bind a T-SQL text, run what came out and look at its rows as text.
#pragma once

#include <sqlite3.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/functions/sql_functions.h"
#include "sandbox/tsql/bind/bind.h"

namespace sandbox::test {

struct BoundRows {
    std::vector<std::string> columns;            // "name type"
    std::vector<std::vector<std::string>> rows;  // NULL as "NULL"
};

class BindBench {
public:
    BindBench();
    ~BindBench();
    BindBench(const BindBench&) = delete;
    BindBench& operator=(const BindBench&) = delete;

    // "a int NULL, b varchar(10) NOT NULL"; also IDENTITY and DEFAULT (...).
    void table(const std::string& name, const std::string& columns);
    void view(const std::string& name, const std::string& text);
    void variable(const std::string& name, const std::string& type, const std::string& value);
    void fill(const std::string& table, const std::string& values);  // "(1, 'x'), (2, NULL)": SQLite's
    void sql(const std::string& text);

    BoundRows select(const std::string& text);     // of the statement, an assignment's values too
    std::string rows(const std::string& text);     // "1|x; 2|NULL"
    std::string columns(const std::string& text);  // "a int, b varchar(10)"
    std::string errors(const std::string& text);   // "207:1 Invalid ...; ...", or "none"
    bool missingObject(const std::string& text);
    std::string change(const std::string& text);  // source rows of an INSERT, UPDATE or DELETE
    std::string value(const std::string& name);   // of a variable
    std::string plan(const std::string& text);    // EXPLAIN QUERY PLAN of a SELECT, a line each
    BoundQuery bind(const std::string& text);
    BoundRows run(const BoundQuery& query);

    BindContext context;

private:
    struct Variable {
        Type type;
        Value value;
    };
    static void setVariable(sqlite3_context* context, int count, sqlite3_value** arguments);

    sqlite3* database_ = nullptr;
    FunctionContext functions_;
    std::map<std::string, std::shared_ptr<ObjectDef>> objects_;
    std::vector<Variable> variables_;
    std::map<std::string, int> slots_;
};

}  // namespace sandbox::test
