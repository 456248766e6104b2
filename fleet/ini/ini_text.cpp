#include "fleet/ini/ini_text.h"

#include <QStringDecoder>

namespace torvik {

namespace {

// What code page 1252 has at 0x80 to 0x9F; all else is as in Latin-1.
constexpr char16_t kWindowsOnly[] =
    u"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\u008D\u017D\u008F"
    u"\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\u009D\u017E\u0178";

QString fromCodePage1252(const QByteArray& bytes) {
    QString text = QString::fromLatin1(bytes);
    for (QChar& c : text)
        if (c.unicode() >= 0x80 && c.unicode() <= 0x9F) c = QChar(kWindowsOnly[c.unicode() - 0x80]);
    return text;
}

QString decoded(const QByteArray& bytes) {
    if (const auto marked = QStringConverter::encodingForData(bytes)) return QStringDecoder(*marked)(bytes);
    QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    QString text = utf8(bytes);
    return utf8.hasError() ? fromCodePage1252(bytes) : text;
}

}  // namespace

QStringList iniLines(const QByteArray& bytes) {
    QString text = decoded(bytes);
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    if (text.endsWith(u'\n')) text.chop(1);
    return text.isEmpty() ? QStringList() : text.split(u'\n');
}

IniText::IniText(const QStringList& lines) {
    QHash<QString, QString>* section = nullptr;
    for (const QString& each : lines) {
        const QString line = each.trimmed();
        if (line.isEmpty() || line.startsWith(u';')) continue;
        if (line.startsWith(u'[') && line.endsWith(u']')) {
            section = &sections_[line.mid(1, line.size() - 2).trimmed().toLower()];
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (!section || equals < 0) continue;
        const QString key = line.left(equals).trimmed().toLower();
        if (!section->contains(key)) section->insert(key, line.mid(equals + 1).trimmed());
    }
}

QString IniText::value(const QString& section, const QString& key, const QString& fallback) const {
    return sections_.value(section.toLower()).value(key.toLower(), fallback);
}

int IniText::integer(const QString& section, const QString& key, int fallback) const {
    bool isNumber = false;
    const int number = value(section, key).toInt(&isNumber);
    return isNumber ? number : fallback;
}

bool IniText::boolean(const QString& section, const QString& key, bool fallback) const {
    return integer(section, key, fallback ? 1 : 0) != 0;
}

}  // namespace torvik
