// A window over a demo chain of two departments with a till each, with settings and a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <QAction>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "engine/roster/kasse_collection.h"
#include "sandbox/chain/demo_chain.h"
#include "shell/main_window.h"
#include "shell/settings/settings_store.h"
#include "tests/support/data_link.h"

namespace torvik::test {

class WindowOverAChain : public testing::Test {
protected:
    WindowOverAChain()
        : chain({.chain = {.departments = 2, .tills = 2, .days = 1}}),
          store(folder.filePath(QStringLiteral("settings.ini"))) {
        QDir::setCurrent(folder.path());
        writeDataLink(QString::fromStdString(chain.dataLink()));
        store.write("Timeout", 1);
    }
    ~WindowOverAChain() override { QDir::setCurrent(QDir::rootPath()); }

    void writeDataLink(const QString& text) {
        test::writeDataLink(folder.filePath(QStringLiteral("Torvik.UDL")), text);
    }
    [[nodiscard]] QString path() const { return folder.path() + QLatin1Char('/'); }

    static void click(MainWindow& window, const char* action) {
        auto* found = window.findChild<QAction*>(QString::fromUtf8(action));
        ASSERT_NE(found, nullptr) << action;
        ASSERT_TRUE(found->isEnabled()) << action;
        found->trigger();
    }
    static void allTills(MainWindow& window) {
        window.Ask.SelectTills = [](TKasseCollection& tills, const TSyncVersions&) {
            for (int department : {1001, 1002}) {
                TKasseItem& item = tills.Add();
                item.Ik_Ku_ID = department;
                item.Kassenr = QStringLiteral("1         ");
            }
            return true;
        };
    }

    QTemporaryDir folder;
    sandbox::chain::DemoChain chain;
    SettingsStore store;
};

}  // namespace torvik::test
