// Layout only, and the limits of the numbers.
#include "shell/settings/settings_panel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QVBoxLayout>

#include "shell/settings/setting_control.h"

namespace torvik {

namespace {

constexpr int kLongestWait = 3600;  // seconds
constexpr int kMostDays = 9999;

QWidget* control(const char* name) {
    return makeControl(settingOf(name));
}

// The setting's label before its control, with the control as what the label's shortcut goes to.
QLabel* labelOf(const char* name, QWidget* buddy) {
    auto* label = new QLabel(QString::fromUtf8(settingOf(name).label));
    label->setBuddy(buddy);
    return label;
}

QHBoxLayout* row(std::initializer_list<QWidget*> widgets) {
    auto* layout = new QHBoxLayout;
    for (QWidget* widget : widgets) layout->addWidget(widget);
    layout->addStretch();
    return layout;
}

QHBoxLayout* labelled(const char* name, QWidget* made) {
    return row({labelOf(name, made), made});
}

}  // namespace

SettingsPanel::SettingsPanel(bool isEnterprise, const QString& period, QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(automaticGroup());
    layout->addWidget(fetchGroup(isEnterprise, period));
    layout->addWidget(sendGroup());
    layout->addStretch();
}

QWidget* SettingsPanel::automaticGroup() {
    auto* group = new QGroupBox(QStringLiteral("Automatisk jobb"));
    auto* layout = new QVBoxLayout(group);
    auto* wait = static_cast<QSpinBox*>(control("edTimeout"));
    wait->setRange(1, kLongestWait);
    wait->setSuffix(QStringLiteral(" s"));
    auto* autoStart = static_cast<QCheckBox*>(control("cbAutoStart"));
    connect(autoStart, &QCheckBox::toggled, this, &SettingsPanel::autoStartChanged);
    layout->addLayout(row({autoStart, control("edStartTime")}));
    layout->addWidget(control("cbKunHent"));
    layout->addLayout(labelled("edTimeout", wait));
    return group;
}

QWidget* SettingsPanel::fetchGroup(bool isEnterprise, const QString& period) {
    auto* group = new QGroupBox(QStringLiteral("Innhenting"));
    auto* layout = new QVBoxLayout(group);
    auto* onlySettlements = control("cbKunOppgjor");
    auto* countingPeriod = static_cast<QLineEdit*>(control("edVt_Periode"));
    countingPeriod->setText(period);
    for (QWidget* widget : {control("cbSisteForst"), control("cbBrukPlukkprioritet"), control("cbIncludeSladrerull"),
                            onlySettlements, control("cbEndrevarenr"), control("edReplaceVa_Id"),
                            control("cbIncludeTelling"), static_cast<QWidget*>(countingPeriod)})
        layout->addWidget(widget);
    onlySettlements->setVisible(!isEnterprise);
    return group;
}

QWidget* SettingsPanel::sendGroup() {
    auto* group = new QGroupBox(QStringLiteral("Utsending"));
    auto* layout = new QVBoxLayout(group);
    auto* items = static_cast<QComboBox*>(control("cbVarer"));
    items->addItems({QStringLiteral("Ingen"), QStringLiteral("Bare endringer"), QStringLiteral("Alle varer")});
    setControlValue(*items, 2);
    auto* days = static_cast<QSpinBox*>(control("seDagerSidenEndring"));
    days->setRange(0, kMostDays);
    auto* threads = control("cbUseThreads");
    layout->addLayout(labelled("cbVarer", items));
    layout->addLayout(labelled("seDagerSidenEndring", days));
    layout->addWidget(control("cbTaMedMersalgVare"));
    layout->addWidget(control("cbFlagVareAfterUpdate"));
    layout->addWidget(threads);
    threads->hide();  // sending in threads is gone
    return group;
}

void SettingsPanel::setDtsCompatible(bool compatible) {
    setControlEnabled(
        *findChild<QWidget*>(QStringLiteral("cbIncludeSladrerull")), compatible,
        QStringLiteral("Databasen til back office er for ny for DTS (kompatibilitetsnivå 91 eller høyere)"));
}

void SettingsPanel::setArmingEnabled(bool enabled) {
    setControlEnabled(*findChild<QWidget*>(QStringLiteral("cbAutoStart")), enabled,
                      QStringLiteral("Kan endres når kjøringen er ferdig"));
}

}  // namespace torvik
