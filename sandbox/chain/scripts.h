// The T-SQL scripts of the demo chain, built into the library: back_office..., till, till_<version>.
#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace sandbox::chain {

struct EmbeddedScript {
    std::string_view name;
    std::string_view text;
};

[[nodiscard]] std::span<const EmbeddedScript> embeddedScripts();

// The batches of a script, between its lines "go". Raises std::invalid_argument for a name that is not there.
[[nodiscard]] std::vector<std::string_view> batchesOf(std::string_view script);

// The versions that there are scripts for, oldest first.
[[nodiscard]] std::vector<int> tillVersions();

// The scripts that make a till of `version`, in order: till, then each till_<v> up to it. Raises std::invalid_argument
// when no script makes exactly that version.
[[nodiscard]] std::vector<std::string_view> tillScripts(int version);

}  // namespace sandbox::chain
