// Names of objects and columns.
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {

// name {. [name]}, where inner parts may be left out: "db..t"
std::vector<std::string> Parser::nameParts() {
    std::vector<std::string> parts;
    while (seesSymbol(".")) {  // "..t" and ".t" begin with left out parts
        take();
        parts.emplace_back();
    }
    parts.push_back(identifier());
    while (acceptSymbol(".")) {
        if (seesSymbol(".")) {
            parts.emplace_back();
        } else if (seesAnyWord({"IDENTITYCOL", "ROWGUIDCOL"})) {
            parts.push_back(take().text);
        } else {
            parts.push_back(identifier());
        }
    }
    return parts;
}

// [[database.][schema].]name
ast::ObjectName Parser::objectName() {
    const ast::Place place = peek().place;
    return makeObjectName(nameParts(), place);
}

ast::ObjectName Parser::makeObjectName(const std::vector<std::string>& parts, const ast::Place& place) const {
    const std::size_t count = parts.size();
    if (count == 4 && !parts[0].empty()) {
        fail(errorMessage<7202>(parts[0]), place);
    }
    if (count > 4) {
        std::string written;
        for (const std::string& part : parts) written += (written.empty() ? "" : ".") + part;
        fail(errorMessage<117>(written), place);
    }
    ast::ObjectName name;
    name.place = place;
    name.name = parts.back();
    if (count > 1) name.schema = parts[count - 2];
    if (count > 2) name.database = parts[count - 3];
    return name;
}

}  // namespace sandbox
