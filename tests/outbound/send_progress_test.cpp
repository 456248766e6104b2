// What a send tells of its progress: steps that begin, rows that are copied, percent of a load, and how long each took.
#include "outbound/driver/send_progress.h"

#include <gmock/gmock.h>

#include "tests/outbound/till_send.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Progress : public testing::Test {
protected:
    void listen() {
        heard = [this](QObject* from, int percent, const QString& text) {
            EXPECT_EQ(from, &sender);
            told.push_back(QStringLiteral("%1 %2").arg(percent).arg(text).toStdString());
        };
    }
    // The text of what is raised; empty for nothing.
    [[nodiscard]] std::string raisedBy(const std::function<void()>& report) const {
        try {
            report();
            return {};
        } catch (const EngineError& e) {
            return e.what();
        }
    }

    QObject sender;
    TProgressEvent heard;
    bool cancel = false;
    Rows told;
    SendProgress progress{sender, heard, cancel};
};

TEST_F(Progress, StepIsToldAsItBegins) {
    listen();
    progress.SetCurrentTransformation(QStringLiteral("Kunder"));
    EXPECT_EQ(progress.CurrentTransformation(), QStringLiteral("Kunder"));
    EXPECT_THAT(told, ElementsAre("0 Forbereder overføring av Kunder... "));
}

TEST_F(Progress, RowsAreToldAtEveryThousandthAndWhereItIsForced) {
    listen();
    for (const int row : {0, 1, 999, 1000, 1001, 2000})
        progress.DoProgress(QStringLiteral("Overfører Valuta"), row, false, 3000);
    progress.DoProgress(QStringLiteral("Overfører Valuta"), 2999, true, 3000);
    progress.DoProgress(QStringLiteral("Overfører Valuta"), 50'000'000, false, 100'000'000);
    EXPECT_THAT(told, ElementsAre("0 Overfører Valuta: 0 av 3000", "33 Overfører Valuta: 1000 av 3000",
                                  "66 Overfører Valuta: 2000 av 3000", "99 Overfører Valuta: 2999 av 3000",
                                  "50 Overfører Valuta: 50000000 av 100000000"));
}

TEST_F(Progress, NothingIsToldOfARegisterWithoutRows) {
    listen();
    progress.DoProgress(QStringLiteral("Overfører Valuta"), 0, true, 0);
    cancel = true;
    EXPECT_EQ(raisedBy([&] { progress.DoProgress(QStringLiteral("Overfører Valuta"), 0, true, 0); }), "");
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(Progress, CancelIsRaisedAtEachReportWhetherAnybodyHearsItOrNot) {
    cancel = true;
    progress.SetCurrentTransformation(QStringLiteral("VARE"));
    for (const bool heardToo : {false, true}) {
        if (heardToo) listen();
        EXPECT_EQ(raisedBy([&] { progress.DoProgress(QStringLiteral("Overfører Valuta"), 7, false, 30); }),
                  "Avbrutt av bruker. Avbrutt oppgave: (Overfører Valuta: 7 av 30)");
        EXPECT_EQ(raisedBy([&] { progress.ldrGeneralProgress(42); }), "Avbrutt av bruker. Avbrutt oppgave: (VARE: 42)");
    }
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(Progress, LoadIsToldAtItsFirstPercentAndThenAtStepsOfTen) {
    progress.SetCurrentTransformation(QStringLiteral("VARE"));
    listen();
    progress.loadBegins();
    for (const int percent : {2, 3, 11, 12, 13, 21, 22, 22, 31, 32, 99, 100}) progress.ldrGeneralProgress(percent);
    EXPECT_THAT(told, ElementsAre("2 VARE", "12 VARE", "22 VARE", "32 VARE", "99 VARE"));
}

TEST_F(Progress, NextLoadOfTheSameNameIsToldFromItsBeginning) {
    progress.SetCurrentTransformation(QStringLiteral("VARE"));
    listen();
    progress.loadBegins();
    progress.ldrGeneralProgress(100);
    progress.loadBegins();
    for (const int percent : {5, 15, 20}) progress.ldrGeneralProgress(percent);
    EXPECT_THAT(told, ElementsAre("100 VARE", "15 VARE"));
}

TEST_F(Progress, LoadOfAnotherNameIsToldAtOnce) {
    progress.SetCurrentTransformation(QStringLiteral("VARE"));
    listen();
    progress.loadBegins();
    progress.ldrGeneralProgress(90);
    progress.SetCurrentTransformation(QStringLiteral("Kunder"));
    progress.ldrGeneralProgress(90);
    progress.ldrGeneralProgress(95);
    EXPECT_THAT(told, ElementsAre("90 VARE", "0 Forbereder overføring av Kunder... ", "90 Kunder"));
}

TEST(SendTells, EndOfEachLoadButOfThoseWithoutRows) {
    TillSend send;
    send.inBackOffice("DELETE Kundevare");
    ASSERT_EQ(send.send(), QString());
    const auto lineOf = [&](const char* table) {
        return send.log.filter(QStringLiteral(" i tabellen %1.").arg(QString::fromUtf8(table)));
    };
    const auto endOf = [&](const char* table) {
        return send.progress.filter(QStringLiteral("Overfører %1:").arg(QString::fromUtf8(table)));
    };
    EXPECT_EQ(
        lineOf("MersalgVare"),
        QStringList{QStringLiteral("Fullført overføring av 0 poster i tabellen MersalgVare. Tid brukt: 00:00:00")});
    EXPECT_EQ(endOf("MersalgVare"), QStringList());
    const QString groups = QString::fromStdString(send.backOffice("SELECT COUNT(*) FROM Varegruppe").front());
    EXPECT_EQ(endOf("VAREGRUPPE"), QStringList{QStringLiteral("100 Overfører VAREGRUPPE: %1 av %1").arg(groups)});
}

// At each look the clock stands an hour, two minutes and three seconds and a bit later.
TEST(SendTells, HowLongEachRegisterTook) {
    TillSend send;
    send.dm.SendPriceAndCustomer = true;
    send.dm.Now = [now = QDateTime(QDate(2026, 3, 5), QTime(0, 0))]() mutable { return now = now.addMSecs(3'723'004); };
    ASSERT_EQ(send.send(), QString());
    ASSERT_EQ(send.log.filter(QStringLiteral("Fullført overføring av ")).size(), 22);
    EXPECT_EQ(send.log.filter(QStringLiteral(". Tid brukt: 01:02:03")).size(), 22);
}

TEST(SendTells, CancelThoughNobodyHearsIt) {
    TillSend send;
    send.dm.OnProgress = nullptr;
    send.dm.RandomSessionID = [] { return 4711; };
    send.dm.CheckForCancel = true;
    EXPECT_EQ(send.send(), QStringLiteral("TorvikToPOS failed: Kassevare SessionID: 4711 Avbrutt av bruker. Avbrutt "
                                          "oppgave: (Forbereder vareeksport: 1 av 100)"));
}

}  // namespace
}  // namespace torvik::test
