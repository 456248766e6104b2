// Conversions and operators: t_cast, t_store, arithmetic, concatenation.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <stdexcept>

#include "sandbox/store/functions/sql_functions_support.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert_errors.h"
#include "sandbox/store/values/convert_number.h"
#include "sandbox/store/values/convert_text.h"
#include "sandbox/store/values/datetime.h"
#include "sandbox/store/values/decimal.h"
#include "sandbox/store/values/text.h"

namespace sandbox::functions {
namespace {

void cast(Call& call) {
    const Type from = call.type(1), to = call.type(2);
    const int style = call.count() > 3 ? static_cast<int>(call.integer(3)) : 0;
    call.give(to, convert(call.value(0, from), from, to, call.session().convert, style));
}

void tryCast(Call& call) {
    try {
        cast(call);
    } catch (const SqlError& error) {
        if (error.messages.front().number == 529) throw;  // never allowed, whatever the value
        call.null();
    }
}

void store(Call& call) {
    const Type from = call.type(1), to = call.type(2);
    call.give(to, convertForStore(call.value(0, from), from, to, call.session().convert));
}

// Integers: `result` tells the range.
template <BinaryOp Op>
void integerArithmetic(Call& call) {
    const std::int64_t a = call.integer(0), b = call.integer(1);
    const auto id = static_cast<TypeId>(call.integer(2) & 0xFF);
    std::int64_t n = 0;
    bool overflow = false;
    switch (Op) {
        case BinaryOp::Add: overflow = __builtin_add_overflow(a, b, &n); break;
        case BinaryOp::Subtract: overflow = __builtin_sub_overflow(a, b, &n); break;
        case BinaryOp::Multiply: overflow = __builtin_mul_overflow(a, b, &n); break;
        default:
            if (b == 0) throw errors::divideByZero();
            if (b == -1) {  // the one quotient that overflows
                overflow = Op == BinaryOp::Divide && __builtin_sub_overflow(std::int64_t{0}, a, &n);
            } else {
                n = Op == BinaryOp::Divide ? a / b : a % b;
            }
    }
    const auto [low, high] = conversion::integerRange(id);
    if (overflow || n < low || n > high) throw errors::expressionOverflow(Type{.id = id});
    call.integer64(n);
}

double checkedFloat(double value) {
    if (!std::isfinite(value)) throw errors::expressionOverflow(Type{.id = TypeId::Float});
    return value;
}

template <BinaryOp Op>
double floatResult(double a, double b) {
    switch (Op) {
        case BinaryOp::Add: return checkedFloat(a + b);
        case BinaryOp::Subtract: return checkedFloat(a - b);
        case BinaryOp::Multiply: return checkedFloat(a * b);
        default:
            if (b == 0) throw errors::divideByZero();
            return checkedFloat(a / b);
    }
}

template <BinaryOp Op>
void floatArithmetic(Call& call) {
    call.number(floatResult<Op>(call.real(0), call.real(1)));
}

Decimal decimalOperand(const Value& value, const Type& type) {
    if (const auto* d = std::get_if<Decimal>(&value)) return *d;
    const Type decimal = asDecimal(type);
    return std::get<Decimal>(convert(value, type, decimal));
}

template <BinaryOp Op>
Decimal decimalResult(const Decimal& a, const Decimal& b, const Type& result) {
    std::optional<Int128> n;
    const int common = std::max(a.scale, b.scale);
    const auto aligned = [&](const Decimal& d) { return shiftDigits(d.unscaled, common - d.scale); };
    switch (Op) {
        case BinaryOp::Multiply: n = multiply(a.unscaled, b.unscaled, a.scale + b.scale - result.scale); break;
        case BinaryOp::Divide:
            if (b.unscaled == 0) throw errors::divideByZero();
            n = divide(a.unscaled, b.unscaled, result.scale - a.scale + b.scale);
            break;
        case BinaryOp::Modulo: {
            if (b.unscaled == 0) throw errors::divideByZero();
            const auto x = aligned(a), y = aligned(b);
            if (x && y) n = shiftDigits(*x % *y, result.scale - common);
            break;
        }
        default: {
            auto x = aligned(a), y = aligned(b);
            int scale = common;
            if (!x || !y) {  // more digits than the common scale leaves room for: the result's scale is smaller anyway
                scale = result.scale;
                x = shiftDigits(a.unscaled, scale - a.scale);
                y = shiftDigits(b.unscaled, scale - b.scale);
            }
            if (x && y) n = shiftDigits(Op == BinaryOp::Add ? *x + *y : *x - *y, result.scale - scale);
        }
    }
    if (!n || !fits(*n, result.precision)) throw errors::expressionOverflow(result);
    return {*n, result.scale};
}

template <BinaryOp Op>
std::int64_t moneyResult(std::int64_t a, std::int64_t b, const Type& result) {
    std::optional<Int128> n;
    switch (Op) {
        case BinaryOp::Add: n = Int128{a} + b; break;
        case BinaryOp::Subtract: n = Int128{a} - b; break;
        case BinaryOp::Multiply: n = multiply(a, b, 4); break;
        default:
            if (b == 0) throw errors::divideByZero();
            n = Op == BinaryOp::Divide ? divide(a, b, 4) : std::optional<Int128>(Int128{a} % b);
    }
    const auto [low, high] = conversion::integerRange(result.id == TypeId::Money ? TypeId::BigInt : TypeId::Int);
    if (!n || *n < low || *n > high) throw errors::expressionOverflow(result);
    return static_cast<std::int64_t>(*n);
}

template <BinaryOp Op>
void arithmetic(Call& call) {
    const Type typeA = call.type(2), typeB = call.type(3), result = call.type(4);
    const Value a = call.value(0, typeA), b = call.value(1, typeB);
    const ConvertContext& context = call.session().convert;
    const auto integerOf = [&](const Value& value, const Type& type, const Type& wanted) {
        return std::get<std::int64_t>(convert(value, type, wanted, context));
    };
    switch (result.id) {
        case TypeId::Decimal:
            call.give(result, decimalResult<Op>(decimalOperand(a, typeA), decimalOperand(b, typeB), result));
            return;
        case TypeId::Money:
        case TypeId::SmallMoney:
            call.integer64(moneyResult<Op>(integerOf(a, typeA, result), integerOf(b, typeB, result), result));
            return;
        case TypeId::Real:
        case TypeId::Float: {
            const Type wide{.id = TypeId::Float};
            const double n =
                floatResult<Op>(std::get<double>(convert(a, typeA, wide)), std::get<double>(convert(b, typeB, wide)));
            call.give(result, convert(n, wide, result));
            return;
        }
        case TypeId::DateTime:
        case TypeId::SmallDateTime: {
            const Type date{.id = TypeId::DateTime};
            const std::int64_t x = integerOf(a, typeA, date), y = integerOf(b, typeB, date);
            const std::int64_t ticks = Op == BinaryOp::Add ? x + y : x - y;
            const bool outside =
                ticks < (kDay1753 - kDay1900) * kTicksPerDay || ticks >= (kDay9999 + 1 - kDay1900) * kTicksPerDay;
            const auto fitted = outside ? std::nullopt : fromMoment(toMoment(ticks, date), result);
            if (!fitted) throw errors::expressionOverflow(result);
            call.integer64(*fitted);
            return;
        }
        default: throw std::logic_error("no arithmetic for " + typeName(result));
    }
}

void negate(Call& call) {
    const Type type = call.type(1);
    if (type.id == TypeId::Decimal) {
        call.give(type, Decimal{-std::get<Decimal>(call.value(0, type)).unscaled, type.scale});
        return;
    }
    if (type.id == TypeId::Real || type.id == TypeId::Float) {
        call.number(-call.real(0));
        return;
    }
    const Int128 n = -Int128{call.integer(0)};
    const auto [low, high] = conversion::integerRange(isInteger(type.id) ? type.id : TypeId::BigInt);
    if (n < low || n > high) throw errors::expressionOverflow(type);
    call.integer64(static_cast<std::int64_t>(n));
}

void complement(Call& call) {
    const std::int64_t n = call.integer(0);
    switch (call.type(1).id) {
        case TypeId::Bit: call.integer64(n ? 0 : 1); break;
        case TypeId::TinyInt: call.integer64(~n & 0xFF); break;
        default: call.integer64(~n);
    }
}

void exclusiveOr(Call& call) {
    call.integer64(call.integer(0) ^ call.integer(1));
}

void concatenate(Call& call) {
    const Type result = call.type(2);
    if (isBinary(result.id)) {
        Bytes bytes = call.bytes(0);
        const Bytes more = call.bytes(1);
        bytes.insert(bytes.end(), more.begin(), more.end());
        if (result.length != Type::kMax && bytes.size() > static_cast<std::size_t>(result.length)) {
            bytes.resize(static_cast<std::size_t>(result.length));
        }
        call.blob(bytes);
        return;
    }
    std::string text(call.text(0));
    text += call.text(1);
    if (result.length != Type::kMax) text.resize(leftUnits(text, static_cast<std::size_t>(result.length)).size());
    call.string(text);
}

// Bytes behind bytes, none of them cut off.
void join(Call& call) {
    std::size_t size = 0;
    for (int i = 0; i < call.count(); ++i) size += static_cast<std::size_t>(sqlite3_value_bytes(call.raw(i)));
    auto* joined = static_cast<std::uint8_t*>(sqlite3_malloc64(std::max<std::size_t>(size, 1)));
    if (!joined) throw std::bad_alloc();
    std::size_t at = 0;
    for (int i = 0; i < call.count(); ++i) {
        const void* bytes = sqlite3_value_blob(call.raw(i));
        const auto count = static_cast<std::size_t>(sqlite3_value_bytes(call.raw(i)));
        if (count > 0) std::memcpy(joined + at, bytes, count);
        at += count;
    }
    sqlite3_result_blob64(call.context(), joined, size, sqlite3_free);
}

void pad(Call& call) {
    std::string text(call.text(0));
    const std::size_t units = utf16Length(text);
    const auto wanted = static_cast<std::size_t>(std::max<std::int64_t>(0, call.integer(1)));
    if (units < wanted) text.append(wanted - units, ' ');
    call.string(text);
}

void comparison(Call& call) {
    const int order = compare(static_cast<int>(call.integer(2)), call.text(0), call.text(1));
    call.integer64(order < 0 ? -1 : order > 0 ? 1 : 0);
}

void variable(Call& call) {
    if (!call.session().variable) throw std::logic_error("t_var without variables");
    const Typed typed = call.session().variable(call.integer(0));
    call.give(typed.type, typed.value);
}

void noteNull(Call& call) {
    if (call.isNull(0)) call.session().nullEliminated = true;
    call.same(0);
}

constexpr Registration kOperators[] = {
    {"t_cast", 3, strict<cast>},
    {"t_cast", 4, strict<cast>},
    {"t_try_cast", 3, strict<tryCast>},
    {"t_try_cast", 4, strict<tryCast>},
    {"t_store", 5, strict<store>},
    {"t_add", 5, strict<arithmetic<BinaryOp::Add>>},
    {"t_sub", 5, strict<arithmetic<BinaryOp::Subtract>>},
    {"t_mul", 5, strict<arithmetic<BinaryOp::Multiply>>},
    {"t_div", 5, strict<arithmetic<BinaryOp::Divide>>},
    {"t_mod", 5, strict<arithmetic<BinaryOp::Modulo>>},
    {"t_iadd", 3, strict<integerArithmetic<BinaryOp::Add>>},
    {"t_isub", 3, strict<integerArithmetic<BinaryOp::Subtract>>},
    {"t_imul", 3, strict<integerArithmetic<BinaryOp::Multiply>>},
    {"t_idiv", 3, strict<integerArithmetic<BinaryOp::Divide>>},
    {"t_imod", 3, strict<integerArithmetic<BinaryOp::Modulo>>},
    {"t_fadd", 2, strict<floatArithmetic<BinaryOp::Add>>},
    {"t_fsub", 2, strict<floatArithmetic<BinaryOp::Subtract>>},
    {"t_fmul", 2, strict<floatArithmetic<BinaryOp::Multiply>>},
    {"t_fdiv", 2, strict<floatArithmetic<BinaryOp::Divide>>},
    {"t_neg", 2, strict<negate>},
    {"t_not", 2, strict<complement>},
    {"t_xor", 2, strict<exclusiveOr>},
    {"t_concat", 3, strict<concatenate>},
    {"t_join", -1, strict<join>},
    {"t_pad", 2, strict<pad>},
    {"t_cmp", 3, strict<comparison>},
    {"t_var", 1, strict<variable>, false},
    {"t_nn", 1, always<noteNull>, false},
};

}  // namespace

std::span<const Registration> operatorFunctions() {
    return kOperators;
}

}  // namespace sandbox::functions
