#include "outbound/shape/procedure.h"

namespace torvik {

namespace {

constexpr char kDropProcedure[] = R"(if exists (select 1 from  sysobjects where  id = object_id('%1') and   type = 'P')
drop procedure %1)";

}  // namespace

QString dropProcedureSql(const Procedure& procedure) {
    const QString drop = QString::fromUtf8(kDropProcedure).arg(QString::fromUtf8(procedure.name));
    const QString comment = QString::fromUtf8(procedure.comment);
    return comment.isEmpty() ? drop : comment + QLatin1Char('\n') + drop;
}

QString createProcedureSql(const Procedure& procedure, const SendFacts& facts) {
    return QStringLiteral("create procedure %1 as\n").arg(QString::fromUtf8(procedure.name)) +
           sqlOf(procedure.body, facts);
}

QString callSql(const Procedure& procedure, const SendFacts& facts) {
    if (procedure.call.empty()) return QStringLiteral("exec %1").arg(QString::fromUtf8(procedure.name));
    return sqlOf(procedure.call, facts);
}

}  // namespace torvik
