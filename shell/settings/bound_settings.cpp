// A change of a control is answered twice: the engine gets the value, and the controls that depend on it are enabled.
#include "shell/settings/bound_settings.h"

#include <stdexcept>
#include <string>

#include "shell/settings/setting_control.h"
#include "shell/settings/settings_store.h"

namespace torvik {

BoundSettings::BoundSettings(QObject& root, std::span<const SettingRow> rows, TTorvikPos& engine) : engine_(engine) {
    for (const SettingRow& row : rows) {
        auto* control = root.findChild<QObject*>(QString::fromUtf8(row.control));
        if (!control) throw std::invalid_argument(std::string("no control is named ") + row.control);
        bindings_.push_back({&row, control});
    }
    for (const Binding& each : bindings_) {
        onControlChanged(*each.control, *this, [this, &each] { changed(each); });
        enableBy(each);
    }
}

void BoundSettings::changed(const Binding& changed) {
    if (changed.row->apply && (changed.row->moments & kAtChange))
        changed.row->apply(engine_, controlValue(*changed.control));
    enableBy(changed);
}

// A box that is ticked has the value 1.
void BoundSettings::enableBy(const Binding& master) {
    for (const Binding& each : bindings_) {
        if (!each.row->enabledBy || qstrcmp(each.row->enabledBy, master.row->control) != 0) continue;
        const bool enabled = controlValue(*master.control).toInt() == each.row->enabledAt;
        setControlEnabled(*each.control, enabled, onlyWhen(*master.row, *master.control, each.row->enabledAt));
        if (!enabled && each.row->clearedWithIt) setControlValue(*each.control, defaultOf(*each.row));
    }
}

void BoundSettings::read(const SettingsStore& store) {
    for (const Binding& each : bindings_) {
        if (!each.row->name) continue;
        QVariant value = store.read(*each.row);
        if (each.row->tickedOnlyIfEnabled && !controlEnabled(*each.control)) value = false;
        setControlValue(*each.control, value);
    }
}

void BoundSettings::write(SettingsStore& store) const {
    for (const Binding& each : bindings_)
        if (each.row->name) store.write(each.row->name, controlValue(*each.control));
}

void BoundSettings::apply(SettingMoment moment) const {
    for (const Binding& each : bindings_)
        if (each.row->apply && (each.row->moments & moment)) each.row->apply(engine_, controlValue(*each.control));
}

QVariant BoundSettings::value(const char* control) const {
    return controlValue(*binding(control).control);
}

void BoundSettings::set(const char* control, const QVariant& value) {
    setControlValue(*binding(control).control, value);
}

const BoundSettings::Binding& BoundSettings::binding(const char* control) const {
    for (const Binding& each : bindings_)
        if (qstrcmp(each.row->control, control) == 0) return each;
    throw std::invalid_argument(std::string("no setting is bound to ") + control);
}

}  // namespace torvik
