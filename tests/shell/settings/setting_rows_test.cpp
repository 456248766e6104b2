// The one list of settings: its rows are consistent, and each setting of the window is read, written, enabled and
// copied to the engine as its row says.
#include "shell/settings/setting_rows.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QSet>
#include <QTemporaryDir>
#include <QTime>
#include <functional>

#include "engine/torvik_pos.h"
#include "shell/settings/bound_settings.h"
#include "shell/settings/setting_control.h"
#include "shell/settings/settings_panel.h"
#include "shell/settings/settings_store.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

TEST(SettingRows, NamesAndControlsAreUniqueAndEnablersAreInTheList) {
    for (const auto rows : {windowSettings(), preferenceSettings()}) {
        QSet<QString> names;
        QSet<QString> controls;
        for (const SettingRow& row : rows) controls << QString::fromUtf8(row.control);
        EXPECT_EQ(static_cast<std::size_t>(controls.size()), rows.size());
        for (const SettingRow& row : rows) {
            if (row.name) {
                EXPECT_FALSE(names.contains(QString::fromUtf8(row.name))) << row.name;
                names << QString::fromUtf8(row.name);
            }
            if (row.enabledBy) {
                EXPECT_TRUE(controls.contains(QString::fromUtf8(row.enabledBy))) << row.control;
            }
            EXPECT_TRUE(defaultOf(row).isValid()) << row.control;
            EXPECT_EQ(row.apply != nullptr, row.moments != 0) << row.control;
        }
    }
}

// What users have in their stores, in the order of reading and writing. Every name and default is an agreement with
// them.
TEST(SettingRows, StandInTheStoreUnderTheirNamesAndHaveTheirDefaults) {
    const auto told = [](std::span<const SettingRow> rows) {
        QStringList list;
        for (const SettingRow& row : rows)
            if (row.name) list << QStringLiteral("%1=%2").arg(QLatin1String(row.name), defaultOf(row).toString());
        return list;
    };
    EXPECT_EQ(told(windowSettings()),
              QStringList({"ReplaceProductNoOnNoExist=false", "ReplacementProductNo=", "Timeout=5",
                           "AutoStartTime=04:00:00.000", "ProductsToSync=2", "SystemTray=false", "KunHent=false",
                           "HentSisteForst=false", "IncludeDTS=true", "PlukkPrioritet=false", "ChangeNumberOfDays=0",
                           "cbAutoStart=false"}));
    EXPECT_EQ(
        told(preferenceSettings()),
        QStringList(
            {"Smtp/Active=false", "Smtp/Server=", "Smtp/Receipients=", "Smtp/Sender=", "Smtp/AutomaticAccumulate=false",
             "Smtp/AutomaticUpdateStatistics=false", "Smtp/SendPriceAndCustomer=false", "Smtp/DeleteItems=false",
             "Smtp/DeleteItemsDayOne=false", "Smtp/DeleteItemsDayTwo=false", "Smtp/DeleteItemsDayThree=false",
             "Smtp/DeleteItemsDayFour=false", "Smtp/DeleteItemsDayFive=false", "Smtp/DeleteItemsDaySix=false",
             "Smtp/DeleteItemsDaySeven=false", "Smtp/memExcludePOSListSQL=", "Smtp/SynchonizedRun=false",
             "Smtp/StartSendingTime=03:00:00.000", "Smtp/HelpFetching=false"}));
    for (const SettingRow& row : windowSettings())
        if (!row.name) {
            EXPECT_EQ(defaultOf(row).toString(),
                      row.type == SettingType::Text
                          ? QString()
                          : QString::fromUtf8(qstrcmp(row.control, "cbTaMedMersalgVare") == 0 ? "true" : "false"))
                << row.control;
        }
}

// The window's settings without the window.
class WindowSettings : public testing::Test {
protected:
    explicit WindowSettings(bool isEnterprise = true) {
        engine.IsEnterprise = isEnterprise;
        panel = new SettingsPanel(isEnterprise, QStringLiteral("202603"), &root);
        auto* tray = new QAction(&root);
        tray->setObjectName(QStringLiteral("actiSystemTray"));
        tray->setCheckable(true);
        settings = std::make_unique<BoundSettings>(root, windowSettings(), engine);
    }
    [[nodiscard]] QObject& control(const char* name) const {
        return *root.findChild<QObject*>(QString::fromUtf8(name));
    }

    TTorvikPos engine;
    QTemporaryDir folder;
    SettingsStore store{folder.filePath(QStringLiteral("s.ini"))};
    QWidget root;
    SettingsPanel* panel = nullptr;
    std::unique_ptr<BoundSettings> settings;
};

// A value of the row's type that is not its default.
QVariant otherThanDefault(const SettingRow& row) {
    switch (row.type) {
        case SettingType::Boolean: return !defaultOf(row).toBool();
        case SettingType::Integer: return 17;
        case SettingType::Index: return 1;
        case SettingType::Text: return QStringLiteral("ny tekst");
        case SettingType::Memo: return QStringLiteral("linje 1\nlinje \"2\"; ikk_kassenummer <> 'Ø'");
        case SettingType::Time: return QTime(21, 45);
    }
    return {};
}

TEST_F(WindowSettings, EachThatIsKeptComesBack) {
    for (const SettingRow& row : windowSettings()) setControlValue(control(row.control), otherThanDefault(row));
    settings->write(store);
    ASSERT_TRUE(store.save());

    SettingsStore again(folder.filePath(QStringLiteral("s.ini")));
    for (const SettingRow& row : windowSettings())
        if (row.name) {
            EXPECT_EQ(again.read(row), otherThanDefault(row)) << row.name;
        }
    for (const SettingRow& row : windowSettings()) setControlValue(control(row.control), defaultOf(row));
    settings->read(again);
    for (const SettingRow& row : windowSettings()) {
        EXPECT_EQ(controlValue(control(row.control)), row.name ? otherThanDefault(row) : defaultOf(row)) << row.control;
    }
}

TEST_F(WindowSettings, EachReachesItsFieldOfTheEngineAtOnce) {
    engine.IsEnterprise = false;
    struct Case {
        const char* control;
        std::function<QVariant()> field;
    };
    const Case cases[] = {
        {"edTimeout", [&] { return QVariant(engine.RetryWaitTime); }},
        {"edStartTime", [&] { return QVariant(engine.StartTime); }},
        {"cbVarer", [&] { return QVariant(static_cast<int>(engine.VareOppdateringUtvalg)); }},
        {"edReplaceVa_Id", [&] { return QVariant(engine.ReplacementVa_Id); }},
        {"cbKunHent", [&] { return QVariant(engine.ReceiveDataOnly); }},
        {"cbSisteForst", [&] { return QVariant(engine.ReverseProcessingOrder); }},
        {"cbIncludeSladrerull", [&] { return QVariant(engine.IncludeDTS_TorvikPOS); }},
        {"cbBrukPlukkprioritet", [&] { return QVariant(engine.UsePlukkPrioritet); }},
        {"seDagerSidenEndring", [&] { return QVariant(engine.DagerSidenEndring); }},
        {"cbIncludeTelling", [&] { return QVariant(engine.IncludeVaretellingOnOppgjor); }},
        {"edVt_Periode", [&] { return QVariant(engine.VaretellingPeriode); }},
        {"cbTaMedMersalgVare", [&] { return QVariant(engine.IncludeExtraSaleProducts); }},
        {"cbFlagVareAfterUpdate", [&] { return QVariant(engine.FlagAsSentAfterUpdate); }},
        {"cbKunOppgjor", [&] { return QVariant(engine.OnlyOppgjor); }},
        {"cbUseThreads", [&] { return QVariant(engine.AllowMultiThreading); }},
    };
    settings->apply(kAtStart);
    int applied = 0;
    for (const SettingRow& row : windowSettings()) applied += row.apply != nullptr;
    EXPECT_EQ(static_cast<std::size_t>(applied), std::size(cases)) << "a setting of the engine has no case here";
    for (const Case& each : cases) {
        const QVariant value = otherThanDefault(settingOf(each.control));
        ASSERT_NE(each.field(), value) << each.control;
        setControlValue(control(each.control), value);
        EXPECT_EQ(each.field(), value) << each.control;
    }
}

TEST_F(WindowSettings, SettlementsOnlyHasNoEffectInAChain) {
    setControlValue(control("cbKunOppgjor"), true);
    EXPECT_FALSE(engine.OnlyOppgjor);
}

TEST_F(WindowSettings, ReplacementIsEnabledByItsBoxAndClearedWithIt) {
    EXPECT_FALSE(controlEnabled(control("edReplaceVa_Id")));
    setControlValue(control("cbEndrevarenr"), true);
    EXPECT_TRUE(controlEnabled(control("edReplaceVa_Id")));
    setControlValue(control("edReplaceVa_Id"), QStringLiteral("999"));
    setControlValue(control("cbEndrevarenr"), false);
    EXPECT_FALSE(controlEnabled(control("edReplaceVa_Id")));
    EXPECT_EQ(settings->value("edReplaceVa_Id").toString(), QString());
    EXPECT_EQ(engine.ReplacementVa_Id, QString());
}

TEST_F(WindowSettings, DaysAreEnabledForChangesOnly) {
    for (const int choice : {vopIngen, vopEndrede, vopAlle}) {
        setControlValue(control("cbVarer"), choice);
        EXPECT_EQ(controlEnabled(control("seDagerSidenEndring")), choice == vopEndrede) << choice;
    }
}

TEST_F(WindowSettings, DtsIsTheUsersChoiceOnlyWhereTheBackOfficeCanRunIt) {
    settings->read(store);
    settings->apply(kAtStart);
    EXPECT_TRUE(engine.IncludeDTS_TorvikPOS) << "on, unless the user has chosen otherwise";
    store.write("IncludeDTS", false);
    settings->read(store);
    EXPECT_FALSE(engine.IncludeDTS_TorvikPOS);

    store.write("IncludeDTS", true);
    panel->setDtsCompatible(false);
    settings->read(store);
    EXPECT_FALSE(engine.IncludeDTS_TorvikPOS);
    EXPECT_FALSE(controlEnabled(control("cbIncludeSladrerull")));
    EXPECT_FALSE(settings->value("cbIncludeSladrerull").toBool());
}

TEST_F(WindowSettings, PeriodOfStockCountsIsTheOneGiven) {
    EXPECT_EQ(settings->value("edVt_Periode").toString(), QStringLiteral("202603"));
}

TEST_F(WindowSettings, ArmingIsTheLastThatIsRead) {
    store.write("cbAutoStart", true);
    store.write("KunHent", true);
    store.write("ChangeNumberOfDays", 9);
    bool armed = false;
    QObject::connect(panel, &SettingsPanel::autoStartChanged, &root, [&](bool on) {
        armed = on;
        EXPECT_TRUE(engine.ReceiveDataOnly);
        EXPECT_EQ(engine.DagerSidenEndring, 9);
    });
    settings->read(store);
    EXPECT_TRUE(armed);
}

}  // namespace
}  // namespace torvik
