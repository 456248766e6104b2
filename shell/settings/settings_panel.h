// The settings beside the panes, in three groups. It lays the controls out; what they mean is in setting_rows.h, and
// BoundSettings keeps them, reads them and copies them to the engine.
#pragma once

#include <QWidget>

namespace torvik {

class SettingsPanel : public QWidget {
    Q_OBJECT

public:
    // isEnterprise: a chain; fetching settlements only is a choice of a single back office. period: of the stock
    // counts, YYYYMM.
    SettingsPanel(bool isEnterprise, const QString& period, QWidget* parent = nullptr);

    // The back office can run DTS: the setting is the operator's only then.
    void setDtsCompatible(bool compatible);
    // Whether the operator may arm and disarm the automatic run now.
    void setArmingEnabled(bool enabled);

Q_SIGNALS:
    void autoStartChanged(bool armed);

private:
    [[nodiscard]] QWidget* automaticGroup();
    [[nodiscard]] QWidget* fetchGroup(bool isEnterprise, const QString& period);
    [[nodiscard]] QWidget* sendGroup();
};

}  // namespace torvik
