// Workers with sessions of their own, against a server.
#include "engine/workers/sync_thread.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "engine/base/abort.h"
#include "engine/db/errors.h"
#include "engine/workers/thread_collection.h"
#include "tests/engine/small_chain.h"
#include "tests/support/data_link.h"
#include "tests/support/pump.h"

namespace torvik {
namespace {

using test::pumpUntil;

class SyncThread : public testing::Test {
protected:
    SyncThread() {
        chain.tills(QStringLiteral("7/3 7/4 9/1"));
        chain.run(chain.kBackOffice,
                  QStringLiteral("CREATE TABLE InternkundeKasseKommando (Ikkk_Ikk_Ik_Ku_ID int, Ikkk_Ikk_Kassenummer "
                                 "varchar(10), Ikkk_Kommando varchar(30), Ikkk_Id1 varchar(40))"));
        writeDataLink(chain.connectString(chain.kBackOffice));
    }

    void writeDataLink(const QString& text) { test::writeDataLink(folder() + QStringLiteral("Torvik.UDL"), text); }
    [[nodiscard]] QString folder() const { return chain.around.folder.path() + u'/'; }

    // A suspended worker for the till; its end is counted and its errors are kept.
    TSyncThread* worker(const QString& till, TSyncAction action) {
        auto* made = new TSyncThread(true, list, folder());
        made->SetPOSConnectionString(chain.connectString(till));
        made->SetSyncAction(action);
        made->ShowException = [this](const QString& text) { shown.append(text); };
        made->OnTerminate = [this](QObject* sender) {
            ++ends;
            errors += qobject_cast<TTorvikPosThread*>(sender)->ErrorList;
        };
        return made;
    }
    void runToItsEnd(TSyncThread* made) {
        const int before = ends;
        made->Resume();
        ASSERT_TRUE(pumpUntil([&] { return ends > before; }));
    }
    [[nodiscard]] QString queue() {
        return chain.value(chain.kBackOffice,
                           QStringLiteral("DECLARE @all varchar(400) SET @all = '' SELECT @all = @all + "
                                          "CAST(Ikkk_Ikk_Ik_Ku_ID AS varchar) + ' ' + Ikkk_Ikk_Kassenummer + ' ' + "
                                          "Ikkk_Kommando + ' ' + Ikkk_Id1 + '|' FROM InternkundeKasseKommando ORDER BY "
                                          "Ikkk_Ikk_Ik_Ku_ID, Ikkk_Ikk_Kassenummer SELECT @all"));
    }

    test::SmallChain chain;
    TThreadCollection list;
    int ends = 0;
    QStringList errors;
    QStringList shown;
};

struct ActionCase {
    TSyncAction action;
    const char16_t* command;
    QStringList parameters;
};

TEST_F(SyncThread, ActionSetsTheCommandAndItsParameter) {
    const ActionCase cases[] = {
        {saHentGavekort, u"SEND_GAVEKORT", {QStringLiteral("GA_ID")}},
        {saHentTilgodelapp, u"SEND_TILGODELAPP", {QStringLiteral("TG_ID")}},
        {saSendGavekort, u"HENT_GAVEKORT", {QStringLiteral("GA_SYNKTIDSPUNKT")}},
        {saSendTilgodelapp, u"HENT_TILGODELAPP", {QStringLiteral("GA_SYNKTIDSPUNKT")}},
        {saSendGavekortOgTilgodelapper, u"", {}},
        {saNone, u"", {}},
    };
    auto* made = worker(QStringLiteral("Kasse_7_3"), saHentGavekort);
    for (const ActionCase& one : cases) {
        made->SetSyncAction(one.action);
        EXPECT_EQ(made->Command, QString::fromUtf16(one.command)) << one.action;
        QStringList names;
        for (const auto& parameter : made->Params.All()) names.append(parameter->Name());
        EXPECT_EQ(names, one.parameters) << one.action;
    }
}

TEST_F(SyncThread, NumbersOfTheActions) {
    EXPECT_EQ(saNone, 0);
    EXPECT_EQ(saSendGavekortOgTilgodelapper, 1);
    EXPECT_EQ(saHentGavekort, 2);
    EXPECT_EQ(saHentTilgodelapp, 3);
    EXPECT_EQ(saSendGavekort, 4);
    EXPECT_EQ(saSendTilgodelapp, 5);
}

TEST_F(SyncThread, PutsTheCommandIntoTheBackOfficesQueue) {
    auto* made = worker(QStringLiteral("Kasse_7_3"), saHentGavekort);
    made->Params.ByName(QStringLiteral("GA_ID")) = QStringLiteral("G-17");
    runToItsEnd(made);
    EXPECT_EQ(errors + shown, QStringList());
    EXPECT_EQ(queue(), QStringLiteral("7 3 SEND_GAVEKORT G-17|"));
    EXPECT_EQ(list.Count(), 0);
}

TEST_F(SyncThread, QuotesInNumbersStandAsTheyAre) {
    chain.run(chain.kBackOffice,
              QStringLiteral("UPDATE Internkunde SET Ik_Avdelingsnummer = '9''A' WHERE Ik_Ku_Id = 9"));
    chain.run(QStringLiteral("Kasse_9_1"),
              QStringLiteral("UPDATE innstillinger SET in_avdnr = '9''A', in_kassenr = '1''B'"));
    auto* made = worker(QStringLiteral("Kasse_9_1"), saHentTilgodelapp);
    made->Params.ByName(QStringLiteral("TG_ID")) = QStringLiteral("T'17");
    runToItsEnd(made);
    EXPECT_EQ(errors + shown, QStringList());
    EXPECT_EQ(queue(), QStringLiteral("9 1'B SEND_TILGODELAPP T'17|"));
}

TEST_F(SyncThread, MomentOfASendGoesAsText) {
    auto* made = worker(QStringLiteral("Kasse_9_1"), saSendTilgodelapp);
    made->Params.ByName(QStringLiteral("GA_SYNKTIDSPUNKT")) = QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7));
    runToItsEnd(made);
    EXPECT_EQ(queue(), QStringLiteral("9 1 HENT_TILGODELAPP 04.03.2026 05:06:07|"));
}

TEST_F(SyncThread, DepartmentThatTheBackOfficeDoesNotKnowPutsNoRowAndRaisesNothing) {
    chain.run(QStringLiteral("Kasse_7_3"), QStringLiteral("UPDATE innstillinger SET in_avdnr='99'"));
    auto* made = worker(QStringLiteral("Kasse_7_3"), saHentGavekort);
    runToItsEnd(made);
    EXPECT_EQ(errors + shown, QStringList());
    EXPECT_EQ(queue(), QString());
}

TEST_F(SyncThread, NoActionOnlyAsksTheTillWhoItIs) {
    writeDataLink(QStringLiteral("Data Source=127.0.0.1,1;Initial Catalog=Borte"));
    runToItsEnd(worker(QStringLiteral("Kasse_7_3"), saNone));
    EXPECT_EQ(errors + shown, QStringList());
    EXPECT_EQ(chain.requestsWith("select in_avdnr,in_kassenr from innstillinger"), 1);
}

TEST_F(SyncThread, FailureIsKeptAndShownOnTheMainThread) {
    auto* made = worker(QStringLiteral("Finnes_ikke"), saHentGavekort);
    const auto mainThread = std::this_thread::get_id();
    std::exception_ptr kept;
    made->ShowException = [&](const QString& text) {
        EXPECT_EQ(std::this_thread::get_id(), mainThread);
        shown.append(text);
        kept = made->Exception();
    };
    runToItsEnd(made);
    ASSERT_EQ(shown.size(), 1);
    EXPECT_TRUE(shown[0].contains(QStringLiteral("Finnes_ikke"))) << shown[0].toStdString();
    EXPECT_FALSE(shown[0].contains(QStringLiteral("hemmelig"))) << "a password";
    EXPECT_THROW(std::rethrow_exception(kept), db::ConnectionError);
    EXPECT_EQ(errors, QStringList());
}

TEST_F(SyncThread, FailureWithNobodyToShowItStandsInTheErrorList) {
    auto* made = worker(QStringLiteral("Kasse_7_3"), saHentGavekort);
    made->ShowException = nullptr;
    chain.run(chain.kBackOffice, QStringLiteral("DROP TABLE InternkundeKasseKommando"));
    runToItsEnd(made);
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].contains(QStringLiteral("InternkundeKasseKommando"))) << errors[0].toStdString();
}

TEST_F(SyncThread, WithoutADataLinkThereIsNoWorker) {
    QFile::remove(folder() + QStringLiteral("Torvik.UDL"));
    try {
        const TSyncThread made(true, list, folder());
        FAIL() << "no exception";
    } catch (const EngineError& error) {
        EXPECT_EQ(ErrorText(error), QStringLiteral("Ikke fullført. Filen %1Torvik.UDL mangler").arg(folder()));
    }
    EXPECT_EQ(list.Count(), 0);
}

TEST_F(SyncThread, BrokenDataLinkLeavesNoWorkerBehind) {
    QFile file(folder() + QStringLiteral("Torvik.UDL"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("Data Source=srv");
    file.close();
    EXPECT_THROW(TSyncThread(true, list, folder()), db::UsageError);
    EXPECT_EQ(list.Count(), 0);
}

TEST_F(SyncThread, SessionsConnectWithinTenSecondsAndGoThroughTheDataLink) {
    auto* made = worker(QStringLiteral("Kasse_7_3"), saNone);
    EXPECT_EQ(made->POSSession().ConnectionTimeout(), 10);
    EXPECT_EQ(made->BackOfficeConnectionString(), QStringLiteral("FILE NAME=%1Torvik.UDL").arg(folder()));
}

TEST_F(SyncThread, WorkersAndTheMainThreadUseTheServerAtOnce) {
    const QStringList tills{QStringLiteral("Kasse_7_3"), QStringLiteral("Kasse_7_4"), QStringLiteral("Kasse_9_1")};
    constexpr int kRounds = 4;
    for (int round = 0; round < kRounds; ++round) {
        for (const QString& till : tills) {
            auto* made = worker(till, saHentTilgodelapp);
            made->Params.ByName(QStringLiteral("TG_ID")) = QStringLiteral("T");
            made->Resume();
        }
    }
    chain.target.Open();
    chain.engine.Avdeling->Open();
    EXPECT_EQ(chain.engine.Avdeling->Qry().RecordCount(), 3);
    ASSERT_TRUE(pumpUntil([&] { return ends == kRounds * tills.size(); }));
    EXPECT_EQ(errors + shown, QStringList());
    EXPECT_EQ(queue().count(u'|'), kRounds * tills.size());
}

TEST_F(SyncThread, ListThatGoesWhileWorkersAreAtTheServerEndsThem) {
    auto own = std::make_unique<TThreadCollection>();
    for (int i = 0; i < 6; ++i) {
        auto* made = new TSyncThread(true, *own, folder());
        made->SetPOSConnectionString(chain.connectString(QStringLiteral("Kasse_7_3")));
        made->SetSyncAction(saHentGavekort);
        made->Resume();
    }
    own.reset();
    EXPECT_TRUE(pumpUntil([&] {
        return chain.value(
                   QStringLiteral("master"),
                   QStringLiteral("SELECT COUNT(*) FROM master..sysprocesses WHERE dbid = db_id('Kasse_7_3')")) == u"0";
    })) << "their connections are closed";
}

}  // namespace
}  // namespace torvik
