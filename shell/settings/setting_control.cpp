// The one place that knows the kinds of controls.
#include "shell/settings/setting_control.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTimeEdit>
#include <stdexcept>

#include "shell/settings/settings_store.h"

namespace torvik {

namespace {

// Calls `visit` with the control as what it is.
template <typename Object, typename Visit>
auto asItsKind(Object& control, Visit visit) {
    const auto as = [&control]<typename Kind>(const Kind*) {
        return qobject_cast<std::conditional_t<std::is_const_v<Object>, const Kind, Kind>*>(&control);
    };
    if (auto* box = as(static_cast<QCheckBox*>(nullptr))) return visit(*box);
    if (auto* action = as(static_cast<QAction*>(nullptr))) return visit(*action);
    if (auto* number = as(static_cast<QSpinBox*>(nullptr))) return visit(*number);
    if (auto* list = as(static_cast<QComboBox*>(nullptr))) return visit(*list);
    if (auto* line = as(static_cast<QLineEdit*>(nullptr))) return visit(*line);
    if (auto* memo = as(static_cast<QPlainTextEdit*>(nullptr))) return visit(*memo);
    if (auto* time = as(static_cast<QTimeEdit*>(nullptr))) return visit(*time);
    throw std::invalid_argument("not a setting's control: " + control.objectName().toStdString());
}

template <typename... Visits>
struct Overloaded : Visits... {
    using Visits::operator()...;
};

QWidget* newControl(const SettingRow& row) {
    switch (row.type) {
        case SettingType::Boolean: return new QCheckBox(QString::fromUtf8(row.label));
        case SettingType::Integer: return new QSpinBox;
        case SettingType::Index: return new QComboBox;
        case SettingType::Text: return new QLineEdit;
        case SettingType::Memo: return new QPlainTextEdit;
        case SettingType::Time: {
            auto* time = new QTimeEdit;
            time->setDisplayFormat(QStringLiteral("HH:mm"));
            return time;
        }
    }
    throw std::invalid_argument("a setting of no type");
}

}  // namespace

QWidget* makeControl(const SettingRow& row) {
    QWidget* control = newControl(row);
    control->setObjectName(QString::fromUtf8(row.control));
    setControlValue(*control, defaultOf(row));
    return control;
}

QVariant controlValue(const QObject& control) {
    return asItsKind(control, Overloaded{
                                  [](const QCheckBox& box) { return QVariant(box.isChecked()); },
                                  [](const QAction& action) { return QVariant(action.isChecked()); },
                                  [](const QSpinBox& number) { return QVariant(number.value()); },
                                  [](const QComboBox& list) { return QVariant(list.currentIndex()); },
                                  [](const QLineEdit& line) { return QVariant(line.text()); },
                                  [](const QPlainTextEdit& memo) { return QVariant(memo.toPlainText()); },
                                  [](const QTimeEdit& time) { return QVariant(time.time()); },
                              });
}

void setControlValue(QObject& control, const QVariant& value) {
    asItsKind(control, Overloaded{
                           [&](QCheckBox& box) { box.setChecked(value.toBool()); },
                           [&](QAction& action) { action.setChecked(value.toBool()); },
                           [&](QSpinBox& number) { number.setValue(value.toInt()); },
                           [&](QComboBox& list) {
                               if (value.toInt() >= 0 && value.toInt() < list.count())
                                   list.setCurrentIndex(value.toInt());
                           },
                           [&](QLineEdit& line) { line.setText(value.toString()); },
                           [&](QPlainTextEdit& memo) { memo.setPlainText(value.toString()); },
                           [&](QTimeEdit& time) { time.setTime(value.toTime()); },
                       });
}

void onControlChanged(QObject& control, QObject& receiver, std::function<void()> changed) {
    const auto on = [&]<typename Kind, typename Signal>(Kind& kind, Signal signal) {
        QObject::connect(&kind, signal, &receiver, [changed] { changed(); });
    };
    asItsKind(control, Overloaded{
                           [&](QCheckBox& box) { on(box, &QCheckBox::toggled); },
                           [&](QAction& action) { on(action, &QAction::toggled); },
                           [&](QSpinBox& number) { on(number, &QSpinBox::valueChanged); },
                           [&](QComboBox& list) { on(list, &QComboBox::currentIndexChanged); },
                           [&](QLineEdit& line) { on(line, &QLineEdit::textChanged); },
                           [&](QPlainTextEdit& memo) { on(memo, &QPlainTextEdit::textChanged); },
                           [&](QTimeEdit& time) { on(time, &QTimeEdit::timeChanged); },
                       });
}

void setControlEnabled(QObject& control, bool enabled, const QString& whyNot) {
    control.setProperty("enabled", enabled);
    control.setProperty("toolTip", enabled ? QString() : whyNot);
}

QString onlyWhen(const SettingRow& row, const QObject& control, int value) {
    const QString label = QString::fromUtf8(row.label);
    if (const auto* list = qobject_cast<const QComboBox*>(&control))
        return QStringLiteral("Gjelder bare når \"%1\" er \"%2\"").arg(label, list->itemText(value));
    return QStringLiteral("Gjelder bare når \"%1\" er krysset av").arg(label);
}

bool controlEnabled(const QObject& control) {
    const auto* widget = qobject_cast<const QWidget*>(&control);
    return !widget || widget->isEnabledTo(widget->parentWidget());  // whatever its panel is
}

}  // namespace torvik
