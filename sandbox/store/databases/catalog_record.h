// How a catalogue entry is written into its database's file: one JSON text an object. Used by Database and Connection.
#pragma once

#include <string>
#include <string_view>

#include "sandbox/store/databases/catalog.h"

namespace sandbox {

[[nodiscard]] std::string toRecord(const ObjectDef& object);
// Raises std::runtime_error where the text is not such a record.
[[nodiscard]] ObjectDef fromRecord(std::string_view record);

}  // namespace sandbox
