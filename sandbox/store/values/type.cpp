// Type names and families.
#include "sandbox/store/values/type.h"

#include <array>

namespace sandbox {
namespace {

// In the order of TypeId.
constexpr std::array<const char*, 26> kNames = {
    "NULL",    "binary", "varbinary", "char",    "varchar",  "nchar",         "nvarchar", "uniqueidentifier", "image",
    "text",    "ntext",  "bit",       "tinyint", "smallint", "int",           "bigint",   "smallmoney",       "money",
    "decimal", "real",   "float",     "time",    "date",     "smalldatetime", "datetime", "datetime2",
};
static_assert(kNames.size() == static_cast<std::size_t>(TypeId::DateTime2) + 1);

}  // namespace

bool isInteger(TypeId id) {
    return id >= TypeId::Bit && id <= TypeId::BigInt;
}
bool isExactNumeric(TypeId id) {
    return id >= TypeId::Bit && id <= TypeId::Decimal;
}
bool isNumeric(TypeId id) {
    return id >= TypeId::Bit && id <= TypeId::Float;
}

bool isCharacter(TypeId id) {
    return (id >= TypeId::Char && id <= TypeId::NVarChar) || id == TypeId::Text || id == TypeId::NText;
}

bool isUnicode(TypeId id) {
    return id == TypeId::NChar || id == TypeId::NVarChar || id == TypeId::NText;
}
bool isBinary(TypeId id) {
    return id == TypeId::Binary || id == TypeId::VarBinary || id == TypeId::Image;
}
bool isLob(TypeId id) {
    return id >= TypeId::Image && id <= TypeId::NText;
}
bool isTemporal(TypeId id) {
    return id >= TypeId::Time;
}

std::string typeName(const Type& type) {
    if (type.id == TypeId::Decimal && type.numericName) return "numeric";
    if (type.rowVersion) return "timestamp";
    return kNames[static_cast<std::size_t>(type.id)];
}

std::string typeDeclaration(const Type& type) {
    const std::string name = typeName(type);
    if (type.rowVersion) return name;
    switch (type.id) {
        case TypeId::Binary:
        case TypeId::VarBinary:
        case TypeId::Char:
        case TypeId::VarChar:
        case TypeId::NChar:
        case TypeId::NVarChar:
            return name + "(" + (type.length == Type::kMax ? "max" : std::to_string(type.length)) + ")";
        case TypeId::Decimal:
            return name + "(" + std::to_string(type.precision) + "," + std::to_string(type.scale) + ")";
        case TypeId::Time:
        case TypeId::DateTime2: return name + "(" + std::to_string(type.scale) + ")";
        default: return name;
    }
}

}  // namespace sandbox
