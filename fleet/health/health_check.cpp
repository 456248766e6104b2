#include "fleet/health/health_check.h"

#include "engine/base/abort.h"
#include "engine/run/run_parts.h"
#include "engine/run/till_walk.h"
#include "fleet/walk/fleet_walk.h"

namespace torvik {

namespace {

void askTill(const TillVisit& visit, THealthSummary& summary) {
    const std::initializer_list<THealthStatus*> both{&summary.FailedJobs, &summary.LastBackupDates};
    for (THealthStatus* status : both) {
        status->POSConnection = &visit.TillSession;
        status->AvdNr = visit.Till.Avdelingsnummer;
        status->AvdNavn = visit.Till.Ku_Adresse1;
        status->Execute(visit.Till.Ik_Ku_Id, visit.Till.Kassenummer);
    }
}

TillWalkPlan planOf(RunParts& parts, THealthSummary& summary) {
    TillWalkPlan plan;
    plan.OfficeForLocksAlone = true;
    plan.LogsInAhead = true;
    plan.CancelEndsStatements = true;
    plan.Unreachable = [&parts](const TillIdentity& till) {
        parts.Log.AddLog(
            QStringLiteral("Klarte ikke å koble til (avd. %1, kasse %2)").arg(till.Avdelingsnummer, till.Kassenummer),
            true);
    };
    plan.Work = [&summary](TillVisit& visit) { askTill(visit, summary); };
    plan.Failed = [&parts](const TillIdentity&, const std::exception& failure) {
        parts.Log.AddLog(QStringLiteral("En feil oppstod i rutinen CheckPosHealthStatus: %1").arg(ErrorText(failure)),
                         true);
    };
    return plan;
}

}  // namespace

std::unique_ptr<THealthSummary> CheckPosHealthStatus(RunParts& parts) {
    parts.Log.AddLog(QStringLiteral("STARTER HELSESJEKK"));
    beginCountedFleetWalk(parts);
    auto summary = std::make_unique<THealthSummary>();
    TillWalk(parts, planOf(parts, *summary)).Run();
    parts.Log.AddLog(QStringLiteral("fullføRT HELSESJEKK"));
    parts.Log.SaveOppgjorLog();
    return summary;
}

}  // namespace torvik
