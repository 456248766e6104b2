// One function for each tab; all controls are made of their settings' rows.
#include "shell/dialogs/sync_preferences.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>

#include <QTabWidget>
#include <QVBoxLayout>

#include "shell/dialogs/ok_avbryt.h"
#include "shell/settings/setting_control.h"
#include "shell/settings/settings_store.h"

namespace torvik {

namespace {

constexpr QSize kSize(560, 420);

constexpr const char* kWeekDays[] = {"cbDeleteItemsDayOne",  "cbDeleteItemsDayTwo",  "cbDeleteItemsDayThree",
                                     "cbDeleteItemsDayFour", "cbDeleteItemsDayFive", "cbDeleteItemsDaySix",
                                     "cbDeleteItemsDaySeven"};

QWidget* control(const char* name) {
    return makeControl(settingOf(name));
}

QString labelOf(const char* name) {
    return QString::fromUtf8(settingOf(name).label);
}

QLabel* note(const QString& text) {
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    return label;
}

}  // namespace

TfrmSyncPreferences::TfrmSyncPreferences(SettingsStore& store, TTorvikPos& engine, QWidget* parent)
    : QDialog(parent), store_(store) {
    setObjectName(QStringLiteral("TfrmSyncPreferences"));
    setWindowTitle(QStringLiteral("Innstillinger"));
    auto* tabs = new QTabWidget(this);
    tabs->setObjectName(QStringLiteral("preferences"));
    tabs->setUsesScrollButtons(false);  // all tabs are in sight
    tabs->addTab(generalTab(), QStringLiteral("Generelt"));
    tabs->addTab(mailTab(), QStringLiteral("E-post innstillinger"));
    tabs->addTab(accumulationTab(), QStringLiteral("Akkumulering"));
    tabs->addTab(sendTab(), QStringLiteral("Send"));
    tabs->addTab(new QWidget, QStringLiteral("Avdelingsutvalg"));  // empty
    tabs->addTab(debugTab(), QStringLiteral("Debug"));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addWidget(okAndAvbryt(*this));
    resize(kSize);
    settings_ = std::make_unique<BoundSettings>(*this, preferenceSettings(), engine);
    LoadFromRegistry();
}

QWidget* TfrmSyncPreferences::generalTab() {
    auto* group = new QGroupBox(QStringLiteral("Automatisk jobb"));
    auto* inGroup = new QVBoxLayout(group);
    inGroup->addWidget(note(QStringLiteral(
        "TorvikPosSync kan kjøres synkronisert sammen med autogenerering (ordre til butikker) for å unngå samtidige "
        "jobber som kan låse hverandre.")));
    inGroup->addWidget(control("cbSynchonizedRun"));
    inGroup->addWidget(note(QStringLiteral(
        "Innhenting kjøres først, deretter akkumulering, generering og til slutt utsending. Hvis de øvrige jobbene ikke "
        "er ferdig innen oppgitt tid nedenfor, fortsetter TorvikPosSync med utsending kl.:")));
    inGroup->addWidget(control("edStartSendingTime"), 0, Qt::AlignLeft);
    auto* helping = new QGroupBox(QStringLiteral("Flere maskiner"));
    auto* inHelping = new QVBoxLayout(helping);
    inHelping->addWidget(control("cbHelpFetching"));
    inHelping->addWidget(note(QStringLiteral(
        "Programmet henter da sammen med en annen maskin som kjører hele jobben, og gjør ikke noe annet: ingen "
        "akkumulering, utsending eller e-post. Bruk samme klokkeslett og de samme innstillingene for innhenting.")));
    auto* tab = new QWidget;
    auto* layout = new QVBoxLayout(tab);
    layout->addWidget(group);
    layout->addWidget(helping);
    layout->addStretch();
    return tab;
}

QWidget* TfrmSyncPreferences::mailTab() {
    auto* tab = new QWidget;
    auto* layout = new QVBoxLayout(tab);
    layout->addWidget(control("cbActive"));
    layout->addWidget(note(
        QStringLiteral("Logg'en kan sendes til en eller flere e-post adresser. Oppgi adressene med komma mellom.")));
    auto* form = new QFormLayout;
    for (const char* name : {"edServer", "edReceipients", "edSenderAddress"})
        form->addRow(labelOf(name), control(name));
    layout->addLayout(form);
    layout->addStretch();
    return tab;
}

QWidget* TfrmSyncPreferences::accumulationTab() {
    auto* tab = new QWidget;
    auto* layout = new QVBoxLayout(tab);
    layout->addWidget(note(QStringLiteral(
        "Akkumulering er en prosess for å lage data i et format som gjør at rapporter skal kunne kjøres. Denne prosessen "
        "kan gjøres automatisk eller manuelt.")));
    layout->addWidget(control("cbAutomaticAccumulate"));
    layout->addWidget(control("cbAutomaticUpdateStatistics"));
    layout->addStretch();
    return tab;
}

QWidget* TfrmSyncPreferences::sendTab() {
    auto* tab = new QWidget;
    auto* layout = new QVBoxLayout(tab);
    layout->addWidget(control("cbSendPriceAndCustomer"));
    layout->addWidget(control("cbDeleteItems"));
    auto* days = new QVBoxLayout;
    days->setContentsMargins(24, 0, 0, 0);
    for (const char* name : kWeekDays) days->addWidget(control(name));
    layout->addLayout(days);
    layout->addStretch();
    return tab;
}

QWidget* TfrmSyncPreferences::debugTab() {
    auto* tab = new QWidget;
    auto* layout = new QVBoxLayout(tab);
    auto* memo = control("memExcludePOSListSQL");
    auto* label = note(labelOf("memExcludePOSListSQL"));
    label->setBuddy(memo);
    layout->addWidget(note(QStringLiteral("Denne innstillingen skal kun fylles ut av sys-admin")));
    layout->addWidget(label);
    layout->addWidget(memo, 1);
    return tab;
}

void TfrmSyncPreferences::LoadFromRegistry() {
    settings_->read(store_);
}

void TfrmSyncPreferences::GetDeleteItemsWeekDays(QStringList* AList) const {
    if (!AList) return;
    int day = 0;
    for (const char* name : kWeekDays) {
        ++day;
        if (settings_->value(name).toBool()) AList->append(QString::number(day));
    }
}

void TfrmSyncPreferences::accept() {
    settings_->write(store_);
    if (!store_.save()) Q_EMIT savingFailed();
    QDialog::accept();
}

void TfrmSyncPreferences::reject() {
    LoadFromRegistry();
    QDialog::reject();
}

}  // namespace torvik
