// The settings beside the panes, each copied to the engine at once on a change, and their reading from and writing to
// the user's store.
#pragma once

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QSpinBox;
class QTimeEdit;

namespace torvik {

class SettingsStore;
class TTorvikPos;

class SettingsPanel : public QWidget {
    Q_OBJECT

public:
    explicit SettingsPanel(TTorvikPos& torvikPos, QWidget* parent = nullptr);

    // Each setting by itself: a missing or mistyped one leaves its default. dtsCompatible: the back office can run DTS.
    void read(const SettingsStore& store, bool dtsCompatible);
    void write(SettingsStore& store) const;

    [[nodiscard]] bool autoStart() const;
    void setAutoStart(bool on);  // as a click would
    // Copies all settings to the engine, as the window does at its start.
    void apply();

Q_SIGNALS:
    void autoStartChanged(bool armed);

private:
    QWidget* automaticGroup();
    QWidget* fetchGroup();
    QWidget* sendGroup();
    void followEnterprise();

    TTorvikPos& torvikPos_;
    QCheckBox* cbAutoStart;
    QTimeEdit* edStartTime;
    QSpinBox* edTimeout;
    QCheckBox* cbSisteForst;
    QCheckBox* cbBrukPlukkprioritet;
    QCheckBox* cbKunHent;
    QCheckBox* cbIncludeTelling;
    QLineEdit* edVt_Periode;
    QCheckBox* cbIncludeSladrerull;
    QCheckBox* cbEndrevarenr;
    QLineEdit* edReplaceVa_Id;
    QCheckBox* cbKunOppgjor;
    QCheckBox* cbTaMedMersalgVare;
    QCheckBox* cbFlagVareAfterUpdate;
    QCheckBox* cbUseThreads;  // hidden: sending in threads is gone
    QComboBox* cbVarer;
    QSpinBox* seDagerSidenEndring;
};

}  // namespace torvik
