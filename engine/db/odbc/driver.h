// Which ODBC driver is used, and the connection string that it is given. Used by Connection and by what loads the
// driver (api.h).
#pragma once

#include <QStringList>

#include "engine/db/connect_string.h"

namespace torvik::db::odbc {

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
// Raises UsageError for a port that is none, and for another protocol than TCP (np:, lpc:, via:, admin:, \\pipe).
[[nodiscard]] ServerAddress parseServer(const QString& server);

// The ODBC string for SQLDriverConnect; values are quoted in {}.
[[nodiscard]] QString odbcConnectString(const ConnectSettings& settings, const OdbcDriver& driver);

}  // namespace torvik::db::odbc
