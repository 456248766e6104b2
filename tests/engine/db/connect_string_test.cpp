// OLE DB connection strings read and written, server names taken apart, the driver chosen, and the ODBC text made.
#include "engine/db/connect_string.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "tests/support/qt_print.h"

namespace torvik::db {
namespace {

const OdbcDriver kMicrosoft{QStringLiteral("ODBC Driver 18 for SQL Server"), false};
const OdbcDriver kFreeTds{QStringLiteral("/lib/libtdsodbc.so"), true};

TEST(ConnectString, DataLinkTextGivesServerDatabaseAndLogin) {
    const ConnectSettings s = settingsFromOleDb(
        QStringLiteral("Provider=SQLOLEDB.1;Password=hemmelig;Persist Security Info=True;User ID=sa;Initial "
                       "Catalog=Kjede;Data Source=hk01\\SQL;Application Name=TorvikPosSync;Connect Timeout=7"));
    EXPECT_EQ(s.Server, QStringLiteral("hk01\\SQL"));
    EXPECT_EQ(s.Database, QStringLiteral("Kjede"));
    EXPECT_EQ(s.Username, QStringLiteral("sa"));
    EXPECT_EQ(s.Password, QStringLiteral("hemmelig"));
    EXPECT_EQ(s.ApplicationName, QStringLiteral("TorvikPosSync"));
    EXPECT_EQ(s.ConnectionTimeout, 7);
    EXPECT_EQ(s.Authentication, Auth::Server);
    EXPECT_EQ(s.Provider, ProviderKind::OleDb);
}

TEST(ConnectString, IntegratedSecurityIsAWindowsLogin) {
    EXPECT_EQ(settingsFromOleDb(QStringLiteral("Integrated Security=SSPI;Data Source=a")).Authentication,
              Auth::Windows);
}

TEST(ConnectString, ProvidersAreKnownByTheirNames) {
    const std::pair<const char*, ProviderKind> cases[] = {
        {"SQLOLEDB", ProviderKind::OleDb},
        {"SQLNCLI11.1", ProviderKind::NativeClient},
        {"MSOLEDBSQL", ProviderKind::OleDbDriver},
        {"Microsoft.SQLSERVER.CE.OLEDB.3.5", ProviderKind::Compact},
        {"Other", ProviderKind::Auto},
    };
    for (const auto& [name, kind] : cases)
        EXPECT_EQ(settingsFromOleDb(QStringLiteral("Provider=") + QLatin1String(name)).Provider, kind) << name;
}

TEST(ConnectString, QuotedValuesAreReadAsTheyStand) {
    const std::pair<const char*, const char*> cases[] = {
        {R"(Password="a;b")", "a;b"},
        {R"(Password='a"b;c')", "a\"b;c"},
        {R"(Password="a""b")", "a\"b"},
        {R"(Password={a;b}}c})", "a;b}c"},
        {"Password= plain ", "plain"},
        {R"(Password=" blank ")", " blank "},
        {"Password=", ""},
        {"Password=a=b", "a=b"},
    };
    for (const auto& [text, password] : cases)
        EXPECT_EQ(settingsFromOleDb(QLatin1String(text)).Password, QLatin1String(password)) << text;
}

TEST(ConnectString, WhatIsWrittenIsReadBack) {
    for (const char* password : {"plain", "a;b", "a\"b", "'quoted'", "{brace}", "}", " blank ", "a=b", ""}) {
        ConnectSettings s;
        s.Server = QStringLiteral("host\\inst,1433");
        s.Database = QStringLiteral("Kjede; nr 2");
        s.Username = QStringLiteral("bruker");
        s.Password = QLatin1String(password);
        s.Provider = ProviderKind::NativeClient;
        s.TrustServerCertificate = true;
        const ConnectSettings back = settingsFromOleDb(oleDbFromSettings(s));
        EXPECT_EQ(back.Password, s.Password) << password;
        EXPECT_EQ(back.Server, s.Server);
        EXPECT_EQ(back.Database, s.Database);
        EXPECT_EQ(back.Provider, s.Provider);
        EXPECT_TRUE(back.TrustServerCertificate);
    }
}

TEST(ConnectString, AnUnendedQuoteIsRefusedWithoutShowingThePassword) {
    try {
        static_cast<void>(settingsFromOleDb(QStringLiteral("Password=\"hemmelig;Data Source=a")));
        FAIL() << "read";
    } catch (const UsageError& e) {
        EXPECT_FALSE(e.text().contains(u"hemmelig"));
    }
}

TEST(ConnectString, ServerNamesAreTakenApart) {
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

TEST(ConnectString, TheNewestMicrosoftDriverIsChosen) {
    const OdbcDriver driver =
        chooseDriver({QStringLiteral("ODBC Driver 9 for SQL Server"), QStringLiteral("ODBC Driver 18 for SQL Server"),
                      QStringLiteral("ODBC Driver 17 for SQL Server"), QStringLiteral("PostgreSQL")},
                     {QStringLiteral("/lib/libtdsodbc.so")});
    EXPECT_EQ(driver.Name, QStringLiteral("ODBC Driver 18 for SQL Server"));
    EXPECT_FALSE(driver.FreeTds);
}

TEST(ConnectString, WithoutMicrosoftsDriverFreeTdsIsChosen) {
    const OdbcDriver driver = chooseDriver({QStringLiteral("PostgreSQL")}, {QStringLiteral("/lib/libtdsodbc.so")});
    EXPECT_EQ(driver.Name, QStringLiteral("/lib/libtdsodbc.so"));
    EXPECT_TRUE(driver.FreeTds);
}

TEST(ConnectString, WithoutAnyDriverTheErrorSaysWhatToInstall) {
    try {
        static_cast<void>(chooseDriver({}, {}));
        FAIL() << "chosen";
    } catch (const ConnectionError& e) {
        EXPECT_EQ(e.Why, ConnectionError::Reason::NoDriver);
        EXPECT_TRUE(e.text().contains(u"msodbcsql18"));
        EXPECT_TRUE(e.text().contains(u"tdsodbc"));
    }
}

TEST(ConnectString, MicrosoftsDriverGetsQuotedValues) {
    ConnectSettings s;
    s.Server = QStringLiteral("hk01,1433");
    s.Database = QStringLiteral("Kjede");
    s.Username = QStringLiteral("sa");
    s.Password = QStringLiteral("a;b}c");
    EXPECT_EQ(odbcConnectString(s, kMicrosoft),
              QStringLiteral("Driver={ODBC Driver 18 for SQL Server};Server={tcp:hk01,1433};Encrypt={no};"
                             "TrustServerCertificate={no};Database={Kjede};UID={sa};PWD={a;b}}c};"));
}

TEST(ConnectString, FreeTdsGetsHostAndPortOrInstance) {
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

TEST(ConnectString, FreeTdsGetsBracesOnlyWhereTheyAreNeeded) {
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

TEST(ConnectString, WindowsLoginSendsNoUser) {
    ConnectSettings s;
    s.Server = QStringLiteral("hk01");
    s.Username = QStringLiteral("sa");
    s.Authentication = Auth::Windows;
    const QString text = odbcConnectString(s, kMicrosoft);
    EXPECT_TRUE(text.contains(u"Trusted_Connection={Yes}"));
    EXPECT_FALSE(text.contains(u"UID"));
}

}  // namespace
}  // namespace torvik::db
