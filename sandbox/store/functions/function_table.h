// The T-SQL functions and aggregates as one table of rows, from which the binder checks and types calls, and the text
// of SQLite that carries one out. The functions themselves are in sql_functions*.cpp and sql_aggregates.cpp.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/values/error.h"
#include "sandbox/store/values/type.h"

namespace sandbox {

// How the binder writes a call.
enum class CallForm : std::uint8_t {
    Call,    // planCall() tells everything
    NullIf,  // CASE WHEN a = b THEN NULL ELSE a END; type of the first argument
    Iif,     // CASE WHEN condition THEN a ELSE b END; the first argument is a condition
};

// One function. `arguments` has a letter for each argument, the last one repeated for more:
//   t  text: character types as they are, others become varchar     x  text or binary, as it is
//   o  the same, and nothing else becomes text
//   i  int      b  bigint      f  float      a  any, as it is        e  numbers as they are, text becomes float
//   d  date or time as it is, text and numbers become datetime       p  a date part's name (datePart(), as an integer)
//   n  nvarchar                                                     s  the result's type
// `extra` has a letter for each literal behind them: c collation, b a binary collation, r result type, 1 2 3 the type
// of that argument, A the types of all arguments in turn.
struct FunctionRow {
    std::string_view name;  // as T-SQL writes it, upper case
    int minArguments;
    int maxArguments;  // -1: any number
    std::string_view arguments;
    Type (*result)(std::span<const Type> arguments);
    std::string_view sqlite;      // the SQLite function
    std::string_view extra = {};  // literals that follow the arguments, see below
    bool deterministic = true;    // false: another value for each row or each call
    CallForm form = CallForm::Call;
};

// nullptr when there is none: the binder raises unknownFunction().
[[nodiscard]] const FunctionRow* findFunction(std::string_view name);
[[nodiscard]] std::span<const FunctionRow> functionTable();

// A checked call: cast argument i to argumentTypes[i] (a datepart argument excepted: pass its number), append `extra`
// as integer literals, and the SQLite call gives a value of type `result`.
struct CallPlan {
    std::string_view sqlite;
    std::vector<Type> argumentTypes;
    std::vector<std::int64_t> extra;
    Type result;
    bool deterministic = true;
};
// collation: code (collationCode()) under which text arguments compare. Raises 174, 189, 8116, 206 or 257.
[[nodiscard]] CallPlan planCall(const FunctionRow& row, std::span<const Type> arguments, int collation);

// The number of a date part from any of its names ("month", "mm", "m"); none when it is none (error 155 is
// unknownDatePart()).
[[nodiscard]] std::optional<int> datePart(std::string_view name);

// An aggregate's result type and the SQLite text for it. DISTINCT goes inside, before the argument.
struct AggregatePlan {
    Type argument;  // cast the argument to this first
    Type result;
    // With "%" for the argument, DISTINCT included: "t_sum_int(%)", "t_avg(t_sum_int(%), count(%), 1028, 1028)". Text
    // arguments of MIN and MAX keep their COLLATE inside. STRING_AGG has a second hole "%2".
    std::string sqlite;
};
[[nodiscard]] bool isAggregate(std::string_view name);
// Raises 8117 for a type that the aggregate does not take. starred: COUNT(*).
[[nodiscard]] AggregatePlan planAggregate(std::string_view name, const Type& argument, bool starred = false);

// Texts for the binder.
[[nodiscard]] SqlError unknownFunction(std::string_view name);                             // 195
[[nodiscard]] SqlError wrongArgumentCount(const FunctionRow& row);                         // 174, 189
[[nodiscard]] SqlError unknownDatePart(std::string_view name, std::string_view function);  // 155

}  // namespace sandbox
