// What the functions registered in SQLite share: arguments and results of one call, and the way of an error to the
// session. Internal to sql_functions*.cpp and sql_aggregates.cpp.
#pragma once

#include <sqlite3.h>

#include <span>
#include <string>
#include <string_view>

#include "sandbox/store/functions/sql_functions.h"
#include "sandbox/store/values/storage_codec.h"

namespace sandbox::functions {

// One call of a function: arguments by place, the session, the result.
class Call {
public:
    Call(sqlite3_context* context, int count, sqlite3_value** arguments)
        : context_(context), count_(count), arguments_(arguments) {}

    [[nodiscard]] int count() const { return count_; }
    [[nodiscard]] FunctionContext& session() const {
        return *static_cast<FunctionContext*>(sqlite3_user_data(context_));
    }
    [[nodiscard]] sqlite3_context* context() const { return context_; }
    [[nodiscard]] sqlite3_value* raw(int i) const { return arguments_[i]; }

    [[nodiscard]] bool isNull(int i) const { return sqlite3_value_type(arguments_[i]) == SQLITE_NULL; }
    [[nodiscard]] std::int64_t integer(int i) const { return sqlite3_value_int64(arguments_[i]); }
    [[nodiscard]] double real(int i) const { return sqlite3_value_double(arguments_[i]); }
    [[nodiscard]] Type type(int i) const { return decodeType(integer(i)); }
    [[nodiscard]] Value value(int i, const Type& type) const { return readArgument(arguments_[i], type); }
    // Valid until the call returns.
    [[nodiscard]] std::string_view text(int i) const {
        const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(arguments_[i]));
        return {text ? text : "", static_cast<std::size_t>(sqlite3_value_bytes(arguments_[i]))};
    }
    [[nodiscard]] bool isBlob(int i) const { return sqlite3_value_type(arguments_[i]) == SQLITE_BLOB; }
    [[nodiscard]] Bytes bytes(int i) const {
        const auto* data = static_cast<const std::uint8_t*>(sqlite3_value_blob(arguments_[i]));
        return data ? Bytes(data, data + sqlite3_value_bytes(arguments_[i])) : Bytes{};
    }

    void null() { sqlite3_result_null(context_); }
    void integer64(std::int64_t n) { sqlite3_result_int64(context_, n); }
    void number(double d) { sqlite3_result_double(context_, d); }
    void string(std::string_view text) {
        sqlite3_result_text64(context_, text.data() ? text.data() : "", text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    }
    void blob(const Bytes& bytes) { setResult(context_, Type{.id = TypeId::VarBinary}, bytes); }
    void give(const Type& type, const Value& value) { setResult(context_, type, value); }
    void same(int i) { sqlite3_result_value(context_, arguments_[i]); }

private:
    sqlite3_context* context_;
    int count_;
    sqlite3_value** arguments_;
};

// Keeps what went wrong for the session and makes SQLite's step fail. To be called inside a catch block.
void leaveFailure(sqlite3_context* context) noexcept;

using Implementation = void (*)(sqlite3_context*, int, sqlite3_value**);

template <void (*Function)(Call&)>
void always(sqlite3_context* context, int count, sqlite3_value** arguments) {
    try {
        Call call(context, count, arguments);
        Function(call);
    } catch (...) {
        leaveFailure(context);
    }
}

// NULL for any argument that is NULL.
template <void (*Function)(Call&)>
void strict(sqlite3_context* context, int count, sqlite3_value** arguments) {
    for (int i = 0; i < count; ++i) {
        if (sqlite3_value_type(arguments[i]) == SQLITE_NULL) {
            sqlite3_result_null(context);
            return;
        }
    }
    always<Function>(context, count, arguments);
}

struct Registration {
    const char* name;
    int arguments;  // -1: any number
    Implementation implementation;
    bool deterministic = true;
};

// The functions of each file.
[[nodiscard]] std::span<const Registration> operatorFunctions();
[[nodiscard]] std::span<const Registration> textFunctions();
[[nodiscard]] std::span<const Registration> textSearchFunctions();
[[nodiscard]] std::span<const Registration> numberFunctions();
[[nodiscard]] std::span<const Registration> dateFunctions();
[[nodiscard]] std::span<const Registration> sessionFunctions();

void registerAggregates(sqlite3* database, FunctionContext& context);

}  // namespace sandbox::functions
