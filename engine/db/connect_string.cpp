// See connect_string.h.
#include "engine/db/connect_string.h"

#include <QRegularExpression>
#include <QStringList>
#include <utility>

#include "engine/db/errors.h"

namespace torvik::db {

namespace {

bool isOneOf(const QString& word, std::initializer_list<const char*> names) {
    for (const char* name : names)
        if (word.compare(QLatin1String(name), Qt::CaseInsensitive) == 0) return true;
    return false;
}

bool isYes(const QString& word) {
    return isOneOf(word, {"yes", "true", "1", "sspi", "mandatory", "strict", "on"});
}

[[noreturn]] void unreadable(qsizetype position) {
    throw UsageError(QStringLiteral("The connection string cannot be read: a quoted value at character %1 does not end")
                         .arg(position + 1));
}

// The quoted value that opens at text[i]; leaves i behind its closing mark.
QString quotedValue(const QString& text, qsizetype& i, QChar close) {
    const qsizetype start = i++;
    QString value;
    for (;; ++i) {
        if (i >= text.size()) unreadable(start);
        if (text[i] == close) {
            if (i + 1 >= text.size() || text[i + 1] != close) break;
            ++i;
        }
        value += text[i];
    }
    ++i;
    return value;
}

ProviderKind providerOf(const QString& name) {
    if (name.startsWith(u"SQLOLEDB", Qt::CaseInsensitive)) return ProviderKind::OleDb;
    if (name.startsWith(u"SQLNCLI", Qt::CaseInsensitive)) return ProviderKind::NativeClient;
    if (name.startsWith(u"MSOLEDBSQL", Qt::CaseInsensitive)) return ProviderKind::OleDbDriver;
    if (name.startsWith(u"Microsoft.SQLSERVER.CE", Qt::CaseInsensitive)) return ProviderKind::Compact;
    return ProviderKind::Auto;
}

QString providerName(ProviderKind kind) {
    switch (kind) {
        case ProviderKind::OleDb: return QStringLiteral("SQLOLEDB.1");
        case ProviderKind::NativeClient: return QStringLiteral("SQLNCLI11.1");
        case ProviderKind::OleDbDriver: return QStringLiteral("MSOLEDBSQL.1");
        case ProviderKind::Compact: return QStringLiteral("Microsoft.SQLSERVER.CE.OLEDB.3.5");
        case ProviderKind::Auto:
        case ProviderKind::Direct: break;
    }
    return {};
}

QString oleDbQuoted(const QString& value) {
    const bool plain = value == value.trimmed() && !value.contains(u';') && !value.contains(u'"') &&
                       !value.startsWith(u'\'') && !value.startsWith(u'{');
    if (plain) return value;
    return u'"' + QString(value).replace(u'"', QStringLiteral("\"\"")) + u'"';
}

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

KeywordList parseConnectString(const QString& text) {
    KeywordList keywords;
    qsizetype i = 0;
    while (i < text.size()) {
        QString key;
        for (; i < text.size() && text[i] != u';'; ++i) {
            if (text[i] == u'=') {
                if (i + 1 >= text.size() || text[i + 1] != u'=') break;
                ++i;
            }
            key += text[i];
        }
        key = key.trimmed();
        if (i >= text.size() || text[i] == u';') {  // a word without "="
            ++i;
            continue;
        }
        ++i;
        while (i < text.size() && text[i].isSpace()) ++i;
        QString value;
        const QChar opening = i < text.size() ? text[i] : QChar();
        if (opening == u'"' || opening == u'\'' || opening == u'{') {
            value = quotedValue(text, i, opening == u'{' ? QChar(u'}') : opening);
            while (i < text.size() && text[i] != u';') ++i;
        } else {
            const qsizetype start = i;
            while (i < text.size() && text[i] != u';') ++i;
            value = text.mid(start, i - start).trimmed();
        }
        ++i;
        if (!key.isEmpty()) keywords.append({key, value});
    }
    return keywords;
}

QString formatConnectString(const KeywordList& keywords) {
    QStringList parts;
    for (const auto& [key, value] : keywords)
        parts += QString(key).replace(u'=', QStringLiteral("==")) + u'=' + oleDbQuoted(value);
    return parts.join(u';');
}

ConnectSettings settingsFromOleDb(const QString& text) {
    ConnectSettings s;
    for (const auto& [key, value] : parseConnectString(text)) {
        if (isOneOf(key, {"Data Source", "Server", "Address", "Addr", "Network Address"})) {
            s.Server = value;
        } else if (isOneOf(key, {"Initial Catalog", "Database"})) {
            s.Database = value;
        } else if (isOneOf(key, {"User ID", "UID", "User"})) {
            s.Username = value;
        } else if (isOneOf(key, {"Password", "PWD"})) {
            s.Password = value;
        } else if (isOneOf(key, {"Integrated Security", "Trusted_Connection"})) {
            s.Authentication = isYes(value) ? Auth::Windows : Auth::Server;
        } else if (isOneOf(key, {"Application Name", "App"})) {
            s.ApplicationName = value;
        } else if (isOneOf(key, {"Connect Timeout", "Connection Timeout", "Timeout"})) {
            s.ConnectionTimeout = value.toInt();
        } else if (isOneOf(key, {"Encrypt", "Use Encryption for Data"})) {
            s.Encrypt = isYes(value);
        } else if (isOneOf(key, {"TrustServerCertificate", "Trust Server Certificate"})) {
            s.TrustServerCertificate = isYes(value);
        } else if (isOneOf(key, {"Provider"})) {
            s.Provider = providerOf(value);
        }
    }
    return s;
}

QString oleDbFromSettings(const ConnectSettings& s) {
    KeywordList keywords;
    const QString provider = providerName(s.Provider);
    if (!provider.isEmpty()) keywords.append({QStringLiteral("Provider"), provider});
    if (s.Authentication == Auth::Windows) {
        keywords.append({QStringLiteral("Integrated Security"), QStringLiteral("SSPI")});
        keywords.append({QStringLiteral("Persist Security Info"), QStringLiteral("False")});
    } else {
        keywords.append({QStringLiteral("Password"), s.Password});
        keywords.append({QStringLiteral("Persist Security Info"), QStringLiteral("True")});
        keywords.append({QStringLiteral("User ID"), s.Username});
    }
    keywords.append({QStringLiteral("Initial Catalog"), s.Database});
    keywords.append({QStringLiteral("Data Source"), s.Server});
    if (!s.ApplicationName.isEmpty()) keywords.append({QStringLiteral("Application Name"), s.ApplicationName});
    if (s.ConnectionTimeout != ConnectSettings{}.ConnectionTimeout)
        keywords.append({QStringLiteral("Connect Timeout"), QString::number(s.ConnectionTimeout)});
    if (s.Encrypt) keywords.append({QStringLiteral("Use Encryption for Data"), QStringLiteral("True")});
    if (s.TrustServerCertificate) keywords.append({QStringLiteral("Trust Server Certificate"), QStringLiteral("True")});
    return formatConnectString(keywords);
}

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

}  // namespace torvik::db
