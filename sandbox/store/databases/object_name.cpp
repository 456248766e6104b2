// Cutting a name at its dots.
#include "sandbox/store/databases/object_name.h"

#include <vector>

namespace sandbox {

std::optional<NameParts> splitObjectName(std::string_view text) {
    std::vector<std::string> parts{""};
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '.') {
            parts.emplace_back();
        } else if (c == '[' || c == '"') {
            const char close = c == '[' ? ']' : '"';
            for (++i; i < text.size(); ++i) {
                if (text[i] != close) {
                    parts.back() += text[i];
                } else if (i + 1 < text.size() && text[i + 1] == close) {
                    parts.back() += text[i++];
                } else {
                    break;
                }
            }
        } else if (c != ' ' || !parts.back().empty()) {
            parts.back() += c;
        }
    }
    for (std::string& part : parts) part.erase(part.find_last_not_of(' ') + 1);
    if (parts.size() > 3) return std::nullopt;
    parts.insert(parts.begin(), 3 - parts.size(), "");
    return NameParts{parts[0], parts[1], parts[2]};
}

}  // namespace sandbox
