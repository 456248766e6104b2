#include "fleet/scripts/script_batches.h"

#include <QRegularExpression>

#include "engine/db/batch_separators.h"
#include "engine/db/sql_text.h"

namespace torvik {

std::vector<QStringList> scriptBatches(const QStringList& script) {
    std::vector<QStringList> batches;
    QStringList batch;
    for (const QString& line : script) {
        batch << line;
        if (db::isBatchSeparator(line)) batches.push_back(std::exchange(batch, {}));
    }
    if (!batch.isEmpty()) batches.push_back(batch);
    return batches;
}

bool changesData(const QStringList& script) {
    static const QRegularExpression words(
        QStringLiteral("\\b(INSERT|UPDATE|DELETE|MERGE|TRUNCATE|INTO|CREATE|ALTER|DROP|GRANT|REVOKE|DENY|EXEC|EXECUTE|"
                       "BACKUP|RESTORE|DBCC|KILL|SHUTDOWN|RECONFIGURE|WRITETEXT|UPDATETEXT|BULK)\\b"),
        QRegularExpression::CaseInsensitiveOption);
    return db::withoutNames(script.join(u'\n')).contains(words);
}

}  // namespace torvik
