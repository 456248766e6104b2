// Registration, and the way of errors.
#include "sandbox/store/functions/sql_functions.h"

#include <exception>
#include <stdexcept>

#include "sandbox/store/functions/sql_functions_support.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert_errors.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox {

namespace functions {

void leaveFailure(sqlite3_context* context) noexcept {
    auto& session = *static_cast<FunctionContext*>(sqlite3_user_data(context));
    try {
        throw;
    } catch (const SqlError& error) {
        session.failure = error;
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(context);
        return;
    } catch (const std::exception& error) {
        session.failure = SqlError(errorMessage<8630>(error.what()));
    }
    sqlite3_result_error(context, session.failure ? session.failure->what() : "", -1);
}

}  // namespace functions

void registerFunctions(sqlite3* database, FunctionContext& context) {
    registerCollations(database);
    for (const auto table :
         {functions::operatorFunctions(), functions::textFunctions(), functions::textSearchFunctions(),
          functions::numberFunctions(), functions::dateFunctions(), functions::sessionFunctions()}) {
        for (const functions::Registration& row : table) {
            const int flags = SQLITE_UTF8 | (row.deterministic ? SQLITE_DETERMINISTIC : 0);
            if (sqlite3_create_function_v2(database, row.name, row.arguments, flags, &context, row.implementation,
                                           nullptr, nullptr, nullptr) != SQLITE_OK) {
                throw std::runtime_error(std::string("cannot register ") + row.name);
            }
        }
    }
    functions::registerAggregates(database, context);
}

void rethrowIfFailed(FunctionContext& context) {
    if (!context.failure) return;
    const SqlError error = *std::move(context.failure);
    context.failure.reset();
    throw error;
}

}  // namespace sandbox
