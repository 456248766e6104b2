// Aggregates: sums with T-SQL's ranges, averages, deviations, and the one value of a subquery. COUNT, MIN and MAX are
// SQLite's own.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include "sandbox/store/functions/sql_functions_support.h"
#include "sandbox/store/values/convert_errors.h"
#include "sandbox/store/values/convert_number.h"
#include "sandbox/store/values/decimal.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox::functions {
namespace {

// SQLite hands out the state as zeroed memory, so all of these are plain data that begin as zeros.
template <typename State>
State* stateOf(sqlite3_context* context, bool make = true) {
    return static_cast<State*>(sqlite3_aggregate_context(context, make ? sizeof(State) : 0));
}

template <typename Body>
void guarded(sqlite3_context* context, Body body) {
    try {
        body();
    } catch (...) {
        leaveFailure(context);
    }
}

bool isNull(sqlite3_context* context, sqlite3_value* argument) {
    if (sqlite3_value_type(argument) != SQLITE_NULL) return false;
    static_cast<FunctionContext*>(sqlite3_user_data(context))->nullEliminated = true;
    return true;
}

enum class SumOf { Int, BigInt, Money, NarrowDecimal, WideDecimal };

struct ExactSum {
    std::int64_t count;
    // SQLite's memory is aligned to eight bytes only.
    std::uint64_t high;
    std::uint64_t low;

    Int128 value() const { return static_cast<Int128>((static_cast<UInt128>(high) << 64) | low); }
    void set(Int128 n) {
        high = static_cast<std::uint64_t>(static_cast<UInt128>(n) >> 64);
        low = static_cast<std::uint64_t>(n);
    }
};

Type resultOf(SumOf kind) {
    switch (kind) {
        case SumOf::Int: return {.id = TypeId::Int};
        case SumOf::BigInt: return {.id = TypeId::BigInt};
        case SumOf::Money: return {.id = TypeId::Money};
        default: return {.id = TypeId::Decimal, .precision = kMaxPrecision, .numericName = true};
    }
}

template <SumOf Kind>
Int128 summand(sqlite3_value* argument) {
    if constexpr (Kind == SumOf::WideDecimal) {
        return std::get<Decimal>(readArgument(argument, resultOf(Kind))).unscaled;
    } else {
        return sqlite3_value_int64(argument);
    }
}

template <SumOf Kind>
void checkSum(Int128 n) {
    const Type type = resultOf(Kind);
    if constexpr (Kind == SumOf::NarrowDecimal || Kind == SumOf::WideDecimal) {
        if (!fits(n, kMaxPrecision)) throw errors::expressionOverflow(type);
    } else {
        const auto [low, high] = conversion::integerRange(Kind == SumOf::Int ? TypeId::Int : TypeId::BigInt);
        if (n < low || n > high) throw errors::expressionOverflow(type);
    }
}

template <SumOf Kind>
void sumStep(sqlite3_context* context, int, sqlite3_value** arguments) {
    if (isNull(context, arguments[0])) return;
    guarded(context, [&] {
        auto* sum = stateOf<ExactSum>(context);
        if (!sum) throw std::bad_alloc();
        const Int128 n = sum->value() + summand<Kind>(arguments[0]);
        checkSum<Kind>(n);
        sum->set(n);
        ++sum->count;
    });
}

template <SumOf Kind>
void sumInverse(sqlite3_context* context, int, sqlite3_value** arguments) {
    if (sqlite3_value_type(arguments[0]) == SQLITE_NULL) return;
    if (auto* sum = stateOf<ExactSum>(context)) {
        sum->set(sum->value() - summand<Kind>(arguments[0]));
        --sum->count;
    }
}

template <SumOf Kind>
void sumValue(sqlite3_context* context) {
    const auto* sum = stateOf<ExactSum>(context, false);
    if (!sum || sum->count == 0) return sqlite3_result_null(context);
    if constexpr (Kind == SumOf::NarrowDecimal || Kind == SumOf::WideDecimal) {
        setResult(context, resultOf(Kind), Decimal{sum->value(), 0});
    } else {
        sqlite3_result_int64(context, static_cast<std::int64_t>(sum->value()));
    }
}

struct FloatSum {
    std::int64_t count;
    double sum;
    double mean;  // running mean and sum of squared distances from it (Welford)
    double distance;
};

void floatStep(sqlite3_context* context, int, sqlite3_value** arguments) {
    if (isNull(context, arguments[0])) return;
    auto* state = stateOf<FloatSum>(context);
    if (!state) return sqlite3_result_error_nomem(context);
    const double x = sqlite3_value_double(arguments[0]);
    ++state->count;
    state->sum += x;
    const double before = x - state->mean;
    state->mean += before / static_cast<double>(state->count);
    state->distance += before * (x - state->mean);
}

void floatInverse(sqlite3_context* context, int, sqlite3_value** arguments) {
    if (sqlite3_value_type(arguments[0]) == SQLITE_NULL) return;
    auto* state = stateOf<FloatSum>(context);
    if (!state) return;
    const double x = sqlite3_value_double(arguments[0]);
    if (--state->count == 0) {
        *state = {};
        return;
    }
    state->sum -= x;
    const double after = x - state->mean;
    state->mean -= after / static_cast<double>(state->count);
    state->distance -= after * (x - state->mean);
}

void floatSumValue(sqlite3_context* context) {
    const auto* state = stateOf<FloatSum>(context, false);
    if (!state || state->count == 0) return sqlite3_result_null(context);
    guarded(context, [&] {
        if (!std::isfinite(state->sum)) throw errors::expressionOverflow(Type{.id = TypeId::Float});
        sqlite3_result_double(context, state->sum);
    });
}

template <bool Population, bool Root>
void deviationValue(sqlite3_context* context) {
    const auto* state = stateOf<FloatSum>(context, false);
    const std::int64_t divisor = state ? state->count - (Population ? 0 : 1) : 0;
    if (divisor <= 0) return sqlite3_result_null(context);
    const double variance = std::fmax(0, state->distance) / static_cast<double>(divisor);
    sqlite3_result_double(context, Root ? std::sqrt(variance) : variance);
}

// t_avg(sum, count, type of sum, result type): truncated, as SQL Server divides.
void average(Call& call) {
    if (call.isNull(0) || call.integer(1) == 0) return call.null();
    const Type sumType = call.type(2), result = call.type(3);
    const std::int64_t count = call.integer(1);
    if (sumType.id == TypeId::Float) return call.number(call.real(0) / static_cast<double>(count));
    if (sumType.id != TypeId::Decimal) return call.integer64(call.integer(0) / count);
    const auto sum = std::get<Decimal>(call.value(0, sumType));
    const auto n = divide(sum.unscaled, count, result.scale - sum.scale);
    if (!n || !fits(*n, result.precision)) throw errors::expressionOverflow(result);
    call.give(result, Decimal{*n, result.scale});
}

// Bytes are kept apart from other values, so that the result takes them over instead of copying them again.
struct OneValue {
    std::int64_t count;
    sqlite3_value* value;
    void* bytes;
    std::uint64_t size;
};

void scalarStep(sqlite3_context* context, int, sqlite3_value** arguments) {
    guarded(context, [&] {
        auto* state = stateOf<OneValue>(context);
        if (!state) throw std::bad_alloc();
        if (++state->count > 1) {
            throw SqlError(errorMessage<512>());
        }
        if (sqlite3_value_type(arguments[0]) != SQLITE_BLOB) {
            state->value = sqlite3_value_dup(arguments[0]);
            return;
        }
        const void* bytes = sqlite3_value_blob(arguments[0]);
        state->size = static_cast<std::uint64_t>(sqlite3_value_bytes(arguments[0]));
        state->bytes = sqlite3_malloc64(std::max<std::uint64_t>(state->size, 1));
        if (!state->bytes) throw std::bad_alloc();
        if (state->size > 0) std::memcpy(state->bytes, bytes, state->size);
    });
}

void scalarFinal(sqlite3_context* context) {
    auto* state = stateOf<OneValue>(context, false);
    if (state && state->bytes) {
        return sqlite3_result_blob64(context, std::exchange(state->bytes, nullptr), state->size, sqlite3_free);
    }
    if (!state || !state->value) return sqlite3_result_null(context);
    sqlite3_result_value(context, state->value);
    sqlite3_value_free(state->value);
    state->value = nullptr;
}

struct Mixed {
    std::int64_t count;
    std::int64_t bits;
};

void checksumStep(sqlite3_context* context, int, sqlite3_value** arguments) {
    if (isNull(context, arguments[0])) return;
    if (auto* state = stateOf<Mixed>(context)) {
        ++state->count;
        state->bits ^= sqlite3_value_int64(arguments[0]);
    }
}

void checksumValue(sqlite3_context* context) {
    const auto* state = stateOf<Mixed>(context, false);
    state && state->count > 0 ? sqlite3_result_int64(context, state->bits) : sqlite3_result_null(context);
}

struct AggregateRow {
    const char* name;
    void (*step)(sqlite3_context*, int, sqlite3_value**);
    void (*value)(sqlite3_context*);
    void (*inverse)(sqlite3_context*, int, sqlite3_value**);
};

constexpr AggregateRow kAggregates[] = {
    {"t_sum_int", sumStep<SumOf::Int>, sumValue<SumOf::Int>, sumInverse<SumOf::Int>},
    {"t_sum_bigint", sumStep<SumOf::BigInt>, sumValue<SumOf::BigInt>, sumInverse<SumOf::BigInt>},
    {"t_sum_money", sumStep<SumOf::Money>, sumValue<SumOf::Money>, sumInverse<SumOf::Money>},
    {"t_sum_dec", sumStep<SumOf::NarrowDecimal>, sumValue<SumOf::NarrowDecimal>, sumInverse<SumOf::NarrowDecimal>},
    {"t_sum_decw", sumStep<SumOf::WideDecimal>, sumValue<SumOf::WideDecimal>, sumInverse<SumOf::WideDecimal>},
    {"t_sum_float", floatStep, floatSumValue, floatInverse},
    {"t_agg_stdev", floatStep, deviationValue<false, true>, floatInverse},
    {"t_agg_stdevp", floatStep, deviationValue<true, true>, floatInverse},
    {"t_agg_var", floatStep, deviationValue<false, false>, floatInverse},
    {"t_agg_varp", floatStep, deviationValue<true, false>, floatInverse},
    {"t_agg_checksum", checksumStep, checksumValue, checksumStep},
};

}  // namespace

void registerAggregates(sqlite3* database, FunctionContext& context) {
    for (const AggregateRow& row : kAggregates) {
        if (sqlite3_create_window_function(database, row.name, 1, SQLITE_UTF8, &context, row.step, row.value, row.value,
                                           row.inverse, nullptr) != SQLITE_OK) {
            throw std::runtime_error(std::string("cannot register ") + row.name);
        }
    }
    sqlite3_create_function_v2(database, "t_scalar", 1, SQLITE_UTF8, &context, nullptr, scalarStep, scalarFinal,
                               nullptr);
    sqlite3_create_function_v2(database, "t_avg", 4, SQLITE_UTF8 | SQLITE_DETERMINISTIC, &context, always<average>,
                               nullptr, nullptr, nullptr);
}

}  // namespace sandbox::functions
