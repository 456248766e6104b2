// The preferences: what does not stand in the main window. Made once and kept; the engine gets new values at the next
// arming or the next command, not at OK. The settings are preferenceSettings() of setting_rows.h.
#pragma once

#include <QDialog>
#include <QStringList>
#include <memory>

#include "shell/settings/bound_settings.h"

class QGridLayout;

namespace torvik {

class TfrmSyncPreferences : public QDialog {
    Q_OBJECT

public:
    // Store and engine must outlive it.
    TfrmSyncPreferences(SettingsStore& store, TTorvikPos& engine, QWidget* parent = nullptr);

    // Each value by itself: a missing one leaves its control at the form's default.
    void LoadFromRegistry();
    // Adds "1" for Monday to "7" for Sunday, for each ticked box; nothing for no list.
    void GetDeleteItemsWeekDays(QStringList* AList) const;
    [[nodiscard]] const BoundSettings& settings() const { return *settings_; }

    void accept() override;  // keeps all values
    void reject() override;  // throws the edits away

Q_SIGNALS:
    void savingFailed();

private:
    [[nodiscard]] QWidget* generalTab();
    [[nodiscard]] QWidget* mailTab();
    [[nodiscard]] QWidget* accumulationTab();
    [[nodiscard]] QWidget* sendTab();
    [[nodiscard]] QWidget* debugTab();

    SettingsStore& store_;
    std::unique_ptr<BoundSettings> settings_;
};

}  // namespace torvik
