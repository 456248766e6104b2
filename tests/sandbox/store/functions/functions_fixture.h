// A SQLite database with T-SQL's functions registered, and calls of them as the binder plans them. For the tests of
// functions, operators and aggregates.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/functions/function_table.h"
#include "sandbox/store/functions/sql_functions.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/storage_codec.h"

namespace sandbox {

inline constexpr Type kInt{.id = TypeId::Int};
inline constexpr Type kFloat{.id = TypeId::Float};
inline constexpr Type kMoney{.id = TypeId::Money};
inline constexpr Type kDateTime{.id = TypeId::DateTime};

constexpr Type varchar(int n) {
    return {.id = TypeId::VarChar, .length = n};
}
constexpr Type decimal(int p, int s) {
    return {.id = TypeId::Decimal, .precision = static_cast<std::uint8_t>(p), .scale = static_cast<std::uint8_t>(s)};
}

// A literal as the binder would have it: text in quotes, 0x bytes, NULL, or a number.
inline Typed literal(std::string_view text) {
    if (text == "NULL") return {};
    if (text.starts_with("N'")) return textLiteral(text.substr(2, text.size() - 3), true);
    if (text.starts_with("'")) return textLiteral(text.substr(1, text.size() - 2), false);
    if (text.starts_with("0x")) return binaryLiteral(text);
    if (text.starts_with("-")) {
        Typed number = literal(text.substr(1));
        if (auto* n = std::get_if<std::int64_t>(&number.value)) *n = -*n;
        if (auto* d = std::get_if<Decimal>(&number.value)) d->unscaled = -d->unscaled;
        if (auto* f = std::get_if<double>(&number.value)) *f = -*f;
        return number;
    }
    if (text.starts_with("$")) return moneyLiteral(text);
    return numberLiteral(text);
}

class Functions : public testing::Test {
protected:
    Functions() {
        sqlite3_open(":memory:", &db_);
        context.login = "sa";
        context.database = "hoved";
        context.databaseId = 5;
        registerFunctions(db_, context);
    }
    ~Functions() override { sqlite3_close(db_); }

    void run(const std::string& sql) {
        ASSERT_EQ(sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db_);
    }

    // The one value of a query as text; an error as "number text".
    std::string value(const std::string& sql, const Type& type) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
            return std::string("SQLite: ") + sqlite3_errmsg(db_);
        std::string out;
        try {
            const int step = sqlite3_step(statement);
            if (step != SQLITE_ROW) rethrowIfFailed(context);
            if (step != SQLITE_ROW) {
                out = std::string("SQLite: ") + sqlite3_errmsg(db_);
            } else {
                const Value v = readColumn(statement, 0, type);
                out = isNull(v) ? "NULL" : displayText(v, type, context.convert);
            }
        } catch (const SqlError& error) {
            out = std::to_string(error.messages[0].number) + " " + error.messages[0].text;
        }
        sqlite3_finalize(statement);
        return out;
    }

    // A T-SQL function of literals; date parts are given by name.
    std::string call(std::string_view name, const std::vector<std::string>& arguments) {
        try {
            const FunctionRow* row = findFunction(name);
            if (!row) throw unknownFunction(name);
            std::vector<Typed> values;
            std::vector<Type> types;
            for (std::size_t i = 0; i < arguments.size(); ++i) {
                const bool part = row->arguments[std::min(i, row->arguments.size() - 1)] == 'p';
                values.push_back(part ? Typed{kInt, std::int64_t{datePart(arguments[i]).value()}}
                                      : literal(arguments[i]));
                types.push_back(values.back().type);
            }
            const CallPlan plan = planCall(*row, types, collationCode(""));
            std::string sql = "SELECT " + std::string(plan.sqlite) + "(";
            std::string comma;
            for (std::size_t i = 0; i < values.size(); ++i) {
                sql += comma + castSql(literalSql(values[i].value, types[i]), types[i], plan.argumentTypes[i]);
                comma = ", ";
            }
            for (const std::int64_t extra : plan.extra) {
                sql += comma + std::to_string(extra);
                comma = ", ";
            }
            resultType = plan.result;
            return value(sql + ")", plan.result);
        } catch (const SqlError& error) {
            return std::to_string(error.messages[0].number) + " " + error.messages[0].text;
        }
    }

    // a op b of two literals.
    std::string operation(BinaryOp op, std::string_view a, std::string_view b) {
        const Typed x = literal(a), y = literal(b);
        const auto beside = [](const Typed& side, const Typed& other) {
            return other.type.id == TypeId::Decimal ? literalBesideDecimal(side.type, side.value) : side.type;
        };
        const Type result = binaryResultType(op, beside(x, y), beside(y, x));
        return value("SELECT " + arithmeticSql(op, literalSql(x.value, x.type), x.type, literalSql(y.value, y.type),
                                               y.type, result),
                     result);
    }

    bool like(std::string_view text, std::string_view pattern) {
        return matchesLike(text, pattern, std::nullopt, collationCode(""), false);
    }

    FunctionContext context;
    Type resultType;
    sqlite3* db_ = nullptr;
};

}  // namespace sandbox
