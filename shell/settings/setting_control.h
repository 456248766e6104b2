// A control that shows a setting, whatever its kind: made for a row, read, written, watched. Used by BoundSettings and
// by the panels that lay controls out.
#pragma once

#include <QVariant>
#include <functional>

#include "shell/settings/setting_rows.h"

class QWidget;

namespace torvik {

// The control of a row: check box, spin box, combo box, line, memo or time field, with the row's object name, its label
// where the kind has one (a check box), and the default value.
[[nodiscard]] QWidget* makeControl(const SettingRow& row);

// Of a control made so, or of a checkable action.
[[nodiscard]] QVariant controlValue(const QObject& control);
// An index that a combo box does not have leaves it as it is.
void setControlValue(QObject& control, const QVariant& value);
// Calls `changed` at each change of the value, until `receiver` goes.
void onControlChanged(QObject& control, QObject& receiver, std::function<void()> changed);
// Disabled, its hint says why; enabled, it has none.
void setControlEnabled(QObject& control, bool enabled, const QString& whyNot);
[[nodiscard]] bool controlEnabled(const QObject& control);
// "Gjelder bare når ...": the control of this row has this value, in the words of a hint.
[[nodiscard]] QString onlyWhen(const SettingRow& row, const QObject& control, int value);

}  // namespace torvik
