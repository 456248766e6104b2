// The story of a failed till: what it tells, how it is asked for, and that a run goes on while it is read.
#include "shell/status/till_story.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QTextEdit>
#include <QTreeView>

#include "engine/base/step_error.h"
#include "engine/run/run_parts.h"
#include "engine/status/oppgjor_status.h"
#include "shell/status/till_story_dialog.h"
#include "tests/shell/modal.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/pump.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

class TillStoryOfARun : public test::WindowOverAChain {
protected:
    void fetch(MainWindow& window) {
        window.show();
        window.TorvikPos1().RetryCount = 1;
        allTills(window);
        click(window, "actiOppgjorManually");
    }
    [[nodiscard]] static QTreeView& tree(MainWindow& window) { return test::child<QTreeView>(window, "statusTree"); }
    // Department 102 stands first, 101 below it.
    [[nodiscard]] static QModelIndex till(MainWindow& window, int row) { return tree(window).model()->index(row, 0); }
    static void doubleClick(MainWindow& window, const QModelIndex& index) {
        QTreeView& view = tree(window);
        view.scrollTo(index);
        const QPoint at = view.visualRect(index).center();
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, at);
    }
    [[nodiscard]] static QList<TillStoryDialog*> open(MainWindow& window) {
        QList<TillStoryDialog*> shown = window.findChildren<TillStoryDialog*>();
        shown.removeIf([](const TillStoryDialog* dialog) { return !dialog->isVisible(); });
        return shown;
    }
    [[nodiscard]] static QString told(TillStoryDialog& dialog) {
        return test::child<QTextEdit>(dialog, "story").toPlainText();
    }
    void setTill(const char* assignments) {
        chain.runInBackOffice("UPDATE Internkundekasse SET " + std::string(assignments) + " WHERE Ikk_Ik_Ku_Id = 1002");
    }
};

TEST_F(TillStoryOfARun, DoubleClickOnAFailedTillTellsWhyItCouldNotBeConnectedTo) {
    setTill("Ikk_Passord = 'sesam-sesam'");
    MainWindow window(path(), store);
    fetch(window);
    doubleClick(window, till(window, 0));
    ASSERT_EQ(open(window).size(), 1);
    TillStoryDialog& story = *open(window)[0];
    EXPECT_FALSE(story.isModal());
    EXPECT_TRUE(story.windowTitle().contains(QStringLiteral("Avdeling 102"))) << story.windowTitle().toStdString();
    for (const char16_t* text :
         {u"Feil brukernavn eller passord", u"Klarte ikke å koble til avdelingsnummer 102 kassenummer 1)",
          u"Login failed for user 'pos'", u"18456", u"Prøver kassen på nytt. Den er ikke rørt."})
        EXPECT_TRUE(told(story).contains(QString::fromUtf16(text))) << told(story).toStdString();
    EXPECT_FALSE(told(story).contains(QStringLiteral("sesam")));

    test::press(story, "copy");
    const QString copied = QGuiApplication::clipboard()->text();
    EXPECT_TRUE(copied.startsWith(story.windowTitle() + QStringLiteral("\nFeilet\n"))) << copied.toStdString();
    EXPECT_TRUE(copied.contains(QStringLiteral("\nÅrsak: Feil brukernavn eller passord\n")));
    EXPECT_TRUE(copied.contains(QStringLiteral("\nServerens feilnummer: 18456\n")));
    test::press(story, "close");
    EXPECT_EQ(open(window).size(), 0);
}

TEST_F(TillStoryOfARun, TellsTheStepTheTableAndTheServersAnswer) {
    chain.runInBackOffice("DROP PROCEDURE ExecuteDtsFromPos");
    chain.runInBackOffice(
        "CREATE PROCEDURE ExecuteDtsFromPos @Ik_Ku_Id int, @KasseNr int, @UnId uniqueidentifier AS RAISERROR('Lageret "
        "er stengt', 16, 1)");
    MainWindow window(path(), store);
    fetch(window);
    const TillStory story = storyOf(*window.TorvikPos1().ffraOppgjorStatus, 0);
    EXPECT_TRUE(story.text().contains(QStringLiteral("\nTabell: ExecuteDtsFromPos"))) << story.text().toStdString();
    EXPECT_TRUE(story.text().contains(QStringLiteral("\nSteg: "))) << story.text().toStdString();
    EXPECT_TRUE(story.text().contains(QStringLiteral("\nÅrsak: Serveren avviste en setning\n")));
    EXPECT_TRUE(story.text().contains(QStringLiteral("\nServerens svar: Lageret er stengt")));
}

TEST_F(TillStoryOfARun, IsAskedForByTheKeyboardAndByTheMenuToo) {
    chain.till(1).stopListening();
    MainWindow window(path(), store);
    fetch(window);
    tree(window).setFocus();
    tree(window).setCurrentIndex(till(window, 0));
    QTest::keyClick(&tree(window), Qt::Key_Return);
    EXPECT_EQ(open(window).size(), 1);

    QTimer::singleShot(0, qApp, [] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        for (QAction* action : menu->actions())
            if (action->objectName() == u"story") action->trigger();
        menu->close();
    });
    Q_EMIT tree(window).customContextMenuRequested(tree(window).visualRect(till(window, 0)).center());
    EXPECT_EQ(open(window).size(), 2);
}

TEST_F(TillStoryOfARun, TillThatIsInOrderHasNoneAndOpensAndCloses) {
    chain.till(1).stopListening();
    MainWindow window(path(), store);
    fetch(window);
    const QModelIndex inOrder = till(window, 1);
    ASSERT_TRUE(tree(window).isExpanded(inOrder));
    doubleClick(window, inOrder);
    EXPECT_FALSE(tree(window).isExpanded(inOrder));
    doubleClick(window, inOrder);
    EXPECT_TRUE(tree(window).isExpanded(inOrder));
    EXPECT_EQ(open(window).size(), 0);
}

TEST_F(TillStoryOfARun, LineOfAFailedTillAsksForItsStory) {
    chain.till(1).stopListening();
    MainWindow window(path(), store);
    fetch(window);
    doubleClick(window, tree(window).model()->index(0, 0, till(window, 0)));
    EXPECT_EQ(open(window).size(), 1);
}

TEST_F(TillStoryOfARun, NextRunBeginsWithoutTheOldStory) {
    chain.till(1).stopListening();
    MainWindow window(path(), store);
    fetch(window);
    const TfraOppgjorStatus& status = *window.TorvikPos1().ffraOppgjorStatus;
    EXPECT_EQ(status.Failures(0).size() + status.Failures(1).size(), 1U);
    window.TorvikPos1().ffraOppgjorStatus->Clear();
    EXPECT_EQ(status.Failures(0).size() + status.Failures(1).size(), 0U);
}

TEST_F(TillStoryOfARun, SendingThatFailedAtATableTellsIt) {
    chain.runInTill(1, "DROP TABLE MERSALGVARE");
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    click(window, "actiSendVarer");
    doubleClick(window, till(window, 0));
    ASSERT_EQ(open(window).size(), 1);
    const QString story = told(*open(window)[0]);
    for (const char16_t* text :
         {u"Serveren avviste en setning", u"Mersalgvare", u"Invalid object name 'MersalgVare'.", u"208"})
        EXPECT_TRUE(story.contains(QString::fromUtf16(text))) << story.toStdString();
    const QString copied = storyOf(*window.TorvikPos1().ffraOppgjorStatus, 1).text();
    EXPECT_TRUE(copied.contains(QStringLiteral("\nSteg: Mersalgvare\nTabell: MersalgVare\n"))) << copied.toStdString();
}

TEST_F(TillStoryOfARun, SendingThatCouldNotConnectTellsWhy) {
    setTill("Ikk_Passord = 'sesam-sesam'");
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    click(window, "actiSendVarer");
    doubleClick(window, till(window, 0));
    ASSERT_EQ(open(window).size(), 1);
    const QString story = told(*open(window)[0]);
    for (const char16_t* text : {u"Feil brukernavn eller passord", u"Login failed for user 'pos'", u"18456"})
        EXPECT_TRUE(story.contains(QString::fromUtf16(text))) << story.toStdString();
    EXPECT_FALSE(story.contains(QStringLiteral("sesam")));
}

}  // namespace
}  // namespace torvik
