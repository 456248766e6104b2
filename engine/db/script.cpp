// See script.h.
#include "engine/db/script.h"

#include "engine/db/connection.h"
#include "engine/db/errors.h"

namespace torvik::db {

void Script::Execute() {
    if (!session_) throw UsageError(QStringLiteral("The script has no connection"));
    const QString text = SQL.join(QStringLiteral("\r\n"));
    if (text.trimmed().isEmpty()) throw UsageError(QStringLiteral("The script has no text"));
    session_->use().run({text, {}, CommandTimeout, true});
}

}  // namespace torvik::db
