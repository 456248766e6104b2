// See connect_string.h.
#include "engine/db/connect_string.h"

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

int wholeSeconds(const QString& key, const QString& value) {
    bool ok = false;
    const int seconds = value.toInt(&ok);
    if (!ok || seconds < 0)
        throw UsageError(QStringLiteral("The connection string has no whole number of seconds for \"%1\"").arg(key));
    return seconds;
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
            s.ConnectionTimeout = wholeSeconds(key, value);
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

}  // namespace torvik::db
