// What the operator has arranged comes back: sizes, splitters, columns, the tab in front, and each dialog's size.
#include "shell/window_layout.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QHeaderView>
#include <QSplitter>
#include <QTabWidget>
#include <QTreeView>

#include "shell/dialogs/sync_preferences.h"
#include "shell/status/status_tree_model.h"
#include "shell/status/status_view.h"
#include "tests/shell/modal.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/pump.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

class Layout : public test::WindowOverAChain {
protected:
    [[nodiscard]] static QHeaderView& header(MainWindow& window) {
        return *test::child<QTreeView>(window, "statusTree").header();
    }
};

TEST_F(Layout, OfTheWindowComesBack) {
    {
        MainWindow window(path(), store);
        window.show();
        window.resize(1290, 730);
        test::child<QSplitter>(window, "whole").setSizes({400, 800});
        test::child<QTabWidget>(window, "panes").setCurrentIndex(2);
        window.close();
    }
    MainWindow window(path(), store);
    window.show();
    EXPECT_EQ(window.size(), QSize(1290, 730));
    const QList<int> sizes = test::child<QSplitter>(window, "whole").sizes();
    EXPECT_NEAR(static_cast<double>(sizes[0]) / (sizes[0] + sizes[1]), 400. / 1200, 0.05);
    EXPECT_EQ(test::child<QTabWidget>(window, "panes").currentIndex(), 2);
}

TEST_F(Layout, ColumnsComeBackAsTheyWereSetAndFitThemselvesUntilThen) {
    {
        MainWindow window(path(), store);
        window.show();
        window.close();
    }
    EXPECT_EQ(store.readLayout("columns"), QByteArray()) << "nothing has been set";
    {
        MainWindow window(path(), store);
        window.show();
        header(window).resizeSection(StatusTreeModel::Navn, 137);
        header(window).moveSection(header(window).visualIndex(StatusTreeModel::TidBrukt), 1);
        window.close();
    }
    EXPECT_TRUE(store.readLayout("columns").startsWith("0:72 9:")) << store.readLayout("columns").toStdString();
    EXPECT_TRUE(store.readLayout("columns").contains(" 2:137 ")) << store.readLayout("columns").toStdString();
    MainWindow window(path(), store);
    window.show();
    ASSERT_EQ(header(window).sectionSize(StatusTreeModel::Navn), 137);
    allTills(window);
    click(window, "actiOppgjorManually");
    const auto fits = test::child<StatusView>(window, "statusView").findChildren<QTimer*>(Qt::FindDirectChildrenOnly);
    ASSERT_EQ(fits.size(), 1);
    EXPECT_TRUE(test::pumpUntil([&] { return !fits[0]->isActive(); })) << "columns would have fitted themselves now";
    EXPECT_EQ(header(window).sectionSize(StatusTreeModel::Navn), 137);
    EXPECT_EQ(header(window).visualIndex(StatusTreeModel::TidBrukt), 1);
    EXPECT_FALSE(header(window).isSortIndicatorShown());
}

TEST_F(Layout, LogLinesStayInTheFirstColumn) {
    MainWindow window(path(), store);
    EXPECT_TRUE(header(window).sectionsMovable());
    EXPECT_FALSE(header(window).isFirstSectionMovable());
}

TEST_F(Layout, WhatIsNoLayoutLeavesTheWindowAsItIs) {
    for (const char* key : {"geometry", "whole", "left", "panes", "columns", "TfrmSyncPreferences/geometry"})
        store.writeLayout(key, "tull");
    MainWindow window(path(), store);
    window.show();
    EXPECT_EQ(test::child<QTabWidget>(window, "panes").currentIndex(), 0);
    EXPECT_GE(header(window).sectionSize(StatusTreeModel::Navn), 40);
    EXPECT_GE(window.width(), 800);
}

TEST_F(Layout, SizeOfADialogComesBack) {
    {
        MainWindow window(path(), store);
        window.show();
        test::whenAsked<TfrmSyncPreferences>([](TfrmSyncPreferences& shown) {
            shown.resize(777, 555);
            test::press(shown, "cancel");
        });
        click(window, "actiPreferences");
        window.close();
    }
    MainWindow window(path(), store);
    window.show();
    QSize size;
    test::whenAsked<TfrmSyncPreferences>([&size](TfrmSyncPreferences& shown) {
        size = shown.size();
        test::press(shown, "cancel");
    });
    click(window, "actiPreferences");
    EXPECT_EQ(size, QSize(777, 555));
}

struct DisabledControl {
    const char* name;
    const char* why;
};

TEST_F(Layout, DisabledControlSaysWhy) {
    MainWindow window(path(), store);
    window.show();
    constexpr DisabledControl kControls[] = {
        {"edReplaceVa_Id", R"(Gjelder bare når "Hvis ikke varenr. finnes i Torvik, endre til:" er krysset av)"},
        {"seDagerSidenEndring", R"(Gjelder bare når "Varer:" er "Bare endringer")"},
        {"cbIncludeSladrerull", "Databasen til back office er for ny for DTS (kompatibilitetsnivå 91 eller høyere)"},
        {"edServer", R"(Gjelder bare når "Send logg" er krysset av)"},
        {"cbDeleteItemsDayOne", R"(Gjelder bare når "Slett varer fra kasse" er krysset av)"},
    };
    for (const DisabledControl& each : kControls) {
        auto& control = test::child<QWidget>(window, each.name);
        EXPECT_FALSE(control.isEnabledTo(control.parentWidget())) << each.name;
        EXPECT_EQ(control.toolTip(), QString::fromUtf8(each.why));
    }
    test::child<QCheckBox>(window, "cbEndrevarenr").click();
    EXPECT_EQ(test::child<QWidget>(window, "edReplaceVa_Id").toolTip(), QString()) << "enabled, it has nothing to say";
}

}  // namespace
}  // namespace torvik
