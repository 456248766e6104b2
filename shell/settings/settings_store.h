// The settings as they are kept for the user, under the names that the store has always had. On Windows the store is
// the registry key Software\Vestmar\TorvikPosSync of the current user, elsewhere the file Vestmar/TorvikPosSync.conf in
// the user's configuration folder. No value comes from anywhere else. The names are those of setting_rows.h.
#pragma once

#include <QSettings>
#include <QString>
#include <QVariant>
#include <memory>

#include "shell/settings/setting_rows.h"

namespace torvik {

class SettingsStore {
public:
    SettingsStore();                              // the user's own
    explicit SettingsStore(const QString& file);  // an ini file, for tests

    // The stored value of the row's type; the default where it is missing or of another type.
    [[nodiscard]] QVariant read(const SettingRow& row) const;
    [[nodiscard]] QVariant read(const char* name) const { return read(settingNamed(name)); }
    void write(const char* name, const QVariant& value);
    // Writes to disk; false when it could not be.
    bool save();

    // Sizes and places of the window. They stand in a store of their own, since they are kept without a command.
    [[nodiscard]] QByteArray readLayout(const char* name) const;
    void writeLayout(const char* name, const QByteArray& value);

private:
    std::unique_ptr<QSettings> settings_;
    std::unique_ptr<QSettings> layout_;
};

// What a stored or default text of the row is as a value of its type.
[[nodiscard]] QVariant defaultOf(const SettingRow& row);

}  // namespace torvik
