// See driver.h.
#include "engine/db/odbc/driver.h"

#include <QRegularExpression>

#include "engine/db/errors.h"

namespace torvik::db::odbc {

namespace {

QString odbcQuoted(const QString& value) {
    return u'{' + QString(value).replace(u'}', QStringLiteral("}}")) + u'}';
}

// FreeTDS before 1.4 ends a value in braces at the next "};" and takes all else as it stands, "}}" too.
QString oldFreeTdsQuoted(const QString& value) {
    if (value.contains(QStringLiteral("};")))
        throw UsageError(QStringLiteral("FreeTDS before 1.4 cannot be given a name or password that holds \"};\""));
    return u'{' + value + u'}';
}

// Braces only where they are needed: a port or version in braces is no number to FreeTDS.
QString freeTdsQuoted(const QString& value, const OdbcDriver& driver) {
    const bool plain = !value.contains(u';') && !value.startsWith(u'{') && value == value.trimmed();
    if (plain) return value;
    return driver.DoublesBraces ? odbcQuoted(value) : oldFreeTdsQuoted(value);
}

}  // namespace

OdbcDriver chooseDriver(const QStringList& registered, const QStringList& libraryPaths) {
    static const QRegularExpression microsoft(QStringLiteral("^ODBC Driver (\\d+) for SQL Server$"));
    int newest = 0;
    QString chosen;
    for (const QString& name : registered) {
        const int version = microsoft.match(name).captured(1).toInt();
        if (version > newest) {
            newest = version;
            chosen = name;
        }
    }
    if (newest > 0) return {chosen, false};
    if (!libraryPaths.isEmpty()) return {libraryPaths.first(), true};
    throw ConnectionError(
        ConnectionError::Reason::NoDriver,
        QStringLiteral("No ODBC driver for SQL Server is installed. Install Microsoft's \"ODBC Driver 18 "
                       "for SQL Server\" (package msodbcsql18), or FreeTDS (package tdsodbc)."));
}

ServerAddress parseServer(const QString& server) {
    ServerAddress address;
    QString text = server.trimmed();
    for (const char* protocol : {"np:", "lpc:", "via:", "admin:"})
        if (text.startsWith(QLatin1String(protocol), Qt::CaseInsensitive))
            throw UsageError(QStringLiteral("The server name \"%1\" asks for \"%2\": only TCP is used here (\"tcp:\")")
                                 .arg(server, QLatin1String(protocol)));
    if (text.startsWith(u"\\\\"))
        throw UsageError(QStringLiteral("The server name \"%1\" is a named pipe: only TCP is used here").arg(server));
    if (text.startsWith(u"tcp:", Qt::CaseInsensitive)) text = text.mid(4);
    const qsizetype comma = text.lastIndexOf(u',');
    if (comma >= 0) {
        bool ok = false;
        address.Port = text.mid(comma + 1).trimmed().toInt(&ok);
        if (!ok || address.Port < 1 || address.Port > 65535)
            throw UsageError(QStringLiteral("The server name \"%1\" has no valid port").arg(server));
        text = text.first(comma).trimmed();
    }
    const qsizetype slash = text.indexOf(u'\\');
    if (slash >= 0) {
        address.Instance = text.mid(slash + 1).trimmed();
        text = text.first(slash).trimmed();
    }
    if (text == u"." || text.compare(u"(local)", Qt::CaseInsensitive) == 0) text = QStringLiteral("localhost");
    address.Host = text;
    return address;
}

QString odbcConnectString(const ConnectSettings& s, const OdbcDriver& driver) {
    const ServerAddress address = parseServer(s.Server);
    QStringList parts;
    const auto add = [&](const char* key, const QString& value) {
        parts += QLatin1String(key) + u'=' + (driver.FreeTds ? freeTdsQuoted(value, driver) : odbcQuoted(value));
    };
    if (driver.FreeTds) {
        // A port beats an instance name: FreeTDS takes only one of them.
        if (address.Port == 0 && !address.Instance.isEmpty()) {
            add("Server", address.Host + u'\\' + address.Instance);
        } else {
            add("Server", address.Host);
            add("Port", QString::number(address.Port == 0 ? 1433 : address.Port));
        }
        add("TDS_Version", QStringLiteral("7.4"));
        if (s.Encrypt) add("Encryption", QStringLiteral("require"));
    } else {
        add("Driver", driver.Name);
        QString server = address.Host;
        if (!address.Instance.isEmpty() && address.Port == 0) server += u'\\' + address.Instance;
        if (address.Port != 0) server = QStringLiteral("tcp:%1,%2").arg(server).arg(address.Port);
        add("Server", server);
        add("Encrypt", s.Encrypt ? QStringLiteral("yes") : QStringLiteral("no"));
        add("TrustServerCertificate", s.TrustServerCertificate ? QStringLiteral("yes") : QStringLiteral("no"));
    }
    if (!s.Database.isEmpty()) add("Database", s.Database);
    if (s.Authentication == Auth::Windows) {
        add("Trusted_Connection", QStringLiteral("Yes"));
    } else {
        add("UID", s.Username);
        add("PWD", s.Password);
    }
    if (!s.ApplicationName.isEmpty()) add("APP", s.ApplicationName);
    return parts.join(u';') + u';';  // FreeTDS wants "};" behind a last value in braces
}

}  // namespace torvik::db::odbc
