// A SQL Server data type as the whole sandbox knows it: on the wire, in the catalogue, in expressions and in storage.
// Used by every box of the sandbox. The order of TypeId is the order of data type precedence, lowest first.
#pragma once

#include <cstdint>
#include <string>

namespace sandbox {

// [MS-TDS] 2.2.5.4 and the documented data type precedence: of two operands the one with the higher id wins.
enum class TypeId : std::uint8_t {
    Null,  // the untyped NULL literal; becomes int where a column needs a type
    Binary,
    VarBinary,
    Char,
    VarChar,
    NChar,
    NVarChar,
    UniqueIdentifier,
    Image,
    Text,
    NText,
    Bit,
    TinyInt,
    SmallInt,
    Int,
    BigInt,
    SmallMoney,
    Money,
    Decimal,  // numeric is the same type under another name
    Real,
    Float,
    Time,
    Date,
    SmallDateTime,
    DateTime,
    DateTime2,
};

struct Type {
    static constexpr int kMax = -1;  // length of varchar(max), nvarchar(max), varbinary(max)

    TypeId id = TypeId::Null;
    int length = 0;              // characters (char family) or bytes (binary family); kMax for (max)
    std::uint8_t precision = 0;  // decimal: 1 to 38
    std::uint8_t scale = 0;      // decimal: 0 to precision; time and datetime2: 0 to 7
    bool numericName = false;    // declared as numeric: only its name differs from decimal
    bool rowVersion = false;     // timestamp: a binary(8) that a table fills in by itself

    friend bool operator==(const Type&, const Type&) = default;
};

[[nodiscard]] bool isInteger(TypeId id);       // bit, tinyint, smallint, int, bigint
[[nodiscard]] bool isExactNumeric(TypeId id);  // the integers, money and decimal
[[nodiscard]] bool isNumeric(TypeId id);       // exact and approximate
[[nodiscard]] bool isCharacter(TypeId id);     // char, varchar, nchar, nvarchar, text, ntext
[[nodiscard]] bool isUnicode(TypeId id);       // nchar, nvarchar, ntext
[[nodiscard]] bool isBinary(TypeId id);        // binary, varbinary, image
[[nodiscard]] bool isLob(TypeId id);           // text, ntext, image
[[nodiscard]] bool isTemporal(TypeId id);      // date, time, smalldatetime, datetime, datetime2

// "int", "varchar": the bare name, as error messages and sys.types show it.
[[nodiscard]] std::string typeName(const Type& type);
// "varchar(10)", "decimal(9,3)", "nvarchar(max)": as a declaration is written.
[[nodiscard]] std::string typeDeclaration(const Type& type);

}  // namespace sandbox
