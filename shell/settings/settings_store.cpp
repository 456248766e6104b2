// Values pass through text, so that one of another type is told from one of the row's.
#include "shell/settings/settings_store.h"

#include <QTime>
#include <optional>

namespace torvik {

namespace {

std::optional<QVariant> parsed(SettingType type, const QVariant& stored) {
    const QString text = stored.toString().trimmed();
    switch (type) {
        case SettingType::Boolean:
            if (text == QLatin1String("true") || text == QLatin1String("1")) return true;
            if (text == QLatin1String("false") || text == QLatin1String("0")) return false;
            return std::nullopt;
        case SettingType::Integer:
        case SettingType::Index: {
            bool ok = false;
            const int value = text.toInt(&ok);
            if (!ok) return std::nullopt;
            return value;
        }
        case SettingType::Text:
        case SettingType::Memo: return stored.toString();
        case SettingType::Time: {
            const QTime time = QTime::fromString(text.left(5), QStringLiteral("HH:mm"));
            if (!time.isValid()) return std::nullopt;
            return time;
        }
    }
    return std::nullopt;
}

}  // namespace

QVariant defaultOf(const SettingRow& row) {
    return *parsed(row.type, QString::fromUtf8(row.defaultText));
}

// No fallbacks: a value of the machine or of another program is not this user's.
SettingsStore::SettingsStore()
    : settings_(std::make_unique<QSettings>(QStringLiteral("Vestmar"), QStringLiteral("TorvikPosSync"))),
      layout_(std::make_unique<QSettings>(QStringLiteral("Vestmar"), QStringLiteral("TorvikPosSyncWindow"))) {
    settings_->setFallbacksEnabled(false);
}

SettingsStore::SettingsStore(const QString& file)
    : settings_(std::make_unique<QSettings>(file, QSettings::IniFormat)),
      layout_(std::make_unique<QSettings>(file + QStringLiteral(".window"), QSettings::IniFormat)) {}

QVariant SettingsStore::read(const SettingRow& row) const {
    const QVariant stored = row.name ? settings_->value(QString::fromUtf8(row.name)) : QVariant();
    if (stored.isValid())
        if (const auto value = parsed(row.type, stored)) return *value;
    return defaultOf(row);
}

void SettingsStore::write(const char* name, const QVariant& value) {
    settings_->setValue(QString::fromUtf8(name), value.typeId() == QMetaType::QTime
                                                     ? QVariant(value.toTime().toString(QStringLiteral("HH:mm:ss")))
                                                     : value);
}

bool SettingsStore::save() {
    settings_->sync();
    return settings_->status() == QSettings::NoError;
}

QByteArray SettingsStore::readLayout(const char* name) const {
    return layout_->value(QString::fromUtf8(name)).toByteArray();
}

void SettingsStore::writeLayout(const char* name, const QByteArray& value) {
    layout_->setValue(QString::fromUtf8(name), value);
}

}  // namespace torvik
