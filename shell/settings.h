// The settings of the main window and the preferences as they are kept for the user: one row a setting, under the names
// that the store has always had. On Windows the store is the registry key Software\Vestmar\TorvikPosSync of the current
// user, elsewhere the file Vestmar/TorvikPosSync.conf in the user's configuration folder.
#pragma once

#include <QSettings>
#include <QString>
#include <QVariant>
#include <memory>
#include <span>

namespace torvik {

enum class SettingType { Boolean, Integer, Text, Time };

struct SettingRow {
    const char* name;
    SettingType type;
    const char* defaultText;  // as it would stand in the store
};

// The rows in the order in which they are read and written.
[[nodiscard]] std::span<const SettingRow> windowSettings();
[[nodiscard]] std::span<const SettingRow> preferenceSettings();  // named "Smtp/..."

class SettingsStore {
public:
    SettingsStore();                              // the user's own
    explicit SettingsStore(const QString& file);  // an ini file, for tests

    // The stored value of the row's type; the default where it is missing or of another type.
    [[nodiscard]] QVariant read(const char* name) const;
    void write(const char* name, const QVariant& value);
    // Writes to disk; false when it could not be.
    bool save();

private:
    std::unique_ptr<QSettings> settings_;
};

}  // namespace torvik
