#include "fleet/messages/message_script.h"

#include "engine/db/statement_text.h"

namespace torvik {

namespace {

constexpr char kIfItHasTheProcedure[] =
    "if exists (select * from dbo.sysobjects where id = object_id(N'[dbo].[CreateInstantMessage]') and "
    "OBJECTPROPERTY(id, N'IsProcedure') = 1)";
constexpr char kIfItHasAStartScreen[] = "if exists ( select 1 from innstillinger where in_dbversion >= 149)";
constexpr char kOnStartScreen[] = "EXEC CreateInstantMessage '%1','%2','%3','%4', %5, %6,%7";
constexpr char kPlain[] = "EXEC CreateInstantMessage '%1','%2','%3','%4'";

// The lines end as the till's own do.
QString literalText(QString message) {
    message.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\n', QStringLiteral("\r\n"));
    return quotesDoubled(message);
}

}  // namespace

// The message stays within its line of the script, so that none of its own lines can end the batch.
QStringList messageScript(const InstantMessage& message) {
    const QString text = literalText(message.Melding);
    const QString plain = QString::fromUtf8(kPlain).arg(message.Tittel, message.Til, message.Fra, text);
    const QString expiry = QStringLiteral("'%1'").arg(message.Expiry.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    const QString onStartScreen = QString::fromUtf8(kOnStartScreen)
                                      .arg(message.Tittel, message.Til, message.Fra, text,
                                           QString::number(message.Prioritet), expiry, QStringLiteral("1"));
    return {QString::fromUtf8(kIfItHasTheProcedure), QString::fromUtf8(kIfItHasAStartScreen),
            message.DisplayOnPosFront ? onStartScreen : plain, QStringLiteral("else"), plain};
}

}  // namespace torvik
