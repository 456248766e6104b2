// The modes in which a lock can be held, what they let others hold at the same time, and SQL Server's names for them.
// Used by the lock manager, and by the procedures and functions of application locks.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace sandbox {

enum class LockMode : std::uint8_t { IntentShared, Shared, Update, IntentExclusive, Exclusive };

// Everything that one owner holds on one resource. Modes add up: Shared and IntentExclusive together are what SQL
// Server calls SharedIntentExclusive.
class LockModes {
public:
    constexpr LockModes() = default;
    constexpr LockModes(LockMode mode) : bits_(bit(mode)) {}

    constexpr LockModes& operator|=(LockModes more) {
        bits_ |= more.bits_;
        return *this;
    }
    [[nodiscard]] constexpr bool empty() const { return bits_ == 0; }
    [[nodiscard]] constexpr bool has(LockMode mode) const { return (bits_ & bit(mode)) != 0; }
    // Whether two owners may hold these at the same time.
    [[nodiscard]] bool goesWith(LockModes other) const;
    // As APPLOCK_MODE names it; "NoLock" where nothing is held.
    [[nodiscard]] std::string_view name() const;

private:
    static constexpr std::uint8_t bit(LockMode mode) { return static_cast<std::uint8_t>(1U << static_cast<int>(mode)); }

    std::uint8_t bits_ = 0;
};

// The mode of a name that sp_getapplock takes, without case; none where it takes no such name.
[[nodiscard]] std::optional<LockMode> lockModeOf(std::string_view name);

}  // namespace sandbox
