// What fetching and sending by the window do at the tills, which tills they refuse, and the accumulation behind a
// fetch.
#include <gtest/gtest.h>

#include <QCheckBox>

#include "engine/db/query.h"
#include "engine/status/oppgjor_status.h"
#include "tests/shell/commands/run_command.h"
#include "tests/shell/modal.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

const OppgjorStatusTable& status(MainWindow& window) {
    return window.TorvikPos1().ffraOppgjorStatus->memOppgjorStatus;
}

using Sending = test::WindowOfCommands;

TEST_F(Sending, BringsTheItemsToTheTills) {
    chain.runInBackOffice("UPDATE Vare SET Va_Navn = 'Nytt navn' WHERE Va_Id = (SELECT MIN(Va_Id) FROM Vare)");
    const QString item = valueAt(office(), "SELECT MIN(Va_Id) FROM Vare");
    MainWindow window(path(), store);
    open(window);
    click(window, "actiSendVarer");
    const QByteArray name = QStringLiteral("SELECT Va_Navn FROM Vare WHERE Va_Id = '%1'").arg(item).toUtf8();
    for (const std::size_t index : {0U, 1U}) {
        EXPECT_EQ(valueAt(till(index), name.constData()), QStringLiteral("Nytt navn"));
        EXPECT_EQ(status(window).Row(static_cast<int>(index)).Sendt, true);
    }
}

TEST_F(Sending, WithThreadsIsOnlyAMessage) {
    MainWindow window(path(), store);
    open(window);
    window.Ask.SelectTills = [](TKasseCollection&, const TSyncVersions&) {
        ADD_FAILURE() << "asked";
        return true;
    };
    QStringList shown;
    window.Ask.ShowMessage = [&shown](const QString& text) { shown << text; };
    test::child<QCheckBox>(window, "cbUseThreads").click();
    click(window, "actiSendVarer");
    EXPECT_EQ(shown,
              QStringList{QStringLiteral("TrÃ¥der er ikke lenger stÃ¸ttet grunnet bortfall av stÃ¸tte for DTS")});
    EXPECT_EQ(log(window), QStringList());
}

TEST_F(Sending, TakesThePreferencesAsTheyAreNow) {
    MainWindow window(path(), store);
    open(window);
    test::child<QCheckBox>(window, "cbSendPriceAndCustomer").click();
    EXPECT_FALSE(window.TorvikPos1().SendCustomerAndPrice);
    click(window, "actiSendVarer");
    EXPECT_TRUE(window.TorvikPos1().SendCustomerAndPrice);
    EXPECT_EQ(window.TorvikPos1().Tasks, TTasks{taSend});
}

TEST_F(Sending, TillInATransactionIsRefusedWithItsReason) {
    const auto busy = test::tillSession(chain, 1);
    busy->StartTransaction();
    MainWindow window(path(), store);
    open(window);
    click(window, "actiSendVarer");
    EXPECT_EQ(status(window).Row(1).Melding,
              QStringLiteral("Sender ikke oppdatering til (avd. 102, kasse 1), fordi den er i en transaksjon. Kanskje "
                             "kasseoppgjøret ikke er avsluttet,"));
    EXPECT_EQ(status(window).Row(0).Sendt, true);
}

using Fetching = test::WindowOfCommands;

TEST_F(Fetching, TellsHowOldEachTillsBackupIs) {
    for (const std::size_t index : {0U, 1U})
        chain.runInTill(index,
                        "CREATE DATABASE [ABC]\nINSERT INTO msdb.dbo.backupset (database_name, type, "
                        "backup_finish_date) VALUES ('ABC', 'D', DATEADD(day, -" +
                            std::to_string(index + 5) + ", GETDATE()))");
    chain.runInTill(1, "USE msdb DROP TABLE backupset");
    MainWindow window(path(), store);
    open(window);
    click(window, "actiOppgjorManually");
    EXPECT_EQ(status(window).Row(0).DagerSidenBackup, 5);
    // A till that cannot tell is fetched all the same.
    EXPECT_EQ(status(window).Row(1).DagerSidenBackup, std::nullopt);
    EXPECT_EQ(status(window).Row(1).Hentet, true);
    EXPECT_EQ(errors(window), QStringList());
}

TEST_F(Fetching, TillInATransactionIsRefusedWithItsReason) {
    const auto busy = test::tillSession(chain, 1);
    busy->StartTransaction();
    MainWindow window(path(), store);
    open(window);
    click(window, "actiOppgjorManually");
    EXPECT_TRUE(errors(window).contains(
        QStringLiteral("Henter ikke oppgjør (avd. 102, kasse 1), fordi den er i en transaksjon. Kanskje kasseoppgjøret "
                       "ikke er avsluttet")));
    EXPECT_EQ(status(window).Row(0).Hentet, true);
}

TEST_F(Fetching, TillWithTemporarySettlementsIsRefusedWithItsReason) {
    chain.runInTill(1, "UPDATE Oppgjor SET Op_Type = 'MIDLERTIDIG' WHERE Op_Id = (SELECT MAX(Op_Id) FROM Oppgjor)");
    MainWindow window(path(), store);
    open(window);
    click(window, "actiOppgjorManually");
    EXPECT_TRUE(errors(window).contains(QStringLiteral(
        "Henter ikke oppgjør (avd. 102, kasse 1), fordi den har midlertidige oppgjør (OP_TYPE=MIDLERTIDIG)")));
    EXPECT_EQ(status(window).Row(0).Hentet, true);
}

using Accumulating = test::WindowOfCommands;

constexpr char kWaiting[] = "SELECT COUNT(*) FROM PosOppgjor WHERE Pos_Op_Status < 8 AND Pos_Op_Type = 'NORMAL'";

TEST_F(Accumulating, FollowsAFetchThatWasCancelledToo) {
    store.write("Smtp/AutomaticAccumulate", true);
    MainWindow window(path(), store);
    open(window);
    at(window, "Hentet oppgjør fra avd.", [&] { click(window, "actiCancel"); });
    click(window, "actiOppgjorManually");
    EXPECT_TRUE(log(window).contains(QStringLiteral("Avbrutt av bruker")));
    // The fetch tells of its cancel and comes back as after any other failure: what has been fetched is accumulated.
    EXPECT_EQ(log(window).count(QStringLiteral("Foretar automatisk akkumulering")), 1);
    EXPECT_EQ(valueAt(office(), kWaiting), QStringLiteral("0"));
}

TEST_F(Accumulating, RunsOnceUntilTheNextArming) {
    store.write("Smtp/AutomaticAccumulate", true);
    MainWindow window(path(), store);
    open(window);
    click(window, "actiOppgjorManually");
    click(window, "actiOppgjorManually");
    EXPECT_EQ(log(window).count(QStringLiteral("Foretar automatisk akkumulering")), 1)
        << "an untick of what is not ticked arms and disarms nothing";
}

}  // namespace
}  // namespace torvik
