// Finding scripts by name and cutting them into batches.
#include "sandbox/chain/scripts.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string>
#include <utility>

namespace sandbox::chain {

namespace {

constexpr int kOldestVersion = 71;  // what the script "till" itself makes
constexpr std::string_view kUpgradePrefix = "till_";

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
    std::vector<std::pair<int, std::string_view>> upgrades;
    for (const EmbeddedScript& script : embeddedScripts()) {
        if (!script.name.starts_with(kUpgradePrefix)) continue;
        int made = 0;
        const std::string_view digits = script.name.substr(kUpgradePrefix.size());
        std::from_chars(digits.data(), digits.data() + digits.size(), made);
        if (made <= version) upgrades.emplace_back(made, script.name);
    }
    std::sort(upgrades.begin(), upgrades.end());
    if ((upgrades.empty() ? kOldestVersion : upgrades.back().first) != version)
        throw std::invalid_argument("no script makes a till of version " + std::to_string(version));

    std::vector<std::string_view> names{"till"};
    for (const auto& [made, name] : upgrades) names.push_back(name);
    return names;
}

}  // namespace sandbox::chain
