// The driver that is chosen, server names taken apart, and the connection string that the driver is given.
#include "engine/db/odbc/driver.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "tests/support/qt_print.h"

namespace torvik::db::odbc {
namespace {

const OdbcDriver kMicrosoft{QStringLiteral("ODBC Driver 18 for SQL Server"), false};
const OdbcDriver kFreeTds{QStringLiteral("/lib/libtdsodbc.so"), true};

TEST(ConnectDriver, ServerNamesAreTakenApart) {
    struct Case {
        const char* text;
        const char* host;
        const char* instance;
        int port;
    };
    for (const Case& c : {Case{"kasse1", "kasse1", "", 0}, Case{"kasse1\\SQL", "kasse1", "SQL", 0},
                          Case{"kasse1,1444", "kasse1", "", 1444}, Case{"tcp:kasse1, 1444", "kasse1", "", 1444},
                          Case{"(local)", "localhost", "", 0}, Case{".\\SQL", "localhost", "SQL", 0}}) {
        const ServerAddress address = parseServer(QLatin1String(c.text));
        EXPECT_EQ(address.Host, QLatin1String(c.host)) << c.text;
        EXPECT_EQ(address.Instance, QLatin1String(c.instance)) << c.text;
        EXPECT_EQ(address.Port, c.port) << c.text;
    }
    EXPECT_THROW(static_cast<void>(parseServer(QStringLiteral("kasse1,abc"))), UsageError);
}

TEST(ConnectDriver, TheNewestMicrosoftDriverIsChosen) {
    const OdbcDriver driver =
        chooseDriver({QStringLiteral("ODBC Driver 9 for SQL Server"), QStringLiteral("ODBC Driver 18 for SQL Server"),
                      QStringLiteral("ODBC Driver 17 for SQL Server"), QStringLiteral("PostgreSQL")},
                     {QStringLiteral("/lib/libtdsodbc.so")});
    EXPECT_EQ(driver.Name, QStringLiteral("ODBC Driver 18 for SQL Server"));
    EXPECT_FALSE(driver.FreeTds);
}

TEST(ConnectDriver, WithoutMicrosoftsDriverFreeTdsIsChosen) {
    const OdbcDriver driver = chooseDriver({QStringLiteral("PostgreSQL")}, {QStringLiteral("/lib/libtdsodbc.so")});
    EXPECT_EQ(driver.Name, QStringLiteral("/lib/libtdsodbc.so"));
    EXPECT_TRUE(driver.FreeTds);
}

TEST(ConnectDriver, WithoutAnyDriverTheErrorSaysWhatToInstall) {
    try {
        static_cast<void>(chooseDriver({}, {}));
        FAIL() << "chosen";
    } catch (const ConnectionError& e) {
        EXPECT_EQ(e.Why, ConnectionError::Reason::NoDriver);
        EXPECT_TRUE(e.text().contains(u"msodbcsql18"));
        EXPECT_TRUE(e.text().contains(u"tdsodbc"));
    }
}

TEST(ConnectDriver, MicrosoftsDriverGetsQuotedValues) {
    ConnectSettings s;
    s.Server = QStringLiteral("hk01,1433");
    s.Database = QStringLiteral("Kjede");
    s.Username = QStringLiteral("sa");
    s.Password = QStringLiteral("a;b}c");
    EXPECT_EQ(odbcConnectString(s, kMicrosoft),
              QStringLiteral("Driver={ODBC Driver 18 for SQL Server};Server={tcp:hk01,1433};Encrypt={no};"
                             "TrustServerCertificate={no};Database={Kjede};UID={sa};PWD={a;b}}c};"));
}

TEST(ConnectDriver, FreeTdsGetsHostAndPortOrInstance) {
    ConnectSettings s;
    s.Username = QStringLiteral("sa");
    s.Server = QStringLiteral("hk01");
    EXPECT_EQ(odbcConnectString(s, kFreeTds), QStringLiteral("Server=hk01;Port=1433;TDS_Version=7.4;UID=sa;PWD=;"));
    s.Server = QStringLiteral("hk01\\SQL");
    EXPECT_EQ(odbcConnectString(s, kFreeTds), QStringLiteral("Server=hk01\\SQL;TDS_Version=7.4;UID=sa;PWD=;"));
    s.Server = QStringLiteral("hk01\\SQL,1444");
    s.Encrypt = true;
    EXPECT_EQ(odbcConnectString(s, kFreeTds),
              QStringLiteral("Server=hk01;Port=1444;TDS_Version=7.4;Encryption=require;UID=sa;PWD=;"));
}

TEST(ConnectDriver, FreeTdsGetsBracesOnlyWhereTheyAreNeeded) {
    struct Case {
        const char* password;
        const char* before14;
        const char* since14;
    };
    for (const Case& c : {Case{"a}b", "a}b", "a}b"}, Case{"a;b", "{a;b}", "{a;b}"}, Case{"{a}", "{{a}}", "{{a}}}"},
                          Case{" a ", "{ a }", "{ a }"}}) {
        ConnectSettings s;
        s.Server = QStringLiteral("h");
        s.Password = QLatin1String(c.password);
        OdbcDriver driver = kFreeTds;
        EXPECT_TRUE(odbcConnectString(s, driver).contains(QStringLiteral(";PWD=%1;").arg(QLatin1String(c.since14))));
        driver.DoublesBraces = false;
        EXPECT_TRUE(odbcConnectString(s, driver).contains(QStringLiteral(";PWD=%1;").arg(QLatin1String(c.before14))));
    }
    ConnectSettings s;
    s.Password = QStringLiteral("a};b");
    OdbcDriver old = kFreeTds;
    old.DoublesBraces = false;
    EXPECT_THROW(static_cast<void>(odbcConnectString(s, old)), UsageError);
}

TEST(ConnectDriver, WindowsLoginSendsNoUser) {
    ConnectSettings s;
    s.Server = QStringLiteral("hk01");
    s.Username = QStringLiteral("sa");
    s.Authentication = Auth::Windows;
    const QString text = odbcConnectString(s, kMicrosoft);
    EXPECT_TRUE(text.contains(u"Trusted_Connection={Yes}"));
    EXPECT_FALSE(text.contains(u"UID"));
}

TEST(ConnectDriver, OtherProtocolsThanTcpAreRefusedByName) {
    for (const char* protocol : {"np:", "lpc:", "via:", "admin:"}) {
        const QString server = QLatin1String(protocol) + QStringLiteral("kasse1");
        for (const QString& text : {server, server.toUpper()}) {
            try {
                static_cast<void>(parseServer(text));
                ADD_FAILURE() << text.toStdString() << " was taken";
            } catch (const UsageError& e) {
                EXPECT_TRUE(e.text().contains(QLatin1String(protocol))) << e.what();
                EXPECT_TRUE(e.text().contains(text)) << e.what();
            }
        }
    }
    EXPECT_THROW(static_cast<void>(parseServer(QStringLiteral("\\\\kasse1\\pipe\\sql\\query"))), UsageError);
}

}  // namespace
}  // namespace torvik::db::odbc
