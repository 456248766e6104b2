// Values on the wire, in the form that their WireType says ([MS-TDS] 2.2.5.5).
#pragma once

#include "sandbox/store/values/value.h"
#include "sandbox/tds/bytes.h"
#include "sandbox/tds/type_info.h"

namespace sandbox::tds {

// In rows, the values of text, ntext and image come after a text pointer; in parameters and return values they do not.
enum class Place { Row, Parameter };

// A value that its type does not have: a day out of range, a decimal of too many digits, a float that is no number.
class InvalidValue : public std::runtime_error {
public:
    explicit InvalidValue(TypeId valueType) : std::runtime_error("the value is not one of its type"), type(valueType) {}
    TypeId type;
};

// Raises std::logic_error where the value is not of the form that value.h names for the type, or does not fit it: the
// peer would misread all that follows.
void writeValue(Writer& out, const WireType& type, const Value& value, Place place);

// Raises InvalidValue, StreamError or Truncated.
[[nodiscard]] Value readValue(Reader& in, const WireType& type, Place place);

}  // namespace sandbox::tds
