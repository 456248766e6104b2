// A pane shows the last lines; what is saved and counted is the whole log.
#include "shell/log/log_pane_view.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTextBlock>

#include "engine/base/abort.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

class LogPane : public testing::Test {
protected:
    [[nodiscard]] QPlainTextEdit& widget() const { return *pane.findChild<QPlainTextEdit*>(QStringLiteral("lines")); }
    [[nodiscard]] QByteArray content(const QString& file) const {
        QFile in(file);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }
    QTemporaryDir folder;
    LogPaneView pane{QStringLiteral("Merknad")};
};

TEST_F(LogPane, HoldsTheLastTwentyThousandLinesAndSavesAll) {
    constexpr int kLines = 20050;
    int counted = 0;
    QObject::connect(&pane, &LogPaneView::lineCountChanged, &pane, [&](int lines) { counted = lines; });
    for (int i = 1; i <= kLines; ++i) pane.AddLine(QStringLiteral("linje %1").arg(i));
    EXPECT_EQ(widget().blockCount(), 20000);
    EXPECT_EQ(widget().document()->firstBlock().text(), QStringLiteral("linje 51"));
    EXPECT_EQ(widget().document()->lastBlock().text(), QStringLiteral("linje 20050"));
    EXPECT_EQ(counted, kLines);
    EXPECT_EQ(pane.Lines().size(), kLines);
    EXPECT_EQ(pane.Lines().first(), QStringLiteral("linje 1"));

    const QString text = folder.filePath(QStringLiteral("l.log"));
    const QString rtf = folder.filePath(QStringLiteral("l.rtf"));
    pane.SaveLines(text);
    pane.SaveRichText(rtf);
    EXPECT_EQ(content(text).count('\n'), kLines);
    EXPECT_EQ(content(rtf).count("\\par\r\n"), kLines);
    EXPECT_TRUE(content(rtf).contains("\\cf0 linje 1\\par"));
}

TEST_F(LogPane, LineIsTextWhateverItHolds) {
    pane.AddLine(QStringLiteral("<b>ikke fet</b> & {\\rtf}"));
    EXPECT_EQ(widget().toPlainText(), QStringLiteral("<b>ikke fet</b> & {\\rtf}"));
}

TEST_F(LogPane, RedLinesAreRedInTheFileToo) {
    pane.AddLine(QStringLiteral("sort"));
    pane.SetColor(PaneColor::Red);
    pane.AddLine(QStringLiteral("rød {\\}"));
    pane.SetColor(PaneColor::Normal);
    pane.AddLine(QStringLiteral("sort igjen"));
    const QString rtf = folder.filePath(QStringLiteral("l.rtf"));
    pane.SaveRichText(rtf);
    EXPECT_EQ(content(rtf),
              QByteArray("{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fmodern Courier New;}}"
                         "{\\colortbl;\\red255\\green0\\blue0;}\\f0\\fs18\r\n"
                         "\\cf0 sort\\par\r\n\\cf1 r\\u248?d \\{\\\\\\}\\par\r\n\\cf0 sort igjen\\par\r\n}\r\n"));
    const QTextBlock second = widget().document()->findBlockByNumber(1);
    EXPECT_EQ(second.begin().fragment().charFormat().foreground().color(), QColor(Qt::red));
}

TEST_F(LogPane, ClearEmptiesPaneAndLog) {
    pane.AddLine(QStringLiteral("en"));
    int counted = -1;
    QObject::connect(&pane, &LogPaneView::lineCountChanged, &pane, [&](int lines) { counted = lines; });
    pane.Clear();
    EXPECT_EQ(counted, 0);
    EXPECT_EQ(pane.Lines(), QStringList());
    pane.AddLine(QStringLiteral("to"));
    EXPECT_EQ(widget().toPlainText(), QStringLiteral("to"));
}

TEST_F(LogPane, FileThatCannotBeWrittenIsAnErrorWithItsName) {
    try {
        pane.SaveRichText(folder.path());
        FAIL() << "a folder is no file";
    } catch (const EngineError& e) {
        EXPECT_TRUE(ErrorText(e).startsWith(folder.path()));
    }
}

}  // namespace
}  // namespace torvik
