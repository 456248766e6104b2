// The mail of the logs against a real SMTP server: what arrives, and what is told when it does not.
#include "shell/night/log_mail.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTimeZone>

#include "engine/base/abort.h"
#include "tests/shell/night/smtp_server.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

class Mail : public testing::Test {
protected:
    Mail() {
        mail.server = QStringLiteral("127.0.0.1");
        mail.sender = QStringLiteral("kasse@torvik.example");
        mail.recipients = QStringLiteral("drift@torvik.example, vakt@torvik.example,");
        mail.subject = QStringLiteral("TorvikPosSync logg");
        mail.body = QStringLiteral("Se vedlagt logg fra siste TorvikPosSync kjÃ¸ring (Server: a, database: b)");
        mail.date = QDateTime(QDate(2026, 3, 1), QTime(4, 5, 6), QTimeZone(-5400));
        for (const char* name : {"TorvikPos.rtf", "TorvikPosError.rtf"}) {
            QFile file(folder.filePath(QString::fromUtf8(name)));
            EXPECT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(QByteArray("{\\rtf1 ") + name + "}\r\n");
            mail.attachments << file.fileName();
        }
    }
    // What sending raises; empty when it does not.
    QString send(int port) {
        mail.port = port;
        try {
            mail.send([this] { ++pumps; }, [this] { return cancelled; });
        } catch (const EngineError& e) {
            return ErrorText(e);
        }
        return {};
    }

    QTemporaryDir folder;
    LogMail mail;
    int pumps = 0;
    bool cancelled = false;
};

TEST_F(Mail, ArrivesWithItsTextAndBothFiles) {
    const test::SmtpServer server;
    EXPECT_EQ(send(server.port()), QString());
    ASSERT_EQ(server.mails().size(), 1);
    const QJsonObject got = server.mails()[0];
    EXPECT_EQ(got[u"sender"].toString(), QStringLiteral("kasse@torvik.example"));
    EXPECT_EQ(got[u"recipients"].toArray(),
              (QJsonArray{QStringLiteral("drift@torvik.example"), QStringLiteral("vakt@torvik.example")}));
    EXPECT_EQ(got[u"from"].toString(), QStringLiteral("kasse@torvik.example"));
    EXPECT_EQ(got[u"to"].toString(), QStringLiteral("drift@torvik.example, vakt@torvik.example"));
    EXPECT_EQ(got[u"subject"].toString(), QStringLiteral("TorvikPosSync logg"));
    EXPECT_EQ(got[u"date"].toString(), QStringLiteral("Sun, 01 Mar 2026 04:05:06 -0130"));
    EXPECT_FALSE(got[u"encrypted"].toBool());
    EXPECT_FALSE(got[u"authenticated"].toBool());
    EXPECT_EQ(got[u"body"].toString().trimmed(), mail.body);
    EXPECT_EQ(got[u"attachments"].toObject(),
              (QJsonObject{{QStringLiteral("TorvikPos.rtf"), QStringLiteral("{\\rtf1 TorvikPos.rtf}\r\n")},
                           {QStringLiteral("TorvikPosError.rtf"), QStringLiteral("{\\rtf1 TorvikPosError.rtf}\r\n")}}));
    EXPECT_EQ(got[u"types"].toArray(),
              (QJsonArray{QStringLiteral("application/rtf"), QStringLiteral("application/rtf")}));
}

TEST_F(Mail, RefusalsAreToldAndNothingArrives) {
    for (const char* fault : {"refuse-sender", "refuse-recipient", "refuse-data"}) {
        const test::SmtpServer server(QString::fromUtf8(fault));
        const QString told = send(server.port());
        EXPECT_TRUE(told.contains(QStringLiteral("55"))) << fault << ": " << told.toStdString();
        EXPECT_TRUE(server.mails().isEmpty()) << fault;
    }
}

TEST_F(Mail, NobodyListeningIsTold) {
    int port = 0;
    {
        const test::SmtpServer gone;
        port = gone.port();
    }
    EXPECT_TRUE(send(port).contains(QStringLiteral("connect"), Qt::CaseInsensitive));
}

TEST_F(Mail, EmptyServerIsTold) {
    mail.server.clear();
    EXPECT_FALSE(send(25).isEmpty());
}

TEST_F(Mail, NobodyToSendItToIsTold) {
    for (const char* nobody : {"", " , "}) {
        const test::SmtpServer server;
        mail.recipients = QString::fromUtf8(nobody);
        EXPECT_EQ(send(server.port()), QStringLiteral("Loggen har ingen mottaker"));
        EXPECT_TRUE(server.mails().isEmpty());
    }
}

TEST_F(Mail, MissingFileIsToldBeforeAnythingIsSent) {
    const test::SmtpServer server;
    mail.attachments << folder.filePath(QStringLiteral("borte.rtf"));
    EXPECT_EQ(send(server.port()), QStringLiteral("Finner ikke filen %1").arg(mail.attachments.last()));
    EXPECT_TRUE(server.mails().isEmpty());
}

TEST_F(Mail, WindowLivesWhileTheServerIsSlow) {
    const test::SmtpServer server(QStringLiteral("slow"));
    EXPECT_EQ(send(server.port()), QString());
    EXPECT_GT(pumps, 20) << "a second and a half of at most 20 ms each";
    EXPECT_EQ(server.mails().size(), 1);
}

TEST_F(Mail, CancelEndsAServerThatHangs) {
    for (const char* fault : {"hang-banner", "hang-data"}) {
        const test::SmtpServer server(QString::fromUtf8(fault));
        QElapsedTimer timer;
        timer.start();
        mail.port = server.port();
        EXPECT_THROW(mail.send([] {}, [&] { return timer.elapsed() > 700; }), EngineError) << fault;
        EXPECT_LT(timer.elapsed(), 10000) << fault;
    }
}

}  // namespace
}  // namespace torvik
