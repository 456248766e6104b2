#include "engine/db/batch_separators.h"

#include "engine/db/sql_text.h"

namespace torvik::db {

bool isBatchSeparator(const QString& line) {
    return line.trimmed().compare(u"GO", Qt::CaseInsensitive) == 0;
}

QStringList withoutBatchSeparators(const QStringList& lines) {
    const QString text = lines.join(u'\n');
    QStringList kept;
    qsizetype quotedUntil = 0;  // the end of what opened on a line before
    qsizetype start = 0;
    for (const QString& line : lines) {
        const qsizetype end = start + line.size();
        if (quotedUntil > start || !isBatchSeparator(line)) kept << line;
        for (qsizetype i = qMax(start, quotedUntil); i < end;) {
            const qsizetype past = pastQuoted(text, i);
            i = past > i ? past : i + 1;
            quotedUntil = i;
        }
        start = end + 1;
    }
    return kept;
}

}  // namespace torvik::db
