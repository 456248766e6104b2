// Functions on numbers.
#include <algorithm>
#include <atomic>
#include <bit>
#include <climits>
#include <cmath>
#include <numbers>
#include <random>

#include "sandbox/store/functions/sql_functions_support.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert_errors.h"
#include "sandbox/store/values/convert_number.h"
#include "sandbox/store/values/decimal.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/text.h"

namespace sandbox::functions {
namespace {

constexpr int kMoneyScale = 4;

bool isMoney(const Type& type) {
    return type.id == TypeId::Money || type.id == TypeId::SmallMoney;
}
bool isFloat(const Type& type) {
    return type.id == TypeId::Float || type.id == TypeId::Real;
}

// The value of an exact number as a decimal; its scale is the type's.
Decimal exact(Call& call, int i, const Type& type) {
    if (type.id == TypeId::Decimal) return std::get<Decimal>(call.value(i, type));
    return {call.integer(i), static_cast<std::uint8_t>(isMoney(type) ? kMoneyScale : 0)};
}

// An exact result in the type's own storage; 8115 where it does not fit.
void giveExact(Call& call, const Type& type, Int128 unscaled) {
    if (type.id == TypeId::Decimal) {
        if (!fits(unscaled, type.precision)) throw errors::expressionOverflow(type);
        call.give(type, Decimal{unscaled, type.scale});
        return;
    }
    const auto [low, high] = conversion::integerRange(isInteger(type.id) ? type.id : TypeId::BigInt);
    if (unscaled < low || unscaled > high) throw errors::expressionOverflow(type);
    call.integer64(static_cast<std::int64_t>(unscaled));
}

void giveFloat(Call& call, double value) {
    if (std::isnan(value)) throw errors::invalidFloatOperation();
    if (std::isinf(value)) throw errors::expressionOverflow(Type{.id = TypeId::Float});
    call.number(value);
}

void absolute(Call& call) {
    const Type type = call.type(1);
    if (isFloat(type)) return call.number(std::fabs(call.real(0)));
    const Int128 n = exact(call, 0, type).unscaled;
    giveExact(call, type, n < 0 ? -n : n);
}

void sign(Call& call) {
    const Type type = call.type(1);
    if (isFloat(type)) {
        const double d = call.real(0);
        return call.number(d < 0 ? -1 : d > 0 ? 1 : 0);
    }
    const Decimal d = exact(call, 0, type);
    const Int128 one = powerOfTen(d.scale);
    giveExact(call, type, d.unscaled < 0 ? -one : d.unscaled > 0 ? one : 0);
}

// ROUND(value, places [, truncate], type)
void round(Call& call) {
    const Type type = call.type(call.count() - 1);
    const auto places = static_cast<int>(std::clamp<std::int64_t>(call.integer(1), -400, 400));
    const bool truncate = call.count() > 3 && call.integer(2) != 0;
    if (isFloat(type)) {
        const double factor = std::pow(10.0, std::abs(places));
        const double value = call.real(0);
        if (!std::isfinite(factor)) return call.number(places > 0 ? value : 0);
        const double scaled = places >= 0 ? value * factor : value / factor;
        if (!std::isfinite(scaled)) return call.number(value);
        const double whole = truncate ? std::trunc(scaled) : std::round(scaled);
        return giveFloat(call, places >= 0 ? whole / factor : whole * factor);
    }
    const Decimal d = exact(call, 0, type);
    if (places >= d.scale) return giveExact(call, type, d.unscaled);
    const int drop = d.scale - places;
    if (drop > kMaxPrecision) return giveExact(call, type, 0);
    const auto cut = shiftDigits(d.unscaled, -drop, truncate ? Rounding::Truncate : Rounding::HalfAwayFromZero);
    const auto back = cut ? shiftDigits(*cut, drop) : std::nullopt;
    if (!back) throw errors::expressionOverflow(type);
    giveExact(call, type, *back);
}

// FLOOR and CEILING(value, type, result type): a decimal's result has no decimals.
template <bool Up>
void whole(Call& call) {
    const Type type = call.type(1), result = call.type(2);
    if (isFloat(type)) return call.number(Up ? std::ceil(call.real(0)) : std::floor(call.real(0)));
    const Decimal d = exact(call, 0, type);
    const Int128 unit = powerOfTen(d.scale);
    Int128 n = d.unscaled / unit;
    if (d.unscaled % unit != 0 && (d.unscaled > 0) == Up) n += Up ? 1 : -1;
    giveExact(call, result, type.id == TypeId::Decimal ? n : n * unit);
}

// POWER(base, exponent, type of base, result type)
void power(Call& call) {
    const Type type = call.type(2), result = call.type(3);
    const Type wide{.id = TypeId::Float};
    const double base = std::get<double>(convert(call.value(0, type), type, wide));
    const double value = std::pow(base, call.real(1));
    if (std::isnan(value)) throw errors::invalidFloatOperation();
    if (std::isinf(value)) throw base == 0 ? errors::divideByZero() : errors::expressionOverflow(result);
    if (isInteger(result.id)) {
        const auto [low, high] = conversion::integerRange(result.id);
        if (value < static_cast<double>(low) || value > static_cast<double>(high))
            throw errors::expressionOverflow(result);
    }
    call.give(result, convert(value, wide, result));
}

template <double (*Function)(double)>
void ofFloat(Call& call) {
    giveFloat(call, Function(call.real(0)));
}

double squareRoot(double x) {
    return std::sqrt(x);
}
double squareOf(double x) {
    return x * x;
}
double exponential(double x) {
    return std::exp(x);
}
double sine(double x) {
    return std::sin(x);
}
double cosine(double x) {
    return std::cos(x);
}
double tangent(double x) {
    return std::tan(x);
}
double cotangent(double x) {
    return 1 / std::tan(x);
}
double arcSine(double x) {
    return std::asin(x);
}
double arcCosine(double x) {
    return std::acos(x);
}
double arcTangent(double x) {
    return std::atan(x);
}
double logTen(double x) {
    return x <= 0 ? std::nan("") : std::log10(x);
}
double radiansOf(double x) {
    return x * std::numbers::pi / 180;
}
double degreesOf(double x) {
    return x * 180 / std::numbers::pi;
}

// The result is cut to its type, as in T-SQL's own arithmetic.
template <double (*Function)(double)>
void angle(Call& call) {
    const Type type = call.type(1), result = call.type(2);
    const Type wide{.id = TypeId::Float};
    const double given = std::get<double>(convert(call.value(0, type), type, wide));
    call.give(result, convert(Function(given), wide, result));
}

void logarithm(Call& call) {
    if (call.real(0) <= 0) throw errors::invalidFloatOperation();
    const double value = std::log(call.real(0));
    giveFloat(call, call.count() > 1 ? value / std::log(call.real(1)) : value);
}

void arcTangent2(Call& call) {
    giveFloat(call, std::atan2(call.real(0), call.real(1)));
}
void pi(Call& call) {
    call.number(std::numbers::pi);
}

// L'Ecuyer's combined generator with SQL Server's own start: seeds give the numbers that they give there. The state
// holds the first part in its upper half and the second in its lower.
constexpr std::int64_t kFirstModulus = 2147483563;
constexpr std::int64_t kSecondModulus = 2147483399;

std::uint64_t randomState(std::int64_t seed) {
    constexpr std::int64_t kForZero = 12345;
    constexpr std::uint64_t kSecond = 67890;
    const std::int64_t first = std::abs(seed) % kFirstModulus;
    return static_cast<std::uint64_t>(first == 0 ? kForZero : first) << 32 | kSecond;
}

double nextRandom(std::uint64_t& state) {
    const std::int64_t first = static_cast<std::int64_t>(state >> 32) * 40014 % kFirstModulus;
    const std::int64_t second = static_cast<std::int64_t>(state & 0xFFFFFFFF) * 40692 % kSecondModulus;
    state = static_cast<std::uint64_t>(first) << 32 | static_cast<std::uint64_t>(second);
    const std::int64_t difference = first - second;
    return static_cast<double>(difference < 1 ? difference + kFirstModulus - 1 : difference) * 4.656613e-10;
}

void random(Call& call) {
    FunctionContext& session = call.session();
    if (call.count() > 0 && !call.isNull(0)) {
        session.randState = randomState(call.integer(0));
        session.rand.reset();
    }
    if (!session.rand) session.rand = nextRandom(session.randState);
    call.number(*session.rand);
}

Guid randomGuid() {
    static thread_local std::mt19937_64 source{std::random_device{}()};
    Guid guid{};
    for (std::size_t i = 0; i < 16; i += 8) {
        const std::uint64_t bits = source();
        for (std::size_t b = 0; b < 8; ++b) guid[i + b] = static_cast<std::uint8_t>(bits >> (8 * b));
    }
    guid[7] = static_cast<std::uint8_t>((guid[7] & 0x0F) | 0x40);  // version 4, variant 1
    guid[8] = static_cast<std::uint8_t>((guid[8] & 0x3F) | 0x80);
    return guid;
}

void newGuid(Call& call) {
    call.give(Type{.id = TypeId::UniqueIdentifier}, randomGuid());
}

// Each greater than the one before, as the server compares them: the first group counts, all else stays.
void newSequentialGuid(Call& call) {
    static const Guid kRest = randomGuid();
    static std::atomic<std::uint32_t> count{1};
    Guid guid = kRest;
    const std::uint32_t number = count++;
    for (std::size_t b = 0; b < 4; ++b) guid[b] = static_cast<std::uint8_t>(number >> (8 * (3 - b)));
    call.give(Type{.id = TypeId::UniqueIdentifier}, guid);
}

void isNumericValue(Call& call) {
    const Type type = call.type(1);
    if (call.isNull(0)) return call.integer64(0);
    if (isNumeric(type.id)) return call.integer64(1);
    call.integer64(isCharacter(type.id) && looksLikeNumber(call.text(0)) ? 1 : 0);
}

// CHECKSUM(values..., collation, types...): equal for values that compare equal. A lone int is its own checksum, the
// other numbers are not SQL Server's.
void checksum(Call& call) {
    const int values = (call.count() - 1) / 2;
    const auto collation = static_cast<int>(call.integer(values));
    std::uint32_t sum = 0;
    for (int i = 0; i < values; ++i) {
        const Type type = call.type(values + 1 + i);
        std::uint32_t one = 0x7FFFFFFF;
        if (!call.isNull(i)) {
            if (isInteger(type.id) && type.id != TypeId::BigInt) {
                one = static_cast<std::uint32_t>(call.integer(i));
            } else if (isCharacter(type.id)) {
                one = 0;
                for (const char16_t unit : toUtf16(trimTrailingBlanks(call.text(i)))) {
                    one = std::rotl(one, 4) ^ foldUnit(collation, unit);
                }
            } else {
                one = 0;
                for (const char c : displayText(call.value(i, type), type))
                    one = std::rotl(one, 4) ^ static_cast<unsigned char>(c);
            }
        }
        sum = std::rotl(sum, 4) ^ one;
    }
    call.integer64(static_cast<std::int32_t>(sum));
}

// NULL counts as none, as it does in TOP.
void rowLimit(Call& call) {
    const double rows = call.real(0);
    switch (static_cast<RowLimit>(call.integer(1))) {
        case RowLimit::Count:
            if (rows < 0) throw SqlError(errorMessage<127>());
            break;
        case RowLimit::Percent:
            if (rows < 0 || rows > 100) throw SqlError(errorMessage<1031>());
            break;
        case RowLimit::Offset:
            if (rows < 0) throw SqlError(errorMessage<10742>());
            break;
        case RowLimit::Fetch:
            if (rows < 1) throw SqlError(errorMessage<10744>());
            break;
    }
    if (call.isNull(0)) return call.integer64(0);
    call.same(0);
}

void recursionDepth(Call& call) {
    const std::int64_t most = call.integer(1);
    if (most > 0 && call.integer(0) > most) {
        throw SqlError(errorMessage<530>(most));
    }
    call.same(0);
}

constexpr Registration kNumbers[] = {
    {"t_rows", 2, always<rowLimit>},
    {"t_depth", 2, always<recursionDepth>},
    {"t_abs", 2, strict<absolute>},
    {"t_sign", 2, strict<sign>},
    {"t_round", 3, strict<round>},
    {"t_round", 4, strict<round>},
    {"t_floor", 3, strict<whole<false>>},
    {"t_ceiling", 3, strict<whole<true>>},
    {"t_power", 4, strict<power>},
    {"t_sqrt", 1, strict<ofFloat<squareRoot>>},
    {"t_square", 1, strict<ofFloat<squareOf>>},
    {"t_exp", 1, strict<ofFloat<exponential>>},
    {"t_log", 1, strict<logarithm>},
    {"t_log", 2, strict<logarithm>},
    {"t_log10", 1, strict<ofFloat<logTen>>},
    {"t_sin", 1, strict<ofFloat<sine>>},
    {"t_cos", 1, strict<ofFloat<cosine>>},
    {"t_tan", 1, strict<ofFloat<tangent>>},
    {"t_cot", 1, strict<ofFloat<cotangent>>},
    {"t_asin", 1, strict<ofFloat<arcSine>>},
    {"t_acos", 1, strict<ofFloat<arcCosine>>},
    {"t_atan", 1, strict<ofFloat<arcTangent>>},
    {"t_atn2", 2, strict<arcTangent2>},
    {"t_pi", 0, strict<pi>},
    {"t_radians", 3, strict<angle<radiansOf>>},
    {"t_degrees", 3, strict<angle<degreesOf>>},
    {"t_rand", -1, always<random>, false},
    {"t_newid", 0, always<newGuid>, false},
    {"t_newsequentialid", 0, always<newSequentialGuid>, false},
    {"t_isnumeric", 2, always<isNumericValue>},
    {"t_checksum", -1, always<checksum>},
};

}  // namespace

std::span<const Registration> numberFunctions() {
    return kNumbers;
}

}  // namespace sandbox::functions
