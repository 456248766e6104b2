// Texts of the errors about values.
#include "sandbox/store/values/convert_errors.h"

#include "sandbox/store/values/error_table.h"

#include <cstdio>

namespace sandbox::errors {

std::string valueTypeName(const Type& type) {
    return type.id == TypeId::Decimal ? "numeric" : typeName(type);
}

SqlError conversionFailed(const Type& from, std::string_view value, const Type& to) {
    return SqlError(errorMessage<245>(valueTypeName(from), value, valueTypeName(to)), Effect::Batch);
}

SqlError integerTextTooLarge(const Type& from, std::string_view value, const Type& to) {
    if (to.id == TypeId::Int) return SqlError(errorMessage<248>(valueTypeName(from), value), Effect::Batch);
    const bool tiny = to.id == TypeId::TinyInt;
    return SqlError(errorMessage<244>(valueTypeName(from), value, tiny ? "INT1" : "INT2").withState(tiny ? 1 : 2),
                    Effect::Batch);
}

SqlError errorConverting(const Type& from, const Type& to) {
    return SqlError(errorMessage<8114>(valueTypeName(from), valueTypeName(to)), Effect::Batch);
}

SqlError overflowConverting(std::string_view what, const Type& to, int state) {
    return SqlError(errorMessage<8115>(what, valueTypeName(to)).withState(state));
}

SqlError expressionOverflow(const Type& to) {
    return overflowConverting("expression", to, 2);
}

SqlError valueOverflow(const Type& to, std::string_view value) {
    return SqlError(errorMessage<220>(valueTypeName(to), value).withState(to.id == TypeId::TinyInt ? 2 : 1));
}

SqlError floatOverflow(const Type& to, double value) {
    char text[400];
    std::snprintf(text, sizeof text, "%f", value);
    const int state = to.id == TypeId::TinyInt ? 1 : to.id == TypeId::SmallInt ? 2 : 3;
    return SqlError(errorMessage<232>(valueTypeName(to), text).withState(state));
}

SqlError dateSyntax(const Type& to) {
    if (to.id == TypeId::SmallDateTime) {
        return SqlError(errorMessage<295>(), Effect::Batch);
    }
    return SqlError(errorMessage<241>(), Effect::Batch);
}

SqlError dateRange(const Type& from, const Type& to) {
    return SqlError(errorMessage<242>(valueTypeName(from), valueTypeName(to)), Effect::Batch);
}

SqlError smallDateTimeRange() {
    return SqlError(errorMessage<298>(), Effect::Batch);
}

SqlError moneySyntax() {
    return SqlError(errorMessage<235>(), Effect::Batch);
}

SqlError moneySpace(const Type& to) {
    return SqlError(errorMessage<234>(valueTypeName(to)));
}

SqlError guidSyntax() {
    return SqlError(errorMessage<8169>(), Effect::Batch);
}

SqlError guidSpace() {
    return SqlError(errorMessage<8170>());
}

SqlError invalidStyle(int style, const Type& from) {
    return SqlError(errorMessage<281>(style, valueTypeName(from)));
}

SqlError truncated() {
    return SqlError(errorMessage<8152>());
}
SqlError divideByZero() {
    return SqlError(errorMessage<8134>());
}

SqlError operandClash(const Type& from, const Type& to) {
    return SqlError(errorMessage<206>(typeName(from), typeName(to)));
}

SqlError implicitNotAllowed(const Type& from, const Type& to) {
    return SqlError(errorMessage<257>(typeName(from), typeName(to)));
}

SqlError explicitNotAllowed(const Type& from, const Type& to) {
    return SqlError(errorMessage<529>(typeName(from), typeName(to)));
}

SqlError incompatible(const Type& a, const Type& b, std::string_view operatorName) {
    return SqlError(errorMessage<402>(typeName(a), typeName(b), operatorName));
}

SqlError invalidOperand(const Type& type, std::string_view operatorName) {
    return SqlError(errorMessage<8117>(typeName(type), operatorName));
}

SqlError invalidFloatOperation() {
    return SqlError(errorMessage<3623>());
}

SqlError invalidArgument(const Type& type, int argument, std::string_view function) {
    return SqlError(errorMessage<8116>(typeName(type), argument, function));
}

}  // namespace sandbox::errors
