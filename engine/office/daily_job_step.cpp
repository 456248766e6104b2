#include "engine/office/daily_job_step.h"

#include "engine/db/query.h"
#include "engine/log/operator_log.h"
#include "engine/office/back_office.h"

namespace torvik {

long long DailyJobStep::current() {
    db::Query& query = office_.GeneralQuery({QStringLiteral("SELECT In_DagligJobbFlagg FROM Innstillinger (NOLOCK)")});
    query.Open();
    const qint64 step = query.Fields(0).AsInteger();
    query.Close();
    return step;
}

bool DailyJobStep::ReadNextStep() {
    const qint64 step = current();
    if (step != kBackOfficeDone) return false;
    log_.AddLog(QStringLiteral("Neste steg i synkron kjøring er: %1").arg(step));
    return true;
}

void DailyJobStep::SetNextStep(int step) {
    const qint64 before = current();
    office_.GeneralQuery({QStringLiteral("UPDATE Innstillinger SET In_DagligJobbFlagg = %1").arg(step)}).ExecSQL();
    log_.AddLog(QStringLiteral("Oppdaterer neste steg i synkron kjøring fra %1 til %2")
                    .arg(QString::number(before), QString::number(step)));
}

}  // namespace torvik
