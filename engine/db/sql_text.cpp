// See sql_text.h.
#include "engine/db/sql_text.h"

#include <QRegularExpression>

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

namespace {

// The text with each literal, quoted name and comment made what spared(it) gives.
template <typename Spared>
QString replacingQuoted(const QString& text, const Spared& spared) {
    QString bare;
    for (qsizetype i = 0; i < text.size();) {
        const qsizetype past = pastQuoted(text, i);
        if (past == i) {
            bare += text[i++];
            continue;
        }
        bare += spared(QStringView(text).mid(i, past - i));
        i = past;
    }
    return bare;
}

bool isComment(QStringView quoted) {
    return quoted.front() == u'-' || quoted.front() == u'/';
}

}  // namespace

QString withoutLiterals(const QString& text) {
    return replacingQuoted(text, [](QStringView quoted) {
        if (quoted.front() == u'\'') return QStringLiteral("''");
        return isComment(quoted) ? QStringLiteral(" ") : quoted.toString();
    });
}

QString withoutNames(const QString& text) {
    return replacingQuoted(
        text, [](QStringView quoted) { return isComment(quoted) ? QStringLiteral(" ") : QStringLiteral("x"); });
}

QString countingText(const QString& select) {
    static const QRegularExpression orderBy(QStringLiteral("ORDER\\s+BY\\b"),
                                            QRegularExpression::CaseInsensitiveOption);
    int depth = 0;
    qsizetype end = select.size();
    for (qsizetype i = 0; i < select.size();) {
        const qsizetype past = pastQuoted(select, i);
        if (past > i) {
            i = past;
            continue;
        }
        if (select[i] == u'(') ++depth;
        if (select[i] == u')') --depth;
        const bool startsWord = i == 0 || !(select[i - 1].isLetterOrNumber() || select[i - 1] == u'_');
        if (depth == 0 && startsWord &&
            orderBy.match(select, i, QRegularExpression::NormalMatch, QRegularExpression::AnchorAtOffsetMatchOption)
                .hasMatch())
            end = i;
        ++i;
    }
    // On a line of its own the bracket stands behind no comment.
    return QStringLiteral("SELECT COUNT(*) FROM (") + select.first(end) + QStringLiteral("\r\n) AS torvik_rows");
}

QString bracketed(const QString& name) {
    return u'[' + QString(name).replace(u']', QStringLiteral("]]")) + u']';
}

}  // namespace torvik::db
