// The choice of tills: which it offers, what stands chosen, when it can be confirmed, and what it gives.
#include "shell/dialogs/velg_internkunde_kasse.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QTableWidget>

#include "engine/db/query.h"
#include "engine/db/session.h"
#include "sandbox/chain/demo_chain.h"
#include "tests/shell/modal.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

using test::child;

// Departments 101 and 102 with the tills 1 and 2 each.
class TillChoice : public testing::Test {
protected:
    TillChoice() : chain({.chain = {.departments = 2, .tills = 4, .days = 1}}) {
        session.SetConnectString(QString::fromStdString(chain.dataLink()));
        session.Open();
    }
    // The rows of the grid, or those chosen, as "101/1", with the blanks of their columns off.
    [[nodiscard]] static QString tillsIn(QDialog& dialog, bool chosenOnly = false) {
        auto& grid = child<QTableWidget>(dialog, "tills");
        QStringList tills;
        for (int row = 0; row < grid.rowCount(); ++row)
            if (!chosenOnly || grid.item(row, 0)->isSelected())
                tills << grid.item(row, 3)->text().trimmed() + u'/' + grid.item(row, 4)->text().trimmed();
        return tills.join(u' ');
    }
    static void choose(QDialog& dialog, const QList<int>& rows) {
        auto& grid = child<QTableWidget>(dialog, "tills");
        grid.clearSelection();
        for (const int row : rows)
            grid.selectionModel()->select(grid.model()->index(row, 0),
                                          QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    [[nodiscard]] QString offered(const TSyncVersions& versions) {
        TfrmVelgInternkundeKasse dialog(session);
        dialog.fSyncVersions = versions;
        QString tills;
        test::whenAsked<TfrmVelgInternkundeKasse>([&tills](TfrmVelgInternkundeKasse& shown) {
            tills = tillsIn(shown);
            test::press(shown, "cancel");
        });
        TKasseCollection chosen;
        EXPECT_FALSE(dialog.Execute(chosen));
        return tills;
    }

    sandbox::chain::DemoChain chain;
    db::Session session;
};

TEST_F(TillChoice, OffersTheActiveTillsOfTheVersionsAskedFor) {
    chain.runInBackOffice("UPDATE Internkundekasse SET Ikk_SynkVersjon = NULL WHERE Ikk_Ik_Ku_Id = 1001");
    chain.runInBackOffice(
        "UPDATE Internkundekasse SET Ikk_SynkVersjon = 0 WHERE Ikk_Ik_Ku_Id = 1002 AND Ikk_Kassenummer = '1'");
    chain.runInBackOffice(
        "UPDATE Internkundekasse SET Ikk_SynkVersjon = 1 WHERE Ikk_Ik_Ku_Id = 1002 AND Ikk_Kassenummer = '2'");
    EXPECT_EQ(offered({svTorvikPosSync}), QStringLiteral("101/1 101/2 102/1")) << "null counts as old";
    EXPECT_EQ(offered({svDotNetV1}), QStringLiteral("102/2"));
    EXPECT_EQ(offered({svTorvikPosSync, svDotNetV1}), QStringLiteral("101/1 101/2 102/1 102/2"));
    EXPECT_EQ(offered({}), QStringLiteral("101/1 101/2 102/1 102/2"));

    chain.runInBackOffice(
        "UPDATE Internkundekasse SET Ikk_Aktiv = 0 WHERE Ikk_Ik_Ku_Id = 1001 AND Ikk_Kassenummer = '1'");
    chain.runInBackOffice("INSERT KasseType (Kt_Id, Kt_Navn) VALUES (99, 'Kiosk')");
    chain.runInBackOffice("UPDATE Internkundekasse SET Ikk_Kt_Id = 99 WHERE Ikk_Ik_Ku_Id = 1002");
    EXPECT_EQ(offered({svTorvikPosSync, svDotNetV1}), QStringLiteral("101/2 102/1 102/2")) << "of every type";
}

TEST_F(TillChoice, CanBeConfirmedOnlyWithATillChosen) {
    TfrmVelgInternkundeKasse dialog(session);
    test::whenAsked<TfrmVelgInternkundeKasse>([](TfrmVelgInternkundeKasse& shown) {
        const auto& count = child<QLabel>(shown, "count");
        const auto& ok = child<QPushButton>(shown, "ok");
        EXPECT_EQ(count.text(), QStringLiteral("0 valgt"));
        EXPECT_FALSE(ok.isEnabled());
        choose(shown, {0, 2});
        EXPECT_EQ(count.text(), QStringLiteral("2 valgt"));
        EXPECT_TRUE(ok.isEnabled());
        choose(shown, {});
        EXPECT_EQ(count.text(), QStringLiteral("0 valgt"));
        EXPECT_FALSE(ok.isEnabled());
        test::press(shown, "cancel");
    });
    TKasseCollection chosen;
    chosen.Add();
    EXPECT_FALSE(dialog.Execute(chosen));
    EXPECT_EQ(chosen.Count(), 0) << "emptied whatever the answer";
}

TEST_F(TillChoice, GivesTheTillsThatAreChosen) {
    chain.runInBackOffice("UPDATE Kunde SET Ku_Adresse1 = 'Storgata 2' WHERE Ku_Id = 1002");
    chain.runInBackOffice("UPDATE Internkundekasse SET Ikk_SynkVersjon = 1");
    TfrmVelgInternkundeKasse dialog(session);
    dialog.fSyncVersions = {svDotNetV1};
    test::whenAsked<TfrmVelgInternkundeKasse>([](TfrmVelgInternkundeKasse& shown) {
        choose(shown, {3, 0});
        test::press(shown, "ok");
    });
    TKasseCollection chosen;
    ASSERT_TRUE(dialog.Execute(chosen));
    ASSERT_EQ(chosen.Count(), 2);
    EXPECT_EQ(chosen[0].Ik_Ku_ID, 1001);
    EXPECT_EQ(chosen[0].Kassenr.trimmed(), QStringLiteral("1"));
    EXPECT_EQ(chosen[1].Ik_Ku_ID, 1002);
    EXPECT_EQ(chosen[1].Kassenr, QStringLiteral("2         ")) << "as the column has it, which the till's log asks for";
    EXPECT_EQ(chosen[1].Avdnr.trimmed(), QStringLiteral("102"));
    EXPECT_EQ(chosen[1].AvdNavn.trimmed(), QStringLiteral("Storgata 2"));
    EXPECT_FALSE(chosen[1].Taken);
    EXPECT_EQ(chosen[1].SyncVersion, svTorvikPosSync) << "the initial value, whatever the till has";
}

TEST_F(TillChoice, BeginsWithTheTillsOfAnOffer) {
    chain.runInBackOffice(
        "INSERT Pristilbudlogg (Ptl_Pl_Pr_ID, Ptl_Ikk_Ik_Ku_ID, Ptl_Ikk_Kassenummer, Ptl_Tidspunkt) "
        "SELECT MIN(Pr_Id), 1001, '2', GETDATE() FROM Pristilbud");
    chain.runInBackOffice(
        "INSERT Pristilbudlogg (Ptl_Pl_Pr_ID, Ptl_Ikk_Ik_Ku_ID, Ptl_Ikk_Kassenummer, Ptl_Tidspunkt) "
        "SELECT MIN(Pr_Id), 1002, '1', GETDATE() FROM Pristilbud");
    db::Query offer(&session);
    offer.SQL = QStringList{QStringLiteral("SELECT MIN(Pr_Id) FROM Pristilbud")};
    offer.Open();
    TfrmVelgInternkundeKasse dialog(session);
    test::whenAsked<TfrmVelgInternkundeKasse>([](TfrmVelgInternkundeKasse& shown) {
        EXPECT_EQ(tillsIn(shown, true), QStringLiteral("101/2 102/1"));
        EXPECT_EQ(child<QLabel>(shown, "count").text(), QStringLiteral("2 valgt"));
        shown.accept();
    });
    TKasseCollection chosen;
    EXPECT_TRUE(dialog.Execute(chosen, static_cast<int>(offer.Fields(0).AsInteger())));
    EXPECT_EQ(chosen.Count(), 2);
}

TEST_F(TillChoice, AsksForOneTillOrForSeveral) {
    TfrmVelgInternkundeKasse dialog(session);
    const auto asks = [&dialog](const QString& prompt) {
        for (const QLabel* label : dialog.findChildren<QLabel*>())
            if (label->text() == prompt) return true;
        return false;
    };
    // The letters of the first prompt are what the operators have always seen.
    EXPECT_TRUE(asks(QStringLiteral("Velg de kassene som skal behandles. Bruk Ctrl og Shift for Ã¥ markere flere")));
    dialog.SetMultiSelect(false);
    EXPECT_TRUE(asks(QStringLiteral("Velg den kassen som skal behandles.")));
    QStringList captions;
    const auto& grid = child<QTableWidget>(dialog, "tills");
    for (int column = 0; column < grid.columnCount(); ++column) captions << grid.horizontalHeaderItem(column)->text();
    EXPECT_EQ(captions.join(u' '), QStringLiteral("Kundenr Navn Adresse Avdeling Kassenr"));
    EXPECT_EQ(grid.selectionMode(), QAbstractItemView::SingleSelection);
}

}  // namespace
}  // namespace torvik
