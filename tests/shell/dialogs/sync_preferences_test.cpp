// The preferences dialog as an operator works it: what OK keeps, what Avbryt throws away, what enables what.
#include "shell/dialogs/sync_preferences.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTime>

#include "engine/torvik_pos.h"
#include "shell/settings/setting_control.h"
#include "shell/settings/settings_store.h"
#include "tests/shell/modal.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

using test::child;

class Preferences : public testing::Test {
protected:
    [[nodiscard]] QObject& control(const char* name) { return child<QWidget>(dialog, name); }
    // The captions and notes of a tab, in the order of the form.
    [[nodiscard]] QStringList texts(const char* tab) {
        const auto& tabs = child<QTabWidget>(dialog, "preferences");
        QStringList found;
        for (int i = 0; i < tabs.count(); ++i) {
            if (tabs.tabText(i) != QString::fromUtf8(tab)) continue;
            for (const auto* group : tabs.widget(i)->findChildren<QGroupBox*>()) found << group->title();
            for (const auto* label : tabs.widget(i)->findChildren<QLabel*>()) found << label->text();
            for (const auto* box : tabs.widget(i)->findChildren<QCheckBox*>()) found << box->text();
        }
        return found;
    }

    QTemporaryDir folder;
    QString file = folder.filePath(QStringLiteral("s.ini"));
    SettingsStore store{file};
    TTorvikPos engine;
    TfrmSyncPreferences dialog{store, engine};
};

TEST_F(Preferences, TabsNotesAndLabelsStandAsTheOperatorsKnowThem) {
    QStringList tabs;
    for (int i = 0; i < child<QTabWidget>(dialog, "preferences").count(); ++i)
        tabs << child<QTabWidget>(dialog, "preferences").tabText(i);
    EXPECT_EQ(tabs, (QStringList{QStringLiteral("Generelt"), QStringLiteral("E-post innstillinger"),
                                 QStringLiteral("Akkumulering"), QStringLiteral("Send"),
                                 QStringLiteral("Avdelingsutvalg"), QStringLiteral("Debug")}));
    EXPECT_EQ(
        texts("Generelt"),
        (QStringList{
            QStringLiteral("Automatisk jobb"), QStringLiteral("Flere maskiner"),
            QStringLiteral("TorvikPosSync kan kjøres synkronisert sammen med autogenerering (ordre til butikker) for "
                           "å unngå samtidige jobber som kan låse hverandre."),
            QStringLiteral("Innhenting kjøres først, deretter akkumulering, generering og til slutt utsending. Hvis "
                           "de øvrige jobbene ikke er ferdig innen oppgitt tid nedenfor, fortsetter TorvikPosSync "
                           "med utsending kl.:"),
            QStringLiteral("Programmet henter da sammen med en annen maskin som kjører hele jobben, og gjør ikke noe "
                           "annet: ingen akkumulering, utsending eller e-post. Bruk samme klokkeslett og de samme "
                           "innstillingene for innhenting."),
            QStringLiteral("Aktiver synkronisert kjøring"), QStringLiteral("Hjelp til med innhentingen")}));
    EXPECT_EQ(texts("E-post innstillinger"),
              (QStringList{QStringLiteral("Logg'en kan sendes til en eller flere e-post adresser. Oppgi adressene med "
                                          "komma mellom."),
                           QStringLiteral("Utgående e-post server:"), QStringLiteral("Mottaker(e):"),
                           QStringLiteral("Avsender e-post:"), QStringLiteral("Send logg")}));
    EXPECT_EQ(
        texts("Akkumulering"),
        (QStringList{QStringLiteral("Akkumulering er en prosess for å lage data i et format som gjør at rapporter "
                                    "skal kunne kjøres. Denne prosessen kan gjøres automatisk eller manuelt."),
                     QStringLiteral("Automatisk akkumulering etter innhenting"),
                     QStringLiteral("Oppdater vare og kundestatistikk samtidig")}));
    EXPECT_EQ(texts("Send"),
              (QStringList{QStringLiteral("Send kunder, kundegrupper og priser"),
                           QStringLiteral("Slett varer fra kasse"), QStringLiteral("Mandag"), QStringLiteral("Tirsdag"),
                           QStringLiteral("Onsdag"), QStringLiteral("Torsdag"), QStringLiteral("Fredag"),
                           QStringLiteral("Lørdag"), QStringLiteral("Søndag")}));
    EXPECT_EQ(texts("Avdelingsutvalg"), QStringList());
    EXPECT_EQ(texts("Debug"), (QStringList{QStringLiteral("Denne innstillingen skal kun fylles ut av sys-admin"),
                                           QStringLiteral("Oppgi vilkår som vil utelate enkelte kasser")}));
}

TEST_F(Preferences, FirstStartLeavesAllAtTheFormsDefaults) {
    for (const SettingRow& row : preferenceSettings()) EXPECT_EQ(controlValue(control(row.control)), defaultOf(row));
    EXPECT_EQ(controlValue(control("edStartSendingTime")).toTime(), QTime(3, 0));
}

TEST_F(Preferences, OkKeepsEveryValueUnderItsName) {
    test::whenAsked<TfrmSyncPreferences>([this](TfrmSyncPreferences& shown) {
        child<QCheckBox>(shown, "cbActive").click();
        for (const SettingRow& row : preferenceSettings()) {
            QVariant value = true;
            if (row.type == SettingType::Text) value = QString::fromUtf8(row.control);
            if (row.type == SettingType::Memo) value = QStringLiteral("a = 'b'\nAND c <> \"d\";");
            if (row.type == SettingType::Time) value = QTime(4, 5);
            setControlValue(control(row.control), value);
        }
        test::press(shown, "ok");
    });
    EXPECT_EQ(dialog.exec(), QDialog::Accepted);

    const SettingsStore kept(file);
    for (const SettingRow& row : preferenceSettings())
        EXPECT_EQ(kept.read(row), controlValue(control(row.control))) << row.name;
    EXPECT_EQ(kept.read("Smtp/Receipients").toString(), QStringLiteral("edReceipients"));
    EXPECT_EQ(kept.read("Smtp/memExcludePOSListSQL").toString(), QStringLiteral("a = 'b'\nAND c <> \"d\";"));
    EXPECT_EQ(kept.read("Smtp/StartSendingTime").toTime(), QTime(4, 5));
}

TEST_F(Preferences, AvbrytAndEscapeRestoreWhatWasKept) {
    store.write("Smtp/memExcludePOSListSQL", QStringLiteral("lagret"));
    store.write("Smtp/Active", true);
    dialog.LoadFromRegistry();
    for (const bool byKey : {false, true}) {
        test::whenAsked<TfrmSyncPreferences>([byKey](TfrmSyncPreferences& shown) {
            child<QPlainTextEdit>(shown, "memExcludePOSListSQL").setPlainText(QStringLiteral("endret"));
            child<QCheckBox>(shown, "cbActive").setChecked(false);
            if (byKey)
                QTest::keyClick(&shown, Qt::Key_Escape);
            else
                test::press(shown, "cancel");
        });
        EXPECT_EQ(dialog.exec(), QDialog::Rejected);
        EXPECT_EQ(controlValue(control("memExcludePOSListSQL")).toString(), QStringLiteral("lagret"));
        EXPECT_TRUE(controlValue(control("cbActive")).toBool());
        EXPECT_EQ(store.read("Smtp/memExcludePOSListSQL").toString(), QStringLiteral("lagret"));
    }
}

TEST_F(Preferences, MistypedValueLeavesOnlyItselfAtItsDefault) {
    store.write("Smtp/Active", QStringLiteral("kanskje"));
    store.write("Smtp/StartSendingTime", QStringLiteral("ved daggry"));
    store.write("Smtp/Server", QStringLiteral("post.torvik.example"));
    dialog.LoadFromRegistry();
    EXPECT_FALSE(controlValue(control("cbActive")).toBool());
    EXPECT_EQ(controlValue(control("edStartSendingTime")).toTime(), QTime(3, 0));
    EXPECT_EQ(controlValue(control("edServer")).toString(), QStringLiteral("post.torvik.example"));
}

TEST_F(Preferences, MailFieldsAreEnabledExactlyWhenLogsAreSent) {
    for (const bool on : {true, false, true}) {
        child<QCheckBox>(dialog, "cbActive").setChecked(on);
        for (const char* name : {"edServer", "edReceipients", "edSenderAddress"})
            EXPECT_EQ(controlEnabled(control(name)), on) << name;
    }
    store.write("Smtp/Active", false);
    dialog.LoadFromRegistry();
    EXPECT_FALSE(controlEnabled(control("edServer")));
}

TEST_F(Preferences, WeekdaysAreEnabledExactlyWhenItemsAreDeleted) {
    for (const bool on : {true, false}) {
        child<QCheckBox>(dialog, "cbDeleteItems").setChecked(on);
        for (const char* name : {"cbDeleteItemsDayOne", "cbDeleteItemsDayFour", "cbDeleteItemsDaySeven"})
            EXPECT_EQ(controlEnabled(control(name)), on) << name;
    }
}

TEST_F(Preferences, WeekdaysAreAddedToTheListAsDigits) {
    child<QCheckBox>(dialog, "cbDeleteItemsDayOne").setChecked(true);
    child<QCheckBox>(dialog, "cbDeleteItemsDaySeven").setChecked(true);
    QStringList days{QStringLiteral("3")};
    dialog.GetDeleteItemsWeekDays(&days);
    EXPECT_EQ(days, (QStringList{QStringLiteral("3"), QStringLiteral("1"), QStringLiteral("7")}));
    dialog.GetDeleteItemsWeekDays(nullptr);
}

TEST_F(Preferences, EngineHasNothingOfThemAtOk) {
    child<QCheckBox>(dialog, "cbSendPriceAndCustomer").setChecked(true);
    child<QCheckBox>(dialog, "cbSynchonizedRun").setChecked(true);
    child<QCheckBox>(dialog, "cbHelpFetching").setChecked(true);
    dialog.accept();
    EXPECT_FALSE(engine.SendCustomerAndPrice);
    EXPECT_FALSE(engine.SynchonizedRun);
    EXPECT_FALSE(engine.HelpFetching);
    dialog.settings().apply(kAtArming);
    EXPECT_TRUE(engine.HelpFetching);
    EXPECT_TRUE(engine.SendCustomerAndPrice);
    EXPECT_TRUE(engine.SynchonizedRun);
}

TEST_F(Preferences, OkThatCannotBeKeptIsTold) {
    QFile inTheWay(folder.filePath(QStringLiteral("fil")));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    SettingsStore nowhere(folder.filePath(QStringLiteral("fil/s.ini")));
    TfrmSyncPreferences lost(nowhere, engine);
    int told = 0;
    QObject::connect(&lost, &TfrmSyncPreferences::savingFailed, &lost, [&] { ++told; });
    lost.accept();
    EXPECT_EQ(told, 1);
}

}  // namespace
}  // namespace torvik
