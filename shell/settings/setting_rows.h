// The one list of settings. A row says what a setting is called in the user's store, its type and default, which
// control shows it, which field of the engine it is and when it goes there, and what enables it. Reading, writing,
// applying and enabling are made from the rows by BoundSettings; a new setting is a row here and a place for its
// control in a panel. See docs/start-up.md.
#pragma once

#include <QVariant>
#include <span>

namespace torvik {

class TTorvikPos;

enum class SettingType { Boolean, Integer, Index, Text, Memo, Time };

// When a setting is copied to the engine; a row names the moments that apply to it.
enum SettingMoment : unsigned {
    kAtStart = 1,    // the window has been made
    kAtChange = 2,   // the operator changes it, or it is read
    kAtArming = 4,   // the automatic run is armed or disarmed
    kAtCommand = 8,  // a command begins
    kAlways = kAtStart | kAtChange | kAtArming | kAtCommand,
};

struct SettingRow {
    const char* name;  // in the store; a preference's begins with "Smtp/", the sub-key; null: not kept
    SettingType type;
    const char* defaultText;  // as it would stand in the store
    const char* control;      // object name
    const char* label;        // with the control, empty where the panel has words of its own
    unsigned moments = 0;
    void (*apply)(TTorvikPos& engine, const QVariant& value) = nullptr;
    const char* enabledBy = nullptr;  // the control that enables this one; null: nothing does
    int enabledAt = 1;                // at this value of it: 1 is ticked
    bool clearedWithIt = false;       // and is emptied when that one disables it
    bool tickedOnlyIfEnabled = false;
};

// Both in the order in which they are read and written.
[[nodiscard]] std::span<const SettingRow> windowSettings();
[[nodiscard]] std::span<const SettingRow> preferenceSettings();

// The row of a name in the store; raises std::invalid_argument for a name that no row has.
[[nodiscard]] const SettingRow& settingNamed(const char* name);
// The row of a control; raises std::invalid_argument likewise.
[[nodiscard]] const SettingRow& settingOf(const char* control);

}  // namespace torvik
