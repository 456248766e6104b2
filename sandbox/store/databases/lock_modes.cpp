// The table of lock modes.
#include "sandbox/store/databases/lock_modes.h"

#include <algorithm>
#include <array>

#include "sandbox/store/values/collation.h"

namespace sandbox {

namespace {

struct Row {
    LockMode mode;
    std::string_view name;
    std::array<bool, 5> goesWith;  // IntentShared, Shared, Update, IntentExclusive, Exclusive held by another
};

constexpr std::array<Row, 5> kModes = {{
    {LockMode::IntentShared, "IntentShared", {true, true, true, true, false}},
    {LockMode::Shared, "Shared", {true, true, true, false, false}},
    {LockMode::Update, "Update", {true, true, false, false, false}},
    {LockMode::IntentExclusive, "IntentExclusive", {true, false, false, true, false}},
    {LockMode::Exclusive, "Exclusive", {false, false, false, false, false}},
}};

}  // namespace

bool LockModes::goesWith(LockModes other) const {
    return std::all_of(kModes.begin(), kModes.end(), [&](const Row& mine) {
        if (!has(mine.mode)) return true;
        return std::all_of(kModes.begin(), kModes.end(), [&](const Row& theirs) {
            return !other.has(theirs.mode) || mine.goesWith.at(static_cast<std::size_t>(theirs.mode));
        });
    });
}

std::string_view LockModes::name() const {
    if (has(LockMode::Exclusive)) return "Exclusive";
    if (has(LockMode::IntentExclusive)) {
        if (has(LockMode::Update)) return "UpdateIntentExclusive";
        return has(LockMode::Shared) ? "SharedIntentExclusive" : "IntentExclusive";
    }
    if (has(LockMode::Update)) return "Update";
    if (has(LockMode::Shared)) return "Shared";
    return has(LockMode::IntentShared) ? "IntentShared" : "NoLock";
}

std::optional<LockMode> lockModeOf(std::string_view name) {
    const auto row = std::find_if(kModes.begin(), kModes.end(), [&](const Row& r) { return sameName(r.name, name); });
    return row == kModes.end() ? std::nullopt : std::optional(row->mode);
}

}  // namespace sandbox
