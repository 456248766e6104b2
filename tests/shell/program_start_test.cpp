// The program itself, started as a process in a folder of its own without a screen: its start, the failures that stop
// it, and its end. What it says stands in its log file and on standard error.
#include <gtest/gtest.h>

#include <QDate>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "engine/db/connect_string.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "sandbox/chain/demo_chain.h"
#include "tests/support/chain_session.h"
#include "tests/support/data_link.h"
#include "tests/support/http_server.h"

namespace torvik {
namespace {

constexpr int kPatienceMs = 30000;

class VirtualScreen {
public:
    VirtualScreen() {
        screen_.start(
            QStringLiteral("Xvfb"),
            {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"), QStringLiteral("0"),
             QStringLiteral("1280x720x24"), QStringLiteral("-nolisten"), QStringLiteral("tcp")});
        if (!screen_.waitForReadyRead(kPatienceMs))
            throw std::runtime_error("no virtual screen: " + screen_.errorString().toStdString());
        display_ = QStringLiteral(":") + QString::fromUtf8(screen_.readLine()).trimmed();
    }
    ~VirtualScreen() {
        screen_.terminate();
        screen_.waitForFinished();
    }
    VirtualScreen(const VirtualScreen&) = delete;
    VirtualScreen& operator=(const VirtualScreen&) = delete;

    [[nodiscard]] QString Display() const { return display_; }

private:
    QProcess screen_;
    QString display_;
};

class ProgramStart : public testing::Test {
protected:
    ProgramStart() {
        QDir(folder.path()).mkpath(QStringLiteral("program"));
        std::error_code failed;
        const std::filesystem::path program(TORVIK_PROGRAM);
        const std::filesystem::path copy(path("program/TorvikPosSync").toStdString());
        std::filesystem::create_hard_link(program, copy, failed);
        if (failed) std::filesystem::copy_file(program, copy);

        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), path("settings"));
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(folder.path());
    }

    [[nodiscard]] QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }
    void write(const char* name, const QByteArray& content) const {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    void writeDataLink(const QString& text, const char* name = "program/Torvik.UDL") const {
        test::writeDataLink(path(name), text);
    }
    void showOn(const VirtualScreen& screen) {
        auto environment = process.processEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        environment.insert(QStringLiteral("DISPLAY"), screen.Display());
        process.setProcessEnvironment(environment);
    }
    void start() { process.start(path("program/TorvikPosSync"), QStringList()); }
    // The exit code; -1 when it has not ended in time or not by itself.
    [[nodiscard]] int ended() {
        if (!process.waitForFinished(kPatienceMs) || process.exitStatus() != QProcess::NormalExit) return -1;
        return process.exitCode();
    }
    // The log file's lines behind the first, which tells of the start, without their times.
    [[nodiscard]] QStringList logged(const char* applicationFolder = "program") const {
        const QDate today = QDate::currentDate();
        QFile file(path(applicationFolder) + QStringLiteral("/Log/%1/%2/TorvikPosSync_%3.log")
                                                 .arg(today.year())
                                                 .arg(today.month())
                                                 .arg(today.toString(QStringLiteral("yyyyMMdd"))));
        if (!file.open(QIODevice::ReadOnly)) return {file.errorString()};
        QStringList lines;
        for (const QString& line : QString::fromUtf8(file.readAll()).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts))
            lines << line.section(u' ', 1);
        if (lines.isEmpty() || !lines[0].startsWith(QStringLiteral("INF Started logging from \""))) return lines;
        return lines.mid(1);
    }
    [[nodiscard]] QString said() { return QString::fromUtf8(process.readAllStandardError()); }

    QTemporaryDir folder;
    QProcess process;
};

TEST_F(ProgramStart, MissingDataLinkIsToldAndEndsTheProgram) {
    start();
    EXPECT_EQ(ended(), 1);
    EXPECT_TRUE(said().contains(
        QStringLiteral("Filen %1 finnes ikke. Kan ikke koble til databasen").arg(path("program/Torvik.UDL"))));
    EXPECT_EQ(logged(), QStringList{QStringLiteral("ERR Error in TorvikPosSync (The UDL file \"%1\" does not exist.)")
                                        .arg(path("program/Torvik.UDL"))});
}

struct BadDataLink {
    const char* name;
    QByteArray content;
    const char* words;  // %1: the file
};

class BadDataLinks : public ProgramStart, public testing::WithParamInterface<BadDataLink> {};

TEST_P(BadDataLinks, EndTheProgram) {
    write("program/Torvik.UDL", GetParam().content);
    start();
    EXPECT_EQ(ended(), 1);
    EXPECT_EQ(logged(), QStringList{QStringLiteral("ERR Error in TorvikPosSync (%1)")
                                        .arg(QString::fromUtf8(GetParam().words).arg(path("program/Torvik.UDL")))});
}

INSTANTIATE_TEST_SUITE_P(All, BadDataLinks,
                         testing::Values(BadDataLink{"Empty", "", "The UDL file \"%1\" is corrupt."},
                                         BadDataLink{"OneByte", "\xFF", "The UDL file \"%1\" is corrupt."},
                                         BadDataLink{"EightBitText", "Provider=SQLOLEDB.1;Data Source=x",
                                                     "The file UDL file \"%1\" is not valid."}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(ProgramStart, DataLinkThatCannotBeReadEndsTheProgram) {
    ASSERT_TRUE(QDir().mkpath(path("program/Torvik.UDL")));
    start();
    EXPECT_EQ(ended(), 1);
    ASSERT_EQ(logged().size(), 1);
    EXPECT_TRUE(
        logged()[0].startsWith(QStringLiteral("ERR Error in TorvikPosSync (The UDL file \"%1\" cannot be read: ")
                                   .arg(path("program/Torvik.UDL"))));
}

TEST_F(ProgramStart, BackOfficeThatIsDownEndsTheProgram) {
    std::uint16_t port = 0;
    {
        const test::HttpServer gone;
        port = gone.port();
    }
    writeDataLink(
        QStringLiteral("Data Source=127.0.0.1,%1;User ID=sa;Password=Hemmelig-1;Initial Catalog=x").arg(port));
    start();
    EXPECT_EQ(ended(), 1);
    ASSERT_EQ(logged().size(), 1);
    EXPECT_TRUE(logged()[0].startsWith(QStringLiteral("ERR Error in TorvikPosSync ("))) << logged()[0].toStdString();
    EXPECT_TRUE(logged()[0].contains(QStringLiteral("127.0.0.1"))) << logged()[0].toStdString();
    EXPECT_FALSE(logged()[0].contains(QStringLiteral("Hemmelig")));
    EXPECT_FALSE(said().contains(QStringLiteral("Hemmelig")));
}

// It listens, and says nothing: the program waits for the connection time-out and no longer.
TEST_F(ProgramStart, BackOfficeThatDoesNotAnswerEndsTheProgramWithinTheTimeOut) {
    const sandbox::server::Socket silent = sandbox::server::listenOn("127.0.0.1", 0);
    writeDataLink(QStringLiteral("Data Source=127.0.0.1,%1;User ID=sa;Password=Hemmelig-1;Initial Catalog=x;"
                                 "Connect Timeout=2")
                      .arg(sandbox::server::portOf(silent)));
    QElapsedTimer clock;
    clock.start();
    start();
    EXPECT_EQ(ended(), 1);
    EXPECT_GE(clock.elapsed(), 1900);
    EXPECT_LT(clock.elapsed(), 8000);
    ASSERT_EQ(logged().size(), 1);
    EXPECT_TRUE(logged()[0].startsWith(QStringLiteral("ERR Error in TorvikPosSync ("))) << logged()[0].toStdString();
    EXPECT_FALSE(logged()[0].contains(QStringLiteral("Hemmelig")));
    EXPECT_FALSE(said().contains(QStringLiteral("Hemmelig")));
}

TEST_F(ProgramStart, SignalEndsAStartThatIsHeldUpWithinTwoSeconds) {
    const sandbox::server::Socket silent = sandbox::server::listenOn("127.0.0.1", 0);
    writeDataLink(QStringLiteral("Data Source=127.0.0.1,%1;User ID=sa;Password=Hemmelig-1;Initial Catalog=x;"
                                 "Connect Timeout=60")
                      .arg(sandbox::server::portOf(silent)));
    start();
    ASSERT_TRUE(silent.readable(std::chrono::milliseconds(kPatienceMs))) << "it never connected";
    QElapsedTimer clock;
    clock.start();
    process.terminate();
    EXPECT_EQ(ended(), 1);
    EXPECT_LT(clock.elapsed(), 2500);
}

TEST_F(ProgramStart, SignalClosesTheStartMessage) {
    const VirtualScreen screen;  // without one there is no box
    showOn(screen);
    start();
    ASSERT_TRUE(process.waitForStarted(kPatienceMs));
    QProcess look;
    look.setProcessEnvironment(process.processEnvironment());
    look.start(QStringLiteral("xdotool"),
               {QStringLiteral("search"), QStringLiteral("--sync"), QStringLiteral("--onlyvisible"),
                QStringLiteral("--name"), QStringLiteral("^TorvikPosSync$")});
    ASSERT_TRUE(look.waitForFinished(kPatienceMs)) << "the message never stood there";
    QElapsedTimer clock;
    clock.start();
    process.terminate();
    EXPECT_EQ(ended(), 1);
    EXPECT_LT(clock.elapsed(), 2000);
    EXPECT_EQ(logged(), QStringList{QStringLiteral("ERR Error in TorvikPosSync (The UDL file \"%1\" does not exist.)")
                                        .arg(path("program/Torvik.UDL"))});
}

class ProgramStartOnAChain : public ProgramStart {
protected:
    [[nodiscard]] db::ConnectSettings settings() const {
        return db::settingsFromOleDb(QString::fromStdString(chain.dataLink()));
    }
    // Waits until the program has opened its session on the back office.
    [[nodiscard]] bool connected() const {
        const auto session = test::backOfficeSession(chain);
        db::Query query(session.get());
        query.SQL = QStringList{QStringLiteral("select count(*) from master..sysprocesses where dbid = db_id()")};
        QElapsedTimer clock;
        for (clock.start(); clock.elapsed() < kPatienceMs;) {
            query.Open();
            if (query.Fields(0).AsInteger() > 1) return true;
            query.Close();
        }
        return false;
    }

    sandbox::chain::DemoChain chain{{.chain = {.departments = 1, .tills = 1, .days = 1}}};
};

TEST_F(ProgramStartOnAChain, WrongPasswordEndsTheProgramAndIsNotRepeated) {
    auto wrong = settings();
    wrong.Password = QStringLiteral("Hemmelig-1");
    writeDataLink(db::oleDbFromSettings(wrong));
    start();
    EXPECT_EQ(ended(), 1);
    ASSERT_EQ(logged().size(), 1);
    EXPECT_TRUE(logged()[0].startsWith(QStringLiteral("ERR Error in TorvikPosSync (Login failed for user 'sa'.")))
        << logged()[0].toStdString();
    EXPECT_FALSE(logged()[0].contains(QStringLiteral("Hemmelig")));
    EXPECT_FALSE(said().contains(QStringLiteral("Hemmelig")));
}

TEST_F(ProgramStartOnAChain, MissingDatabaseEndsTheProgram) {
    auto elsewhere = settings();
    elsewhere.Database = QStringLiteral("FinnesIkke");
    writeDataLink(db::oleDbFromSettings(elsewhere));
    start();
    EXPECT_EQ(ended(), 1);
    ASSERT_EQ(logged().size(), 1);
    EXPECT_TRUE(logged()[0].contains(QStringLiteral("Cannot open database \"FinnesIkke\"")))
        << logged()[0].toStdString();
}

TEST_F(ProgramStartOnAChain, LogsItsStartAndItsEndWithItsProperties) {
    test::HttpServer server;
    writeDataLink(QString::fromStdString(chain.dataLink()));
    write("program/TorvikPosSync.ini",
          "[Logging]\nSeqUrl=" + QByteArray::fromStdString(server.url()) + "\nSeqApiKey=Hemmelig-1\nTenant=Vestmar\n");
    start();
    ASSERT_TRUE(connected());
    process.terminate();
    EXPECT_EQ(ended(), 0) << said().toStdString();

    EXPECT_EQ(logged(), QStringList{QStringLiteral("INF Done.")});
    QStringList posted;
    for (const test::HttpRequest& request : server.taken()) {
        auto event = nlohmann::ordered_json::parse(request.body);
        for (const char* key : {"@t", "@l", "ApplicationPath", "ApplicationVersion", "User", "MachineName"})
            event.erase(key);
        posted << QString::fromStdString(event.dump());
    }
    EXPECT_EQ(posted,
              (QStringList{R"({"@mt":"Started logging from {ApplicationPath} version {ApplicationVersion}, running as )"
                           R"({User} on {MachineName}","Application":"TorvikPosSync","Tenant":"Vestmar"})",
                           R"({"@mt":"Done.","Application":"TorvikPosSync","Tenant":"Vestmar",)"
                           R"("TorvikPosSyncName":"TorvikPosSync"})"}));
    for (const char* pane : {"program/TorvikPos.log", "program/TorvikPosError.log"})
        EXPECT_TRUE(QFile::exists(path(pane))) << pane;
    EXPECT_FALSE(QFile::exists(path("settings/Vestmar/TorvikPosSync.conf")));  // written by its command only
}

// The program is started by the session manager of X11, as by a desktop, and logged off with it.
TEST_F(ProgramStartOnAChain, LogOffEndsTheProgramWithinTwoSeconds) {
    writeDataLink(QString::fromStdString(chain.dataLink()));
    write(".xsmstartup", path("program/TorvikPosSync").toUtf8() + '\n');
    const VirtualScreen screen;
    showOn(screen);
    auto environment = process.processEnvironment();
    environment.insert(QStringLiteral("HOME"), folder.path());
    environment.insert(QStringLiteral("SM_SAVE_DIR"), folder.path());
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("xsm"), {QStringLiteral("-session"), QStringLiteral("Default")});
    ASSERT_TRUE(connected()) << said().toStdString();

    QElapsedTimer clock;
    clock.start();
    process.terminate();  // on which it logs off
    const QStringList done{QStringLiteral("INF Done.")};
    while (logged() != done && clock.elapsed() < kPatienceMs) process.waitForFinished(20);
    EXPECT_EQ(logged(), done);
    EXPECT_LT(clock.elapsed(), 2500);
    EXPECT_TRUE(QFile::exists(path("program/TorvikPos.log")));
    process.kill();
    process.waitForFinished();
}

// Its window has never been shown.
TEST_F(ProgramStartOnAChain, SystemTraySettingChangesNothingOfTheEnd) {
    writeDataLink(QString::fromStdString(chain.dataLink()));
    ASSERT_TRUE(QDir().mkpath(path("settings/Vestmar")));
    write("settings/Vestmar/TorvikPosSync.conf", "[General]\nSystemTray=true\n");
    start();
    ASSERT_TRUE(connected());
    process.terminate();
    EXPECT_EQ(ended(), 0) << said().toStdString();
    EXPECT_EQ(logged(), QStringList{QStringLiteral("INF Done.")});
    EXPECT_TRUE(QFile::exists(path("program/TorvikPos.log")));
}

TEST_F(ProgramStartOnAChain, DeployFileMovesEveryFile) {
    ASSERT_TRUE(QDir().mkpath(path("data")));
    write("program/deploy.ini", "[deploy]\nfolder=..\\data\n");
    writeDataLink(QString::fromStdString(chain.dataLink()), "data/Torvik.UDL");
    start();
    ASSERT_TRUE(connected());
    process.terminate();
    EXPECT_EQ(ended(), 0) << said().toStdString();
    EXPECT_EQ(logged("data"), QStringList{QStringLiteral("INF Done.")});
    EXPECT_TRUE(QFile::exists(path("data/TorvikPos.log")));
    EXPECT_EQ(QDir(path("program")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries, QDir::Name),
              (QStringList{"TorvikPosSync", "deploy.ini"}));
}

}  // namespace
}  // namespace torvik
