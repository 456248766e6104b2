// Names of objects as texts hold them: "db.schema.name", "db..t", "[odd name]". Used wherever a name comes as a value
// and not as part of a statement.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

struct NameParts {
    std::string database, schema, name;  // empty where left out
};

// None where the text has more than three parts. Brackets and double quotes are taken off, blanks around parts as well.
[[nodiscard]] std::optional<NameParts> splitObjectName(std::string_view text);

}  // namespace sandbox
