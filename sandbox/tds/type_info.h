// How a column or parameter travels: the server's types against TYPE_INFO of [MS-TDS] 2.2.5.6, for each protocol
// version. Used for column descriptions, parameters, return values and bulk rows.
#pragma once

#include <cstdint>
#include <string>

#include "sandbox/store/values/type.h"
#include "sandbox/tds/bytes.h"
#include "sandbox/tds/protocol.h"

namespace sandbox::tds {

// A type of the protocol that this server does not take. The rest of the message cannot be read.
class UnsupportedType : public std::runtime_error {
public:
    UnsupportedType(std::uint8_t typeCode, const std::string& name)
        : std::runtime_error("the data type " + name + " is not supported"), code(typeCode) {}
    std::uint8_t code;
};

inline constexpr std::uint32_t kPlpSize = 0xFFFF;  // size of a (max) type: its values come in chunks

// A server tells the greatest size for a decimal of any precision, and bulk loads rely on it; a value has what its
// precision needs.
inline constexpr std::uint32_t kDecimalSize = 17;

struct WireType {
    std::uint8_t code = wire::kNull;
    std::uint32_t size = 0;  // in bytes, as TYPE_INFO tells it
    std::uint8_t precision = 0;
    std::uint8_t scale = 0;
    Type type;                    // what the values are inside the server
    bool temporalAsText = false;  // a type that the version lacks, told as nvarchar

    [[nodiscard]] bool plp() const;
};

// Types that are not nullable take their fixed forms, as SQL Server sends them.
[[nodiscard]] WireType wireType(const Type& type, bool nullable, Version version);

void writeTypeInfo(Writer& out, const WireType& type);

// Raises UnsupportedType for xml, sql_variant, datetimeoffset, CLR and table types; StreamError for anything unknown.
[[nodiscard]] WireType readTypeInfo(Reader& in);

}  // namespace sandbox::tds
