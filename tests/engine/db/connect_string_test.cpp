// OLE DB connection strings, read and written.
#include "engine/db/connect_string.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "tests/support/qt_print.h"

namespace torvik::db {
namespace {

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

TEST(ConnectString, ATimeoutThatIsNoNumberIsRefusedByItsKeyword) {
    for (const char* text : {"Connect Timeout=abc", "connect timeout=", "Connect Timeout=-1", "Connect Timeout=1.5"}) {
        try {
            static_cast<void>(settingsFromOleDb(QLatin1String(text)));
            ADD_FAILURE() << text << " was read";
        } catch (const UsageError& e) {
            EXPECT_TRUE(e.text().contains(u"Connect Timeout", Qt::CaseInsensitive)) << e.what();
        }
    }
    EXPECT_EQ(settingsFromOleDb(QStringLiteral("Connect Timeout=0")).ConnectionTimeout, 0);
}

}  // namespace
}  // namespace torvik::db
