#include "shell/settings.h"

#include <QTime>
#include <array>
#include <optional>
#include <stdexcept>

namespace torvik {

namespace {

constexpr std::array<SettingRow, 12> kRows{{
    {"ReplaceProductNoOnNoExist", SettingType::Boolean, "false"},
    {"ReplacementProductNo", SettingType::Text, ""},
    {"Timeout", SettingType::Integer, "5"},
    {"AutoStartTime", SettingType::Time, "04:00"},
    {"ProductsToSync", SettingType::Integer, "2"},
    {"SystemTray", SettingType::Boolean, "false"},
    {"KunHent", SettingType::Boolean, "false"},
    {"HentSisteForst", SettingType::Boolean, "false"},
    {"IncludeDTS", SettingType::Boolean, "true"},
    {"PlukkPrioritet", SettingType::Boolean, "false"},
    {"ChangeNumberOfDays", SettingType::Integer, "0"},
    {"cbAutoStart", SettingType::Boolean, "false"},
}};

// In the sub-key "Smtp", also those that have nothing to do with mail.
constexpr std::array<SettingRow, 18> kPreferenceRows{{
    {"Smtp/Active", SettingType::Boolean, "false"},
    {"Smtp/Server", SettingType::Text, ""},
    {"Smtp/Receipients", SettingType::Text, ""},
    {"Smtp/Sender", SettingType::Text, ""},
    {"Smtp/AutomaticAccumulate", SettingType::Boolean, "false"},
    {"Smtp/AutomaticUpdateStatistics", SettingType::Boolean, "false"},
    {"Smtp/SendPriceAndCustomer", SettingType::Boolean, "false"},
    {"Smtp/DeleteItems", SettingType::Boolean, "false"},
    {"Smtp/DeleteItemsDayOne", SettingType::Boolean, "false"},
    {"Smtp/DeleteItemsDayTwo", SettingType::Boolean, "false"},
    {"Smtp/DeleteItemsDayThree", SettingType::Boolean, "false"},
    {"Smtp/DeleteItemsDayFour", SettingType::Boolean, "false"},
    {"Smtp/DeleteItemsDayFive", SettingType::Boolean, "false"},
    {"Smtp/DeleteItemsDaySix", SettingType::Boolean, "false"},
    {"Smtp/DeleteItemsDaySeven", SettingType::Boolean, "false"},
    {"Smtp/memExcludePOSListSQL", SettingType::Text, ""},
    {"Smtp/SynchonizedRun", SettingType::Boolean, "false"},
    {"Smtp/StartSendingTime", SettingType::Time, "03:00"},
}};

const SettingRow& rowOf(const char* name) {
    for (const auto rows : {windowSettings(), preferenceSettings()})
        for (const SettingRow& row : rows)
            if (qstrcmp(row.name, name) == 0) return row;
    throw std::invalid_argument(std::string("no setting is named ") + name);
}

std::optional<QVariant> parsed(SettingType type, const QVariant& stored) {
    const QString text = stored.toString().trimmed();
    switch (type) {
        case SettingType::Boolean:
            if (text == QLatin1String("true") || text == QLatin1String("1")) return true;
            if (text == QLatin1String("false") || text == QLatin1String("0")) return false;
            return std::nullopt;
        case SettingType::Integer: {
            bool ok = false;
            const int value = text.toInt(&ok);
            if (!ok) return std::nullopt;
            return value;
        }
        case SettingType::Text: return stored.toString();
        case SettingType::Time: {
            const QTime time = QTime::fromString(text.left(5), QStringLiteral("HH:mm"));
            if (!time.isValid()) return std::nullopt;
            return time;
        }
    }
    return std::nullopt;
}

}  // namespace

std::span<const SettingRow> windowSettings() {
    return kRows;
}

std::span<const SettingRow> preferenceSettings() {
    return kPreferenceRows;
}

SettingsStore::SettingsStore()
    : settings_(std::make_unique<QSettings>(QStringLiteral("Vestmar"), QStringLiteral("TorvikPosSync"))) {}

SettingsStore::SettingsStore(const QString& file)
    : settings_(std::make_unique<QSettings>(file, QSettings::IniFormat)) {}

QVariant SettingsStore::read(const char* name) const {
    const SettingRow& row = rowOf(name);
    const QVariant stored = settings_->value(QString::fromUtf8(name));
    if (stored.isValid())
        if (const auto value = parsed(row.type, stored)) return *value;
    return *parsed(row.type, QString::fromUtf8(row.defaultText));
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

}  // namespace torvik
