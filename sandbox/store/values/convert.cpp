// convert(): from any type to any other.
#include "sandbox/store/values/convert.h"

#include <algorithm>

#include "sandbox/store/values/convert_errors.h"
#include "sandbox/store/values/convert_number.h"
#include "sandbox/store/values/convert_text.h"
#include "sandbox/store/values/datetime.h"
#include "sandbox/store/values/text.h"

namespace sandbox {
namespace {

bool bounded(const Type& type) {
    return !isLob(type.id) && type.length != Type::kMax;
}

std::int64_t toTemporal(const Value& value, const Type& from, const Type& to, const ConvertContext& context,
                        int style) {
    const bool older = to.id == TypeId::DateTime || to.id == TypeId::SmallDateTime;
    if (const auto* text = std::get_if<std::string>(&value)) {
        const DateText read = readDateText(*text, context.dateOrder, style, !older, older ? 3 : 7);
        if (read.fault == DateTextFault::Syntax) throw errors::dateSyntax(to);
        if (read.fault == DateTextFault::Range) throw older ? errors::dateRange(from, to) : errors::dateSyntax(to);
        const auto result = fromMoment(read.moment, to);
        if (!result) throw errors::dateRange(from, to);
        return *result;
    }
    if (const auto* bytes = std::get_if<Bytes>(&value)) {
        const std::int64_t both = conversion::integerOfBytes(*bytes, 8);
        return (both >> 32) * kTicksPerDay + (both & 0xFFFFFFFF);
    }
    if (!isTemporal(from.id)) {
        const std::int64_t ticks = conversion::ticksOf(value, from, Type{.id = TypeId::DateTime});
        const auto result = fromMoment(toMoment(ticks, Type{.id = TypeId::DateTime}), to);
        if (!result) throw errors::expressionOverflow(to);
        return *result;
    }
    const auto result = fromMoment(toMoment(std::get<std::int64_t>(value), from), to);
    if (!result) {
        if (to.id == TypeId::SmallDateTime && from.id == TypeId::DateTime) throw errors::smallDateTimeRange();
        throw errors::dateRange(from, to);
    }
    return *result;
}

std::string toCharacter(const Value& value, const Type& from, const Type& to, const ConvertContext& context,
                        int style) {
    std::string text = conversion::textOf(value, from, to, context, style);
    if (bounded(to) && !isCharacter(from.id) && utf16Length(text) > static_cast<std::size_t>(to.length)) {
        text = conversion::shortenText(std::move(text), from, to);
    }
    return conversion::fitText(std::move(text), to, isUnicode(from.id));
}

}  // namespace

Value convert(const Value& value, const Type& from, const Type& to, const ConvertContext& context, int style) {
    if (isNull(value)) return value;
    if (from == to && !isCharacter(to.id) && !isBinary(to.id)) return value;
    if (conversionKind(from, to) == Conversion::None) throw errors::explicitNotAllowed(from, to);
    if (isCharacter(to.id)) return toCharacter(value, from, to, context, style);
    if (isBinary(to.id)) return conversion::bytesOf(value, from, to, style);
    if (isInteger(to.id)) return conversion::toInteger(value, from, to);
    if (isTemporal(to.id)) return toTemporal(value, from, to, context, style);
    switch (to.id) {
        case TypeId::SmallMoney:
        case TypeId::Money: return conversion::toMoney(value, from, to);
        case TypeId::Decimal: return conversion::toDecimal(value, from, to);
        case TypeId::Real:
        case TypeId::Float: return conversion::toFloat(value, from, to);
        case TypeId::UniqueIdentifier:
            return std::holds_alternative<Guid>(value) ? value : Value(conversion::guidOf(value, from, to));
        default: return value;
    }
}

Value convertForStore(const Value& value, const Type& from, const Type& to, const ConvertContext& context) {
    if (isNull(value) || !bounded(to)) return convert(value, from, to, context);
    const auto most = static_cast<std::size_t>(to.length);
    if (const auto* text = std::get_if<std::string>(&value); text && isCharacter(to.id) && text->size() > most) {
        const std::string_view kept = leftUnits(*text, most);
        if (std::string_view(*text).substr(kept.size()).find_first_not_of(' ') != std::string_view::npos) {
            throw errors::truncated();
        }
    }
    if (isCharacter(to.id) && isTemporal(from.id) && displayText(value, from, context).size() > most)
        throw errors::truncated();
    if (isBinary(to.id)) {
        if (const auto* bytes = std::get_if<Bytes>(&value); bytes && bytes->size() > most) throw errors::truncated();
    }
    return convert(value, from, to, context);
}

std::string displayText(const Value& value, const Type& type, const ConvertContext& context) {
    if (isNull(value)) return {};
    const Type text{.id = isUnicode(type.id) ? TypeId::NVarChar : TypeId::VarChar, .length = Type::kMax};
    return conversion::textOf(value, type, text, context, isBinary(type.id) ? 1 : 0);
}

bool looksLikeDate(std::string_view text, const ConvertContext& context) {
    if (trimBlanks(text).empty()) return false;
    const DateText read = readDateText(text, context.dateOrder, 0, false, 3);
    return read.fault == DateTextFault::None && fromMoment(read.moment, Type{.id = TypeId::DateTime}).has_value();
}

bool looksLikeNumber(std::string_view text) {
    const std::string_view trimmed = trimBlanks(text);
    if (trimmed.empty()) return false;
    if (trimmed == ".") return true;  // money takes it
    const Value value = std::string(trimmed);
    const Type varchar{.id = TypeId::VarChar, .length = Type::kMax};
    for (const Type& type : {Type{.id = TypeId::Float}, Type{.id = TypeId::Money}}) {
        try {
            (void)convert(value, varchar, type);
            return true;
        } catch (const SqlError&) {
            // Not a number of this type; the next one decides.
        }
    }
    return false;
}

}  // namespace sandbox
