// The check of the set-up over the demo chain: what a good one shows, and each way in which it is bad.
#include "shell/setup/setup_check.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QTreeWidget>

#include "shell/setup/setup_report.h"
#include "tests/shell/modal.h"
#include "tests/shell/night/smtp_server.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

class SetupCheck : public test::WindowOverAChain {
protected:
    // "+ row: detail", "! ..." or "- ...", without the details of good rows.
    QStringList check(QTime startTime = QTime(4, 0), int mailPort = 0,
                      const QString& mailServer = QStringLiteral("127.0.0.1")) {
        MainWindow window(path(), store);
        QStringList rows;
        checkSetup(
            {.engine = window.TorvikPos1(),
             .folder = path(),
             .startTime = startTime,
             .sendsLogs = mailPort != 0,
             .mailServer = mailServer,
             .mailPort = mailPort},
            [&](const CheckResult& result) {
                const char* sign = result.outcome == CheckOutcome::Good      ? "+ "
                                   : result.outcome == CheckOutcome::Warning ? "! "
                                                                             : "- ";
                rows << QString::fromUtf8(sign) + result.what +
                            (result.outcome == CheckOutcome::Good ? QString() : QStringLiteral(": ") + result.detail);
            });
        return rows;
    }
};

TEST_F(SetupCheck, GoodSetUpIsAllTicks) {
    const test::SmtpServer mail;
    EXPECT_EQ(
        check(QTime(4, 0), mail.port()),
        (QStringList{QStringLiteral("+ Automatisk start kl. 04:00"), QStringLiteral("+ Loggmappen"),
                     QStringLiteral("+ Datalenken \"Torvik.UDL\""), QStringLiteral("+ Back office"),
                     QStringLiteral("+ Versjon av back office"), QStringLiteral("+ Rettighet i back office: lese"),
                     QStringLiteral("+ Rettighet i back office: skrive"),
                     QStringLiteral("+ Rettighet i back office: lage mellomtabeller"),
                     QStringLiteral("+ Prosedyrer i back office"), QStringLiteral("+ Avdeling 101, kasse 1"),
                     QStringLiteral("+ Avdeling 102, kasse 1"), QStringLiteral("+ E-postserver")}));
}

TEST_F(SetupCheck, HourThatTheClockSkipsIsWarnedOf) {
    EXPECT_EQ(
        check(QTime(2, 30)).first(),
        QStringLiteral("! Automatisk start kl. 02:30: Faller bort når sommertiden begynner, og kommer to ganger når "
                       "den slutter. Velg en annen time"));
    EXPECT_TRUE(check(QTime(3, 0)).first().startsWith(u'+'));
    EXPECT_TRUE(check(QTime(1, 59)).first().startsWith(u'+'));
}

TEST_F(SetupCheck, TillThatIsAwayIsACrossWithTheReasonAndTheOthersAreTicks) {
    chain.till(0).stopListening();
    QStringList bad;
    for (const QString& row : check())
        if (!row.startsWith(u'+')) bad << row;
    ASSERT_EQ(bad.size(), 1) << bad.join(u'\n').toStdString();
    EXPECT_TRUE(bad[0].startsWith(QStringLiteral("- Avdeling 10"))) << bad[0].toStdString();
    EXPECT_FALSE(bad[0].contains(QStringLiteral("Pos-1"))) << "no password";
}

TEST_F(SetupCheck, MissingProcedureIsNamed) {
    chain.runInBackOffice("DROP PROCEDURE UpdateVareStatistikk");
    EXPECT_TRUE(check().contains(QStringLiteral("- Prosedyrer i back office: Mangler: UpdateVareStatistikk")));
}

TEST_F(SetupCheck, MailServerThatIsAwayIsACross) {
    int port = 0;
    {
        const test::SmtpServer gone;
        port = gone.port();
    }
    EXPECT_TRUE(check(QTime(4, 0), port).last().startsWith(QStringLiteral("- E-postserver: ")));
}

TEST_F(SetupCheck, CommandShowsTheRowsAndASummary) {
    MainWindow window(path(), store);
    window.show();
    int rows = 0;
    QString summary;
    test::whenAsked<SetupReport>(
        [&](SetupReport& report) {
            rows = test::child<QTreeWidget>(report, "rows").topLevelItemCount();
            summary = test::child<QLabel>(report, "summary").text();
            test::press(report, "close");
        },
        [](SetupReport& report) { return test::child<QPushButton>(report, "close").text() == QStringLiteral("Lukk"); });
    click(window, "actiCheckSetup");
    EXPECT_EQ(rows, 11);
    EXPECT_EQ(summary, QStringLiteral("Alt er i orden"));
}

TEST_F(SetupCheck, AvbrytEndsTheCheck) {
    MainWindow window(path(), store);
    window.show();
    test::whenAsked<SetupReport>([&](SetupReport& report) { test::press(report, "close"); });
    click(window, "actiCheckSetup");
    EXPECT_TRUE(window.TorvikPos1().Log->Lines().last().endsWith(QStringLiteral("Avbrutt av bruker")));
    EXPECT_FALSE(window.TorvikPos1().SourceConnection->Connected());
}

}  // namespace
}  // namespace torvik
