// Data types as they are declared, with the defaults and limits of their sizes.
#include <algorithm>
#include <array>
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {
namespace {

enum class Size { None, Bytes, Characters, Digits, Bits, Fraction };

struct TypeRow {
    std::string_view name;
    TypeId id;
    Size size;
    bool max = false;  // (max) is allowed
};

constexpr auto kTypes = std::to_array<TypeRow>({
    {"bigint", TypeId::BigInt, Size::None},
    {"binary", TypeId::Binary, Size::Bytes},
    {"bit", TypeId::Bit, Size::None},
    {"char", TypeId::Char, Size::Bytes},
    {"character", TypeId::Char, Size::Bytes},
    {"date", TypeId::Date, Size::None},
    {"datetime", TypeId::DateTime, Size::None},
    {"datetime2", TypeId::DateTime2, Size::Fraction},
    {"dec", TypeId::Decimal, Size::Digits},
    {"decimal", TypeId::Decimal, Size::Digits},
    {"float", TypeId::Float, Size::Bits},
    {"image", TypeId::Image, Size::None},
    {"int", TypeId::Int, Size::None},
    {"integer", TypeId::Int, Size::None},
    {"money", TypeId::Money, Size::None},
    {"nchar", TypeId::NChar, Size::Characters},
    {"ntext", TypeId::NText, Size::None},
    {"numeric", TypeId::Decimal, Size::Digits},
    {"nvarchar", TypeId::NVarChar, Size::Characters, true},
    {"real", TypeId::Real, Size::None},
    {"rowversion", TypeId::Binary, Size::None},
    {"smalldatetime", TypeId::SmallDateTime, Size::None},
    {"smallint", TypeId::SmallInt, Size::None},
    {"smallmoney", TypeId::SmallMoney, Size::None},
    {"sysname", TypeId::NVarChar, Size::None},
    {"text", TypeId::Text, Size::None},
    {"time", TypeId::Time, Size::Fraction},
    {"timestamp", TypeId::Binary, Size::None},
    {"tinyint", TypeId::TinyInt, Size::None},
    {"uniqueidentifier", TypeId::UniqueIdentifier, Size::None},
    {"varbinary", TypeId::VarBinary, Size::Bytes, true},
    {"varchar", TypeId::VarChar, Size::Bytes, true},
});

std::string lowerCase(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

const TypeRow* findType(std::string_view name) {
    const std::string lower = lowerCase(name);
    const auto* row = std::ranges::find(kTypes, lower, &TypeRow::name);
    return row == kTypes.end() ? nullptr : row;
}

}  // namespace

// [schema.]name [(size)] | DOUBLE PRECISION | [NATIONAL] CHARACTER [VARYING] [(size)] | NATIONAL TEXT | BINARY VARYING
ast::TypeName Parser::typeName(TypeUse use, const std::string& whose) {
    ast::TypeName type;
    type.place = peek().place;
    if (acceptWord("DOUBLE")) {
        expectWord("PRECISION");
        type.written = "float";
    } else if (acceptWord("NATIONAL")) {
        const std::string word = expectAnyWord({"CHARACTER", "CHAR", "TEXT"});
        type.written = word == "TEXT" ? "ntext" : acceptWord("VARYING") ? "nvarchar" : "nchar";
    } else {
        if (seesWord("CURSOR")) unsupported("CURSOR");
        const ast::ObjectName name = objectName();
        type.written = name.written();
        if (name.schema.empty() || lowerCase(name.schema) == "sys") type.written = name.name;
        const TypeRow* row = findType(type.written);
        if (row != nullptr && acceptWord("VARYING")) {
            const bool sized = row->size == Size::Bytes || row->size == Size::Characters;
            if (!sized || (row->id != TypeId::Char && row->id != TypeId::NChar && row->id != TypeId::Binary)) {
                unexpected();
            }
            type.written = row->id == TypeId::Char ? "varchar" : row->id == TypeId::NChar ? "nvarchar" : "varbinary";
        }
    }
    typeSize(type, use, whose);
    return type;
}

// ( digits [, digits] ) | ( MAX )
void Parser::typeSize(ast::TypeName& name, TypeUse use, const std::string& whose) {
    const TypeRow* row = findType(name.written);
    std::int64_t first = -1;
    std::int64_t second = -1;
    bool max = false;
    const ast::Place place = peek().place;
    if (acceptSymbol("(")) {
        if (seesSymbol("-") || seesSymbol("+")) unexpected();
        max = acceptWord("MAX");
        if (!max) first = integer();
        if (!max && acceptSymbol(",")) second = integer();
        expectSymbol(")");
    }
    if (row == nullptr) {
        name.known = false;
        return;
    }
    const auto invalid = [&](std::int64_t size) { fail(errorMessage<1001>(place.line, size), place); };
    Type& type = name.type;
    type.id = row->id;
    if (row->id == TypeId::Decimal) type.numericName = lowerCase(name.written) == "numeric";
    if (lowerCase(name.written) == "sysname") type.length = 128;
    if (row->id == TypeId::Binary && row->size == Size::None) {
        type.rowVersion = true;
        type.length = 8;
    }
    if ((max && !row->max) || (second >= 0 && row->size != Size::Digits)) {
        fail(errorMessage<2716>(name.written), place);
    }
    if (first == 0 && row->size != Size::Fraction) invalid(0);
    switch (row->size) {
        case Size::None:
            if (first < 0) break;
            fail(errorMessage<2716>(name.written), place);
        case Size::Bytes:
        case Size::Characters: {
            const std::int64_t limit = row->size == Size::Bytes ? 8000 : 4000;
            if (first > limit) {
                fail(errorMessage<131>(first, whose.empty() ? "type '" + name.written + "'" : whose)
                         .withState(whose.starts_with("column") ? 2 : 3),
                     place);
            }
            const int missing = use == TypeUse::Cast ? 30 : 1;
            type.length = max ? Type::kMax : first > 0 ? static_cast<int>(first) : missing;
            break;
        }
        case Size::Digits:
            if (first > 38) {
                fail(errorMessage<2750>(first), place);
            }
            type.precision = static_cast<std::uint8_t>(first > 0 ? first : 18);
            if (second > type.precision) {
                fail(errorMessage<192>(), place);
            }
            type.scale = static_cast<std::uint8_t>(second > 0 ? second : 0);
            break;
        case Size::Bits:
            if (first > 53) invalid(first);
            if (first > 0 && first <= 24) type.id = TypeId::Real;
            break;
        case Size::Fraction:
            if (first > 7) {
                fail(errorMessage<1002>(place.line, first), place);
            }
            type.scale = static_cast<std::uint8_t>(first >= 0 ? first : 7);
            break;
    }
}

}  // namespace sandbox
