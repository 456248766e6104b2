// Finding scripts by name and cutting them into batches.
#include "sandbox/chain/scripts.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <stdexcept>
#include <string>

namespace sandbox::chain {

namespace {

constexpr int kOldestVersion = 71;  // what the script "till" itself makes
constexpr std::string_view kOldestScript = "till";
constexpr std::string_view kUpgradePrefix = "till_";

// The scripts that go on from an older version, by the version that they make.
std::map<int, std::string_view> upgrades() {
    std::map<int, std::string_view> all;
    for (const EmbeddedScript& script : embeddedScripts()) {
        if (!script.name.starts_with(kUpgradePrefix)) continue;
        const std::string_view digits = script.name.substr(kUpgradePrefix.size());
        int made = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), made);
        all.emplace(made, script.name);
    }
    return all;
}

}  // namespace

std::vector<std::string_view> batchesOf(std::string_view script) {
    const auto all = embeddedScripts();
    const auto found = std::find_if(all.begin(), all.end(), [&](const EmbeddedScript& s) { return s.name == script; });
    if (found == all.end()) throw std::invalid_argument("no script is named " + std::string(script));

    std::vector<std::string_view> batches;
    const std::string_view text = found->text;
    std::size_t begin = 0;
    while (begin < text.size()) {
        const std::size_t go = text.find("\ngo\n", begin);
        const std::size_t end = go == std::string_view::npos ? text.size() : go;
        batches.push_back(text.substr(begin, end - begin));
        begin = go == std::string_view::npos ? text.size() : go + 4;
    }
    return batches;
}

std::vector<std::string_view> tillScripts(int version) {
    const auto all = upgrades();
    if (version != kOldestVersion && !all.contains(version))
        throw std::invalid_argument("no script makes a till of version " + std::to_string(version));

    std::vector<std::string_view> names{kOldestScript};
    for (const auto& [made, name] : all)
        if (made <= version) names.push_back(name);
    return names;
}

std::vector<int> tillVersions() {
    std::vector<int> versions{kOldestVersion};
    for (const auto& [made, name] : upgrades()) versions.push_back(made);
    return versions;
}

}  // namespace sandbox::chain
