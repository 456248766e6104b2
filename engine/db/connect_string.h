// What a session needs to know to connect, read from and written to OLE DB connection strings. Used by Session; what
// the ODBC driver is told is made of it in odbc/driver.h. The keywords: docs/sessions.md.
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

    [[nodiscard]] bool operator==(const ConnectSettings&) const = default;
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

}  // namespace torvik::db
