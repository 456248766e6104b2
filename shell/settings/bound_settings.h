// Settings bound to the controls that show them: read from the store, written to it, copied to the engine, enabled by
// each other, all as their rows say. The window binds windowSettings(), the preferences dialog preferenceSettings().
#pragma once

#include <QObject>
#include <span>
#include <vector>

#include "shell/settings/setting_rows.h"

namespace torvik {

class SettingsStore;

class BoundSettings : public QObject {
public:
    // Finds each row's control under root by its object name; raises std::invalid_argument where one is missing. The
    // root and the engine must outlive it.
    BoundSettings(QObject& root, std::span<const SettingRow> rows, TTorvikPos& engine);

    // Each setting by itself: one that is missing or mistyped takes its default.
    void read(const SettingsStore& store);
    // Those that are kept.
    void write(SettingsStore& store) const;
    // Copies those that reach the engine at this moment.
    void apply(SettingMoment moment) const;

    [[nodiscard]] QVariant value(const char* control) const;
    void set(const char* control, const QVariant& value);

private:
    struct Binding {
        const SettingRow* row;
        QObject* control;
    };

    void changed(const Binding& changed);
    void enableBy(const Binding& master);
    [[nodiscard]] const Binding& binding(const char* control) const;

    std::vector<Binding> bindings_;
    TTorvikPos& engine_;
};

}  // namespace torvik
