// The tree that a batch becomes, or the error it raises, as one text.
#pragma once

#include <string>
#include <string_view>

#include "sandbox/store/values/error.h"
#include "sandbox/tsql/parse/parser.h"

namespace sandbox {

// The tree's dump, or "NUMBER SEVERITY line N: TEXT" of each message, a line each.
inline std::string parsed(std::string_view text, const ParseOptions& options = {}) {
    try {
        return ast::dump(parseBatch(text, options));
    } catch (const SqlError& error) {
        std::string told;
        for (const Message& message : error.messages) {
            if (!told.empty()) told += '\n';
            told += std::to_string(message.number) + " " + std::to_string(message.severity) + " line " +
                    std::to_string(message.line) + ": " + message.text;
        }
        return told;
    }
}

}  // namespace sandbox
