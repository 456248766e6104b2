#include <gtest/gtest.h>

#include <QFile>

#include "engine/base/abort.h"
#include "tests/engine/fake_surroundings.h"

namespace torvik {
namespace {

using test::FakeEngine;

QString contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QStringLiteral("(no file)");
}

TEST(AddLog, LineHasTimeTwoBlanksAndColon) {
    FakeEngine f;
    f.engine.AddLog(QStringLiteral("STARTER oppgjør"));
    EXPECT_EQ(f.log.Lines(), QStringList{QStringLiteral("04.03.2026 05:06:07  : STARTER oppgjør")});
    EXPECT_TRUE(f.errors.Lines().isEmpty());
}

TEST(AddLog, PercentSignsInTheMessageStay) {
    FakeEngine f;
    f.engine.AddLog(QStringLiteral("100 %1 %2 %s"));
    EXPECT_EQ(f.messages(), QStringList{QStringLiteral("100 %1 %2 %s")});
}

TEST(AddLog, ErrorGoesToBothPanes) {
    FakeEngine f;
    f.engine.AddLog(QStringLiteral("feil"), true);
    EXPECT_EQ(f.messages(), QStringList{QStringLiteral("feil")});
    EXPECT_EQ(f.errorMessages(), QStringList{QStringLiteral("feil")});
}

TEST(AddLog, BlankMessageAddsALineWithOnlyTheTime) {
    FakeEngine f;
    f.engine.AddLog(QString());
    f.engine.AddLog(QStringLiteral("  "));
    EXPECT_EQ(f.log.Lines(),
              (QStringList{QStringLiteral("04.03.2026 05:06:07  : "), QStringLiteral("04.03.2026 05:06:07  :   ")}));
}

TEST(AddLog, ClosedRosterAddsNoTillItemAndDoesNotFail) {
    FakeEngine f;
    f.engine.Avdeling->KasseCollection()->Add();
    f.engine.AddLog(QStringLiteral("utenfor kjøring"));
    EXPECT_EQ((*f.engine.Avdeling->KasseCollection())[0].LogItems.Count(), 0);
    EXPECT_EQ(f.messages().size(), 1);
}

TEST(AddLog, MultiThreadingDivertsLinesButNotErrorsOfTheErrorPane) {
    FakeEngine f;
    f.engine.AllowMultiThreading = true;
    f.engine.AddLog(QStringLiteral("feil"), true);
    EXPECT_TRUE(f.log.Lines().isEmpty());
    EXPECT_EQ(f.engine.Logbuffer, QStringList{QStringLiteral("04.03.2026 05:06:07  : feil")});
    EXPECT_EQ(f.errorMessages(), QStringList{QStringLiteral("feil")});
}

TEST(AddLog, NonVisualLogsGetTheSameLines) {
    FakeEngine f;
    QStringList lines;
    QStringList errorLines;
    f.engine.Log = nullptr;
    f.engine.NonVisualLog = &lines;
    f.engine.NonVisualErrorLog = &errorLines;
    f.engine.AddLog(QStringLiteral("en"));
    f.engine.AddLog(QStringLiteral("to"), true);
    EXPECT_EQ(lines,
              (QStringList{QStringLiteral("04.03.2026 05:06:07  : en"), QStringLiteral("04.03.2026 05:06:07  : to")}));
    EXPECT_EQ(errorLines, QStringList{QStringLiteral("04.03.2026 05:06:07  : to")});
    EXPECT_TRUE(f.errors.Lines().isEmpty()) << "the error pane goes with the pane";
}

TEST(AddLog, BothLogsDivertedGiveTwoBufferLines) {
    FakeEngine f;
    QStringList lines;
    f.engine.NonVisualLog = &lines;
    f.engine.AllowMultiThreading = true;
    f.engine.AddLog(QStringLiteral("en"));
    EXPECT_EQ(f.engine.Logbuffer.size(), 2);
    EXPECT_TRUE(lines.isEmpty());
}

TEST(AddLog, PumpsMessagesOnceForEachLine) {
    FakeEngine f;
    f.engine.AddLog(QStringLiteral("en"));
    f.engine.AddLog(QStringLiteral("to"));
    EXPECT_EQ(f.around.pumps, 2);
}

TEST(AddLog, FailingOutletNeverFailsTheRun) {
    struct BrokenPane : StringListPane {
        void AddLine(const QString&) override { throw EngineError(QStringLiteral("ødelagt")); }
    } broken;
    FakeEngine f;
    f.engine.Log = &broken;
    EXPECT_NO_THROW(f.engine.AddLog(QStringLiteral("en")));
}

TEST(AddLog, CommandThatThrowsWhilePumpingNeverFailsTheRun) {
    FakeEngine f;
    f.around.onPump = [] { throw EAbort(); };
    EXPECT_NO_THROW(f.engine.AddLog(QStringLiteral("en")));
}

struct LevelCase {
    bool isError;
    TKasseLogSeverity given;
    int level;  // -1: no event
};

class AddLogEvent : public testing::TestWithParam<LevelCase> {};

TEST_P(AddLogEvent, MapsTheSeverityToItsLevel) {
    FakeEngine f;
    QStringList events;
    f.engine.SetRunAsService(true);
    f.engine.OnAddLog = [&](QObject* sender, const QString& text, int level, const QDateTime& at) {
        EXPECT_EQ(sender, &f.engine);
        EXPECT_EQ(at, f.around.now);
        events.append(QStringLiteral("%1 %2").arg(text).arg(level));
    };
    f.engine.AddLog(QStringLiteral("melding"), GetParam().isError, GetParam().given);
    EXPECT_EQ(events,
              GetParam().level < 0 ? QStringList() : QStringList{QStringLiteral("melding %1").arg(GetParam().level)});
}

INSTANTIATE_TEST_SUITE_P(AllSeverities, AddLogEvent,
                         testing::Values(LevelCase{false, klsNone, 4}, LevelCase{false, kls_OK, -1},
                                         LevelCase{false, kls_Warning, 2}, LevelCase{false, kls_Error, 1},
                                         LevelCase{true, klsNone, 1}, LevelCase{true, kls_OK, -1},
                                         LevelCase{true, kls_Warning, 1}));

TEST(AddLog, EventNeedsRunAsServiceAndAText) {
    FakeEngine f;
    int events = 0;
    f.engine.OnAddLog = [&](QObject*, const QString&, int, const QDateTime&) { ++events; };
    f.engine.AddLog(QStringLiteral("uten tjeneste"), false, kls_Warning);
    f.engine.SetRunAsService(true);
    f.engine.AddLog(QStringLiteral("  "), false, kls_Warning);
    EXPECT_EQ(events, 0);
}

TEST(SaveOppgjorLog, WritesThePaneIntoTheTemporaryFolder) {
    FakeEngine f;
    f.engine.AddLog(QStringLiteral("Fullført oppgjør"));
    f.engine.SaveOppgjorLog();
    EXPECT_EQ(contentOf(f.around.folder.filePath(QStringLiteral("ZoppgjorLog.txt"))),
              QStringLiteral("04.03.2026 05:06:07  : Fullført oppgjør\n"));
    EXPECT_FALSE(QFile::exists(f.around.folder.filePath(QStringLiteral("ZoppgjorErrorLog.txt"))));
}

TEST(SaveOppgjorLog, NonVisualLogOverwritesThePane) {
    FakeEngine f;
    QStringList lines{QStringLiteral("uten vindu")};
    QStringList errorLines{QStringLiteral("feil")};
    f.log.AddLine(QStringLiteral("pane"));
    f.engine.NonVisualLog = &lines;
    f.engine.NonVisualErrorLog = &errorLines;
    f.engine.SaveOppgjorLog();
    EXPECT_EQ(contentOf(f.around.folder.filePath(QStringLiteral("ZoppgjorLog.txt"))), QStringLiteral("uten vindu\n"));
    EXPECT_EQ(contentOf(f.around.folder.filePath(QStringLiteral("ZoppgjorErrorLog.txt"))), QStringLiteral("feil\n"));
}

TEST(SaveOppgjorLog, EachRunOverwritesTheOneBefore) {
    FakeEngine f;
    f.log.AddLine(QStringLiteral("første kjøring, en lang linje"));
    f.engine.SaveOppgjorLog();
    f.log.Clear();
    f.log.AddLine(QStringLiteral("andre"));
    f.engine.SaveOppgjorLog();
    EXPECT_EQ(contentOf(f.around.folder.filePath(QStringLiteral("ZoppgjorLog.txt"))), QStringLiteral("andre\n"));
}

TEST(SaveOppgjorLog, FolderThatCannotBeWrittenIsAnErrorWithItsName) {
    FakeEngine f;
    f.engine.Seam.tempFolder = [] { return QStringLiteral("/nowhere/at/all"); };
    try {
        f.engine.SaveOppgjorLog();
        FAIL() << "no exception";
    } catch (const EngineError& error) {
        EXPECT_TRUE(ErrorText(error).contains(QStringLiteral("/nowhere/at/all/ZoppgjorLog.txt"))) << error.what();
    }
}

}  // namespace
}  // namespace torvik
