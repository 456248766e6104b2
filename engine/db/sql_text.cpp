// See sql_text.h.
#include "engine/db/sql_text.h"

namespace torvik::db {

qsizetype pastQuoted(const QString& text, qsizetype i) {
    const QChar c = text[i];
    const QChar next = i + 1 < text.size() ? text[i + 1] : QChar();
    if (c == u'-' && next == u'-') {
        const qsizetype end = text.indexOf(u'\n', i);
        return end < 0 ? text.size() : end;
    }
    if (c == u'/' && next == u'*') {
        int depth = 0;  // T-SQL's comments nest
        do {
            const QStringView two = QStringView(text).mid(i, 2);
            const int change = two == u"/*" ? 1 : two == u"*/" ? -1 : 0;
            depth += change;
            i += change == 0 ? 1 : 2;
        } while (depth > 0 && i < text.size());
        return i;
    }
    if (c != u'\'' && c != u'"' && c != u'[') return i;
    const QChar close = c == u'[' ? QChar(u']') : c;
    for (++i; i < text.size(); ++i) {
        if (text[i] != close) continue;
        if (i + 1 < text.size() && text[i + 1] == close)
            ++i;
        else
            return i + 1;
    }
    return text.size();
}

QString withoutLiterals(const QString& text) {
    QString bare;
    for (qsizetype i = 0; i < text.size();) {
        const qsizetype past = pastQuoted(text, i);
        if (past == i) {
            bare += text[i++];
            continue;
        }
        if (text[i] == u'\'')
            bare += QStringLiteral("''");
        else if (text[i] == u'[' || text[i] == u'"')
            bare += QStringView(text).mid(i, past - i);
        else
            bare += u' ';
        i = past;
    }
    return bare;
}

QString bracketed(const QString& name) {
    return u'[' + QString(name).replace(u']', QStringLiteral("]]")) + u']';
}

}  // namespace torvik::db
