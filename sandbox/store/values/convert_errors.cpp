// Texts of the errors about values.
#include "sandbox/store/values/convert_errors.h"

#include <cstdio>

namespace sandbox::errors {

std::string valueTypeName(const Type& type) {
    return type.id == TypeId::Decimal ? "numeric" : typeName(type);
}

SqlError make(int number, int severity, int state, std::string text, Effect effect) {
    return SqlError({.number = number, .severity = severity, .state = state, .text = std::move(text)}, effect);
}

SqlError conversionFailed(const Type& from, std::string_view value, const Type& to) {
    return make(245, 16, 1,
                "Conversion failed when converting the " + valueTypeName(from) + " value '" + std::string(value) +
                    "' to data type " + valueTypeName(to) + ".",
                Effect::Batch);
}

SqlError integerTextTooLarge(const Type& from, std::string_view value, const Type& to) {
    const std::string start =
        "The conversion of the " + valueTypeName(from) + " value '" + std::string(value) + "' overflowed an ";
    if (to.id == TypeId::Int) return make(248, 16, 1, start + "int column.", Effect::Batch);
    const bool tiny = to.id == TypeId::TinyInt;
    return make(244, 16, tiny ? 1 : 2, start + (tiny ? "INT1" : "INT2") + " column. Use a larger integer column.",
                Effect::Batch);
}

SqlError errorConverting(const Type& from, const Type& to) {
    return make(8114, 16, 5, "Error converting data type " + valueTypeName(from) + " to " + valueTypeName(to) + ".",
                Effect::Batch);
}

SqlError overflowConverting(std::string_view what, const Type& to, int state) {
    return make(
        8115, 16, state,
        "Arithmetic overflow error converting " + std::string(what) + " to data type " + valueTypeName(to) + ".");
}

SqlError expressionOverflow(const Type& to) {
    return overflowConverting("expression", to, 2);
}

SqlError valueOverflow(const Type& to, std::string_view value) {
    return make(
        220, 16, to.id == TypeId::TinyInt ? 2 : 1,
        "Arithmetic overflow error for data type " + valueTypeName(to) + ", value = " + std::string(value) + ".");
}

SqlError floatOverflow(const Type& to, double value) {
    char text[400];
    std::snprintf(text, sizeof text, "%f", value);
    const int state = to.id == TypeId::TinyInt ? 1 : to.id == TypeId::SmallInt ? 2 : 3;
    return make(232, 16, state, "Arithmetic overflow error for type " + valueTypeName(to) + ", value = " + text + ".");
}

SqlError dateSyntax(const Type& to) {
    if (to.id == TypeId::SmallDateTime) {
        return make(295, 16, 3, "Conversion failed when converting character string to smalldatetime data type.",
                    Effect::Batch);
    }
    return make(241, 16, 1, "Conversion failed when converting date and/or time from character string.", Effect::Batch);
}

SqlError dateRange(const Type& from, const Type& to) {
    return make(242, 16, 3,
                "The conversion of a " + valueTypeName(from) + " data type to a " + valueTypeName(to) +
                    " data type resulted in an out-of-range value.",
                Effect::Batch);
}

SqlError smallDateTimeRange() {
    return make(
        298, 16, 1,
        "The conversion from datetime data type to smalldatetime data type resulted in a smalldatetime overflow "
        "error.",
        Effect::Batch);
}

SqlError moneySyntax() {
    return make(235, 16, 0, "Cannot convert a char value to money. The char value has incorrect syntax.",
                Effect::Batch);
}

SqlError moneySpace(const Type& to) {
    return make(234, 16, 2,
                "There is insufficient result space to convert a money value to " + valueTypeName(to) + ".");
}

SqlError guidSyntax() {
    return make(8169, 16, 2, "Conversion failed when converting from a character string to uniqueidentifier.",
                Effect::Batch);
}

SqlError guidSpace() {
    return make(8170, 16, 2, "Insufficient result space to convert uniqueidentifier value to char.");
}

SqlError invalidStyle(int style, const Type& from) {
    return make(281, 16, 1,
                std::to_string(style) + " is not a valid style number when converting from " + valueTypeName(from) +
                    " to a character string.");
}

SqlError truncated() {
    return make(8152, 16, 14, "String or binary data would be truncated.");
}
SqlError divideByZero() {
    return make(8134, 16, 1, "Divide by zero error encountered.");
}

SqlError operandClash(const Type& from, const Type& to) {
    return make(206, 16, 2, "Operand type clash: " + typeName(from) + " is incompatible with " + typeName(to));
}

SqlError implicitNotAllowed(const Type& from, const Type& to) {
    return make(257, 16, 3,
                "Implicit conversion from data type " + typeName(from) + " to " + typeName(to) +
                    " is not allowed. Use the CONVERT function to run this query.");
}

SqlError explicitNotAllowed(const Type& from, const Type& to) {
    return make(529, 16, 2,
                "Explicit conversion from data type " + typeName(from) + " to " + typeName(to) + " is not allowed.");
}

SqlError incompatible(const Type& a, const Type& b, std::string_view operatorName) {
    return make(402, 16, 1,
                "The data types " + typeName(a) + " and " + typeName(b) + " are incompatible in the " +
                    std::string(operatorName) + " operator.");
}

SqlError invalidOperand(const Type& type, std::string_view operatorName) {
    return make(8117, 16, 1,
                "Operand data type " + typeName(type) + " is invalid for " + std::string(operatorName) + " operator.");
}

SqlError invalidFloatOperation() {
    return make(3623, 16, 1, "An invalid floating point operation occurred.");
}

SqlError invalidArgument(const Type& type, int argument, std::string_view function) {
    return make(8116, 16, 1,
                "Argument data type " + typeName(type) + " is invalid for argument " + std::to_string(argument) +
                    " of " + std::string(function) + " function.");
}

}  // namespace sandbox::errors
