// The rows of the functions and aggregates, and the planning of their calls.
#include "sandbox/store/functions/function_table.h"

#include <algorithm>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/convert_errors.h"
#include "sandbox/store/values/convert_types.h"
#include "sandbox/store/values/datetime.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/storage_codec.h"

namespace sandbox {
namespace {

using Types = std::span<const Type>;

constexpr int kMostNarrow = 8000;
constexpr int kMostWide = 4000;

constexpr Type fixed(TypeId id, int length = 0, std::uint8_t scale = 0) {
    return {.id = id, .length = length, .scale = scale};
}

// Result types. Functions whose result hangs on no argument are rows of asIs<...>.
template <TypeId Id, int Length = 0, int Scale = 0>
Type asIs(Types) {
    return fixed(Id, Length, Scale);
}
constexpr auto kInt = asIs<TypeId::Int>;
constexpr auto kFloat = asIs<TypeId::Float>;
constexpr auto kDateTime = asIs<TypeId::DateTime>;
constexpr auto kName = asIs<TypeId::NVarChar, 128>;
constexpr auto kMessageText = asIs<TypeId::NVarChar, 4000>;

Type identityResult(Types) {
    return {.id = TypeId::Decimal, .precision = 38, .scale = 0, .numericName = true};
}

bool isMax(const Type& type) {
    return type.length == Type::kMax || isLob(type.id);
}

Type textOfLength(bool unicode, std::int64_t length) {
    const int most = unicode ? kMostWide : kMostNarrow;
    return {.id = unicode ? TypeId::NVarChar : TypeId::VarChar,
            .length = static_cast<int>(std::clamp<std::int64_t>(length, 1, most))};
}

// Text (or binary) that is at most as long as the first argument.
Type likeFirst(Types t) {
    if (isBinary(t[0].id)) return {.id = TypeId::VarBinary, .length = isMax(t[0]) ? Type::kMax : t[0].length};
    if (isMax(t[0])) return {.id = isUnicode(t[0].id) ? TypeId::NVarChar : TypeId::VarChar, .length = Type::kMax};
    return textOfLength(isUnicode(t[0].id), t[0].length);
}

// Text as long as a row holds, or (max) where the first argument is.
Type longText(Types t) {
    const bool unicode = std::any_of(t.begin(), t.end(), [](const Type& type) { return isUnicode(type.id); });
    if (isMax(t[0])) return {.id = unicode ? TypeId::NVarChar : TypeId::VarChar, .length = Type::kMax};
    return textOfLength(unicode, kMostNarrow);
}

Type stuffResult(Types t) {
    const bool unicode = isUnicode(t[0].id) || isUnicode(t[3].id);
    if (isMax(t[0]) || isMax(t[3])) return {.id = unicode ? TypeId::NVarChar : TypeId::VarChar, .length = Type::kMax};
    return textOfLength(unicode, std::int64_t{t[0].length} + t[3].length);
}

// How long a value's text may be.
int textLength(const Type& type) {
    switch (type.id) {
        case TypeId::Null:
        case TypeId::Bit: return 1;
        case TypeId::TinyInt: return 3;
        case TypeId::SmallInt: return 6;
        case TypeId::Int: return 11;
        case TypeId::BigInt: return 20;
        case TypeId::Decimal: return type.precision + 2;
        case TypeId::UniqueIdentifier: return 36;
        default: return isCharacter(type.id) || isBinary(type.id) ? type.length : 30;
    }
}

Type concatResult(Types t) {
    const bool unicode = std::any_of(t.begin(), t.end(), [](const Type& type) { return isUnicode(type.id); });
    std::int64_t length = 0;
    for (const Type& type : t) {
        if (isMax(type)) return {.id = unicode ? TypeId::NVarChar : TypeId::VarChar, .length = Type::kMax};
        length += textLength(type);
    }
    return textOfLength(unicode, length);
}

Type concatWsResult(Types t) {
    Type result = concatResult(t);
    if (result.length != Type::kMax) result = textOfLength(isUnicode(result.id), kMostNarrow);
    return result;
}

Type sizeResult(Types t) {
    return fixed(isMax(t[0]) && !isLob(t[0].id) ? TypeId::BigInt : TypeId::Int);
}
Type placeResult(Types t) {
    return fixed(t[1].length == Type::kMax ? TypeId::BigInt : TypeId::Int);
}
Type sameAsFirst(Types t) {
    return t[0];
}

Type wholeResult(Types t) {
    Type result = t[0];
    if (result.id == TypeId::Decimal) result.scale = 0;
    return result;
}

Type powerResult(Types t) {
    Type result = t[0];
    if (result.id == TypeId::Decimal) result.precision = 38;
    return result;
}

// Whole numbers of less than an int become one, decimals get room for what follows the point.
Type angleResult(Types t) {
    Type result = t[0];
    if (result.id == TypeId::Decimal) {
        result.precision = 38;
        result.scale = std::max<std::uint8_t>(result.scale, 18);
    } else if (result.id == TypeId::Real) {
        result = fixed(TypeId::Float);
    } else if (isInteger(result.id) && result.id != TypeId::BigInt) {
        result = fixed(TypeId::Int);
    }
    return result;
}

Type dateResult(Types t) {
    return t[2];
}
Type isNullResult(Types t) {
    return t[0].id == TypeId::Null ? (t[1].id == TypeId::Null ? fixed(TypeId::Int) : t[1]) : t[0];
}
Type commonResult(Types t) {
    return commonType(t);
}
Type chooseResult(Types t) {
    return commonType(t.subspan(1));
}

constexpr FunctionRow kFunctions[] = {
    // Text
    {"LEN", 1, 1, "x", sizeResult, "t_len", "1"},
    {"DATALENGTH", 1, 1, "a", sizeResult, "t_datalength", "1"},
    {"SUBSTRING", 3, 3, "obb", likeFirst, "t_substring"},
    {"LEFT", 2, 2, "tb", likeFirst, "t_left"},
    {"RIGHT", 2, 2, "tb", likeFirst, "t_right"},
    {"LTRIM", 1, 1, "t", likeFirst, "t_ltrim"},
    {"RTRIM", 1, 1, "t", likeFirst, "t_rtrim"},
    {"TRIM", 1, 1, "t", likeFirst, "t_trim"},
    {"UPPER", 1, 1, "t", likeFirst, "t_upper"},
    {"LOWER", 1, 1, "t", likeFirst, "t_lower"},
    {"REVERSE", 1, 1, "t", likeFirst, "t_reverse"},
    {"REPLICATE", 2, 2, "tb", longText, "t_replicate", "r"},
    {"SPACE", 1, 1, "b", asIs<TypeId::VarChar, kMostNarrow>, "t_space"},
    {"STUFF", 4, 4, "tbbt", stuffResult, "t_stuff"},
    {"REPLACE", 3, 3, "ttt", longText, "t_replace", "cr"},
    {"CHARINDEX", 2, 3, "ttb", placeResult, "t_charindex", "c"},
    {"PATINDEX", 2, 2, "tt", placeResult, "t_patindex", "c"},
    {"ASCII", 1, 1, "t", kInt, "t_ascii"},
    {"UNICODE", 1, 1, "n", kInt, "t_unicode"},
    {"CHAR", 1, 1, "i", asIs<TypeId::Char, 1>, "t_char"},
    {"NCHAR", 1, 1, "i", asIs<TypeId::NChar, 1>, "t_nchar"},
    {"STR", 1, 3, "fii", asIs<TypeId::VarChar, kMostNarrow>, "t_str"},
    {"CONCAT", 2, 254, "a", concatResult, "t_concat_all", "A"},
    {"CONCAT_WS", 3, 254, "ta", concatWsResult, "t_concat_ws", "A"},
    {"QUOTENAME", 1, 2, "nn", asIs<TypeId::NVarChar, 258>, "t_quotename"},
    {"SOUNDEX", 1, 1, "t", asIs<TypeId::VarChar, 4>, "t_soundex"},
    {"DIFFERENCE", 2, 2, "tt", kInt, "t_difference"},
    {"HASHBYTES", 2, 2, "to", asIs<TypeId::VarBinary, kMostNarrow>, "t_hashbytes", "2"},
    {"PARSENAME", 2, 2, "ni", kName, "t_parsename"},
    {"ISNUMERIC", 1, 1, "a", kInt, "t_isnumeric", "1"},
    {"ISDATE", 1, 1, "a", kInt, "t_isdate", "1"},

    // Numbers
    {"ABS", 1, 1, "e", sameAsFirst, "t_abs", "1"},
    {"SIGN", 1, 1, "e", sameAsFirst, "t_sign", "1"},
    {"ROUND", 2, 3, "eii", sameAsFirst, "t_round", "1"},
    {"FLOOR", 1, 1, "e", wholeResult, "t_floor", "1r"},
    {"CEILING", 1, 1, "e", wholeResult, "t_ceiling", "1r"},
    {"POWER", 2, 2, "ef", powerResult, "t_power", "1r"},
    {"SQRT", 1, 1, "f", kFloat, "t_sqrt"},
    {"SQUARE", 1, 1, "f", kFloat, "t_square"},
    {"EXP", 1, 1, "f", kFloat, "t_exp"},
    {"LOG", 1, 2, "ff", kFloat, "t_log"},
    {"LOG10", 1, 1, "f", kFloat, "t_log10"},
    {"SIN", 1, 1, "f", kFloat, "t_sin"},
    {"COS", 1, 1, "f", kFloat, "t_cos"},
    {"TAN", 1, 1, "f", kFloat, "t_tan"},
    {"COT", 1, 1, "f", kFloat, "t_cot"},
    {"ASIN", 1, 1, "f", kFloat, "t_asin"},
    {"ACOS", 1, 1, "f", kFloat, "t_acos"},
    {"ATAN", 1, 1, "f", kFloat, "t_atan"},
    {"ATN2", 2, 2, "ff", kFloat, "t_atn2"},
    {"PI", 0, 0, "", kFloat, "t_pi"},
    {"RADIANS", 1, 1, "e", angleResult, "t_radians", "1r"},
    {"DEGREES", 1, 1, "e", angleResult, "t_degrees", "1r"},
    {"RAND", 0, 1, "i", kFloat, "t_rand", "", false},
    {"NEWID", 0, 0, "", asIs<TypeId::UniqueIdentifier>, "t_newid", "", false},
    {"NEWSEQUENTIALID", 0, 0, "", asIs<TypeId::UniqueIdentifier>, "t_newsequentialid", "", false},
    {"CHECKSUM", 1, -1, "a", kInt, "t_checksum", "cA"},
    {"BINARY_CHECKSUM", 1, -1, "a", kInt, "t_checksum", "bA"},

    // Dates
    {"GETDATE", 0, 0, "", kDateTime, "t_getdate", "", false},
    {"CURRENT_TIMESTAMP", 0, 0, "", kDateTime, "t_getdate", "", false},
    {"GETUTCDATE", 0, 0, "", kDateTime, "t_getutcdate", "", false},
    {"SYSDATETIME", 0, 0, "", asIs<TypeId::DateTime2, 0, 7>, "t_sysdatetime", "", false},
    {"SYSUTCDATETIME", 0, 0, "", asIs<TypeId::DateTime2, 0, 7>, "t_sysutcdatetime", "", false},
    {"DATEADD", 3, 3, "pid", dateResult, "t_dateadd", "3"},
    {"DATEDIFF", 3, 3, "pdd", kInt, "t_datediff", "23"},
    {"DATEPART", 2, 2, "pd", kInt, "t_datepart", "2"},
    {"DATENAME", 2, 2, "pd", asIs<TypeId::NVarChar, 30>, "t_datename", "2"},
    {"YEAR", 1, 1, "d", kInt, "t_year", "1"},
    {"MONTH", 1, 1, "d", kInt, "t_month", "1"},
    {"DAY", 1, 1, "d", kInt, "t_day", "1"},
    {"EOMONTH", 1, 2, "di", asIs<TypeId::Date>, "t_eomonth", "1"},
    {"DATEFROMPARTS", 3, 3, "iii", asIs<TypeId::Date>, "t_datefromparts"},
    {"DATETIMEFROMPARTS", 7, 7, "iiiiiii", kDateTime, "t_datetimefromparts"},

    // Choice
    {"ISNULL", 2, 2, "ss", isNullResult, "ifnull"},
    {"COALESCE", 2, -1, "s", commonResult, "coalesce"},
    {"NULLIF", 2, 2, "aa", sameAsFirst, "", "", true, CallForm::NullIf},
    {"IIF", 3, 3, "ass", nullptr, "", "", true, CallForm::Iif},
    {"CHOOSE", 2, 254, "is", chooseResult, "t_choose"},

    // Catalogue, session and server
    {"OBJECT_ID", 1, 2, "nn", kInt, "t_object_id", "", false},
    {"OBJECT_NAME", 1, 2, "ii", kName, "t_object_name", "", false},
    {"OBJECT_SCHEMA_NAME", 1, 2, "ii", kName, "t_object_schema_name", "", false},
    {"OBJECT_DEFINITION", 1, 1, "i", asIs<TypeId::NVarChar, Type::kMax>, "t_object_definition", "", false},
    {"OBJECTPROPERTY", 2, 2, "in", kInt, "t_objectproperty", "", false},
    {"COL_LENGTH", 2, 2, "nn", asIs<TypeId::SmallInt>, "t_col_length", "", false},
    {"COL_NAME", 2, 2, "ii", kName, "t_col_name", "", false},
    {"COLUMNPROPERTY", 3, 3, "inn", kInt, "t_columnproperty", "", false},
    {"DB_ID", 0, 1, "n", asIs<TypeId::SmallInt>, "t_db_id", "", false},
    {"DB_NAME", 0, 1, "i", kName, "t_db_name", "", false},
    {"HAS_DBACCESS", 1, 1, "n", kInt, "t_has_dbaccess", "", false},
    {"DATABASEPROPERTYEX", 2, 2, "nn", kName, "t_databasepropertyex", "", false},
    {"SERVERPROPERTY", 1, 1, "n", kName, "t_serverproperty", "", false},
    {"USER_NAME", 0, 1, "i", kName, "t_user_name", "", false},
    {"USER", 0, 0, "", kName, "t_user_name", "", false},
    {"CURRENT_USER", 0, 0, "", kName, "t_user_name", "", false},
    {"SESSION_USER", 0, 0, "", kName, "t_user_name", "", false},
    {"SYSTEM_USER", 0, 0, "", kName, "t_suser_sname", "", false},
    {"SUSER_SNAME", 0, 0, "", kName, "t_suser_sname", "", false},
    {"SUSER_NAME", 0, 0, "", kName, "t_suser_sname", "", false},
    {"ORIGINAL_LOGIN", 0, 0, "", kName, "t_suser_sname", "", false},
    {"HOST_NAME", 0, 0, "", kName, "t_host_name", "", false},
    {"APP_NAME", 0, 0, "", kName, "t_app_name", "", false},
    {"USER_ID", 0, 1, "n", kInt, "t_user_id", "", false},
    {"DATABASE_PRINCIPAL_ID", 0, 1, "n", kInt, "t_user_id", "", false},
    {"SCHEMA_NAME", 0, 1, "i", kName, "t_schema_name"},
    {"SCHEMA_ID", 0, 1, "n", kInt, "t_schema_id"},
    {"TYPE_NAME", 1, 1, "i", kName, "t_type_name"},
    {"TYPE_ID", 1, 1, "n", kInt, "t_type_id"},
    {"IDENT_CURRENT", 1, 1, "n", identityResult, "t_ident_current", "", false},
    {"IDENT_SEED", 1, 1, "n", identityResult, "t_ident_seed", "", false},
    {"IDENT_INCR", 1, 1, "n", identityResult, "t_ident_incr", "", false},
    {"SCOPE_IDENTITY", 0, 0, "", identityResult, "t_scope_identity", "", false},
    {"ERROR_NUMBER", 0, 0, "", kInt, "t_error_number", "", false},
    {"ERROR_SEVERITY", 0, 0, "", kInt, "t_error_severity", "", false},
    {"ERROR_STATE", 0, 0, "", kInt, "t_error_state", "", false},
    {"ERROR_LINE", 0, 0, "", kInt, "t_error_line", "", false},
    {"ERROR_PROCEDURE", 0, 0, "", kName, "t_error_procedure", "", false},
    {"ERROR_MESSAGE", 0, 0, "", kMessageText, "t_error_message", "", false},
    {"CURSOR_STATUS", 2, 2, "nn", asIs<TypeId::SmallInt>, "t_cursor_status", "", false},
    {"APPLOCK_MODE", 3, 3, "nnn", asIs<TypeId::NVarChar, 32>, "t_applock_mode", "", false},
    {"APPLOCK_TEST", 4, 4, "nnnn", asIs<TypeId::SmallInt>, "t_applock_test", "", false},
    {"XACT_STATE", 0, 0, "", asIs<TypeId::SmallInt>, "t_xact_state", "", false},
};

std::string lowered(std::string_view name) {
    return foldName(name);
}

// text, ntext and image may be searched, and not much else.
bool searchesLobs(const FunctionRow& row, int place) {
    return place == 2 && (row.name == "CHARINDEX" || row.name == "PATINDEX");
}

// What an argument with this letter is cast to.
Type argumentType(const FunctionRow& row, char letter, const Type& given, int place) {
    switch (letter) {
        case 'i':
        case 'p': return fixed(TypeId::Int);
        case 'b': return fixed(TypeId::BigInt);
        case 'f': return fixed(TypeId::Float);
        case 'n': return fixed(TypeId::NVarChar, kMostWide);
        case 'o':
            if (isBinary(given.id) || isCharacter(given.id)) return given;
            throw errors::invalidArgument(given, place, lowered(row.name));
        case 'x':
            if (isBinary(given.id) && !isLob(given.id)) return given;
            [[fallthrough]];
        case 't':
            if (isLob(given.id) && !searchesLobs(row, place)) {
                throw errors::invalidArgument(given, place, lowered(row.name));
            }
            if (isCharacter(given.id)) return given;
            return fixed(TypeId::VarChar, std::max(1, textLength(given)));
        case 'e':
            switch (given.id) {
                case TypeId::TinyInt:
                case TypeId::SmallInt:
                case TypeId::Null: return fixed(TypeId::Int);
                case TypeId::Bit: return fixed(TypeId::Float);
                case TypeId::SmallMoney: return fixed(TypeId::Money);
                case TypeId::Real: return fixed(TypeId::Float);
                default: break;
            }
            if (isNumeric(given.id)) return given;
            if (isCharacter(given.id) && !isLob(given.id)) return fixed(TypeId::Float);
            throw errors::invalidArgument(given, place, lowered(row.name));
        case 'd':
            if (isTemporal(given.id)) return given;
            if (isLob(given.id) || given.id == TypeId::UniqueIdentifier) {
                throw errors::invalidArgument(given, place, lowered(row.name));
            }
            return fixed(TypeId::DateTime);
        default: return given;
    }
}

struct AggregateRow {
    std::string_view name;
    enum class Kind { Count, Extreme, Sum, Average, Deviation, Checksum, Join } kind;
    std::string_view sqlite;
};
using Kind = AggregateRow::Kind;

constexpr AggregateRow kAggregates[] = {
    {"COUNT", Kind::Count, "count"},
    {"COUNT_BIG", Kind::Count, "count"},
    {"MIN", Kind::Extreme, "min"},
    {"MAX", Kind::Extreme, "max"},
    {"SUM", Kind::Sum, ""},
    {"AVG", Kind::Average, ""},
    {"STDEV", Kind::Deviation, "t_agg_stdev"},
    {"STDEVP", Kind::Deviation, "t_agg_stdevp"},
    {"VAR", Kind::Deviation, "t_agg_var"},
    {"VARP", Kind::Deviation, "t_agg_varp"},
    {"CHECKSUM_AGG", Kind::Checksum, "t_agg_checksum"},
    {"STRING_AGG", Kind::Join, "group_concat"},
};

const AggregateRow* findAggregate(std::string_view name) {
    const auto row = std::find_if(std::begin(kAggregates), std::end(kAggregates),
                                  [&](const AggregateRow& each) { return sameName(each.name, name); });
    return row == std::end(kAggregates) ? nullptr : &*row;
}

// SUM's argument and result type, and the function for it.
struct Summing {
    Type argument;
    Type result;
    std::string_view sqlite;
};

Summing summing(const Type& type, std::string_view aggregate) {
    switch (type.id) {
        case TypeId::TinyInt:
        case TypeId::SmallInt:
        case TypeId::Int: return {type, fixed(TypeId::Int), "t_sum_int"};
        case TypeId::BigInt: return {type, type, "t_sum_bigint"};
        case TypeId::SmallMoney:
        case TypeId::Money: return {type, fixed(TypeId::Money), "t_sum_money"};
        case TypeId::Decimal: {
            Type result = type;
            result.precision = 38;
            return {type, result, type.precision <= 18 ? "t_sum_dec" : "t_sum_decw"};
        }
        case TypeId::Real:
        case TypeId::Float: return {type, fixed(TypeId::Float), "t_sum_float"};
        default: throw errors::invalidOperand(type, lowered(aggregate));
    }
}

AggregatePlan averaging(const Type& type, std::string_view aggregate) {
    const Summing sum = summing(type, aggregate);
    Type result = sum.result;
    if (result.id == TypeId::Decimal) result.scale = std::max<std::uint8_t>(6, result.scale);
    return {sum.argument, result,
            "t_avg(" + std::string(sum.sqlite) + "(%), count(%), " + std::to_string(encodeType(sum.result)) + ", " +
                std::to_string(encodeType(result)) + ")"};
}

}  // namespace

std::span<const FunctionRow> functionTable() {
    return kFunctions;
}

const FunctionRow* findFunction(std::string_view name) {
    const auto row = std::find_if(std::begin(kFunctions), std::end(kFunctions),
                                  [&](const FunctionRow& each) { return sameName(each.name, name); });
    return row == std::end(kFunctions) ? nullptr : &*row;
}

CallPlan planCall(const FunctionRow& row, std::span<const Type> arguments, int collation) {
    const auto count = static_cast<int>(arguments.size());
    if (count < row.minArguments || (row.maxArguments >= 0 && count > row.maxArguments)) throw wrongArgumentCount(row);
    CallPlan plan;
    plan.sqlite = row.sqlite;
    plan.deterministic = row.deterministic;
    const auto letter = [&](std::size_t i) { return row.arguments[std::min(i, row.arguments.size() - 1)]; };
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        plan.argumentTypes.push_back(argumentType(row, letter(i), arguments[i], static_cast<int>(i) + 1));
    }
    plan.result = row.result ? row.result(plan.argumentTypes) : Type{.id = TypeId::Int};
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (letter(i) == 's') plan.argumentTypes[i] = plan.result;
        if (letter(i) != 'a') requireImplicitConversion(arguments[i], plan.argumentTypes[i]);
    }
    for (const char extra : row.extra) {
        switch (extra) {
            case 'c': plan.extra.push_back(collation); break;
            case 'b': plan.extra.push_back(collationCode("Latin1_General_BIN2")); break;
            case 'r': plan.extra.push_back(encodeType(plan.result)); break;
            case 'A':
                for (const Type& type : plan.argumentTypes) plan.extra.push_back(encodeType(type));
                break;
            default: plan.extra.push_back(encodeType(plan.argumentTypes[static_cast<std::size_t>(extra - '1')]));
        }
    }
    return plan;
}

std::optional<int> datePart(std::string_view name) {
    const auto part = datePartByName(name);
    return part ? std::optional(static_cast<int>(*part)) : std::nullopt;
}

bool isAggregate(std::string_view name) {
    return findAggregate(name) != nullptr;
}

AggregatePlan planAggregate(std::string_view name, const Type& argument, bool starred) {
    const AggregateRow* row = findAggregate(name);
    if (!row) throw unknownFunction(name);
    const std::string one = std::string(row->sqlite) + "(%)";
    switch (row->kind) {
        case Kind::Count: {
            const Type result = fixed(sameName(name, "COUNT_BIG") ? TypeId::BigInt : TypeId::Int);
            return {argument, result, starred ? "count(*)" : one};
        }
        case Kind::Extreme:
            if (isLob(argument.id) || argument.id == TypeId::Bit || argument.id == TypeId::Null) {
                throw errors::invalidOperand(argument, lowered(row->name));
            }
            return {argument, argument, one};
        case Kind::Sum: {
            const Summing sum = summing(argument, row->name);
            return {sum.argument, sum.result, std::string(sum.sqlite) + "(%)"};
        }
        case Kind::Average: return averaging(argument, row->name);
        case Kind::Deviation:
            if (!isNumeric(argument.id) || argument.id == TypeId::Bit)
                throw errors::invalidOperand(argument, lowered(row->name));
            return {fixed(TypeId::Float), fixed(TypeId::Float), one};
        case Kind::Checksum:
            if (!isInteger(argument.id)) throw errors::invalidOperand(argument, lowered(row->name));
            return {fixed(TypeId::Int), fixed(TypeId::Int), one};
        case Kind::Join: {
            Type text = isCharacter(argument.id) ? argument : fixed(TypeId::NVarChar, kMostWide);
            const bool unicode = isUnicode(text.id);
            const Type result = isMax(text) ? fixed(unicode ? TypeId::NVarChar : TypeId::VarChar, Type::kMax)
                                            : textOfLength(unicode, kMostNarrow);
            return {text, result, "group_concat(%, %2)"};
        }
    }
    throw unknownFunction(name);
}

SqlError unknownFunction(std::string_view name) {
    return SqlError(errorMessage<195, 10>(name, "built-in function name"));
}

SqlError wrongArgumentCount(const FunctionRow& row) {
    if (row.minArguments == row.maxArguments) {
        return SqlError(errorMessage<174>(lowered(row.name), row.minArguments));
    }
    const std::string most = row.maxArguments < 0 ? "any number of" : std::to_string(row.maxArguments);
    return SqlError(errorMessage<189>(lowered(row.name), row.minArguments, most));
}

SqlError unknownDatePart(std::string_view name, std::string_view function) {
    return SqlError(errorMessage<155, 1>(name, lowered(function)));
}

}  // namespace sandbox
