// What a session needs to know to connect, read from and written to OLE DB connection strings, and turned into an ODBC
// connection string for the driver that is installed.
#pragma once

#include <QList>
#include <QPair>
#include <QString>

namespace torvik::db {

enum class Auth { Windows, Server };

// The client provider as the data names it. All lead to the installed ODBC driver but Compact, which has none.
enum class ProviderKind { Auto, OleDb, NativeClient, Compact, Direct, OleDbDriver };

struct ConnectSettings {
    QString Server;
    QString Database;
    QString Username;
    QString Password;
    Auth Authentication = Auth::Server;
    ProviderKind Provider = ProviderKind::Auto;
    QString ApplicationName;
    int ConnectionTimeout = 15;  // seconds
    bool Encrypt = false;
    bool TrustServerCertificate = false;
};

using KeywordList = QList<QPair<QString, QString>>;

// Splits "key=value;..." with OLE DB's quoting: a value in "..." or '...' with the quote doubled within, or in {...}
// with } doubled. Raises UsageError for a text that cannot be read, without repeating it.
[[nodiscard]] KeywordList parseConnectString(const QString& text);
// The other way round; a value is quoted when it must be.
[[nodiscard]] QString formatConnectString(const KeywordList& keywords);

// The settings that an OLE DB string names, all others at their defaults. Unknown keywords are passed over.
[[nodiscard]] ConnectSettings settingsFromOleDb(const QString& text);
[[nodiscard]] QString oleDbFromSettings(const ConnectSettings& settings);

// An installed driver: its name in odbcinst, or the path of its library.
struct OdbcDriver {
    QString Name;
    bool FreeTds = false;
    bool DoublesBraces = true;  // "}}" stands for "}" within {}: not so in FreeTDS before 1.4
};
// The newest of Microsoft's drivers among the registered ones, else FreeTDS (registered, or its library file where it
// is installed). Raises ConnectionError that names what to install.
[[nodiscard]] OdbcDriver chooseDriver(const QStringList& registered, const QStringList& libraryPaths);

// Server as host, host\instance, host,port or tcp:host,port.
struct ServerAddress {
    QString Host;
    QString Instance;
    int Port = 0;  // 0: not given
};
[[nodiscard]] ServerAddress parseServer(const QString& server);

// The ODBC string for SQLDriverConnect; values are quoted in {}.
[[nodiscard]] QString odbcConnectString(const ConnectSettings& settings, const OdbcDriver& driver);

}  // namespace torvik::db
