#include "inbound/stock_counts/stock_count_run.h"

#include "engine/base/abort.h"
#include "engine/base/run_options.h"
#include "engine/db/query.h"
#include "engine/office/application_lock.h"
#include "engine/run/run_parts.h"
#include "engine/run/till_walk.h"
#include "engine/torvik_pos.h"
#include "inbound/stock_counts/varetelling.h"

namespace torvik {

namespace {

TillWalkPlan planOf(RunParts& parts, const QString& noteFolder) {
    return {
        .Connect = TillWalkPlan::Connecting::Once,
        .Wait = TillWalkPlan::Waiting::Never,
        .LogsInAhead = true,
        .Work =
            [noteFolder](const TillVisit& visit) {
                TVaretelling(visit, noteFolder).Execute(visit.Context.Options.VaretellingPeriode);
            },
        .Failed = [&parts](const TillIdentity&,
                           const std::exception& failure) { parts.Log.AddLog(ErrorText(failure), true); },
    };
}

}  // namespace

// A cancel is not cleared: this run follows a fetch or a night, whose cancel holds for it too.
void ExecuteVaretelling(RunParts& parts, const QString& noteFolder) {
    parts.Control.TestCancel();
    parts.Log.AddLog(QStringLiteral("STARTER VARETELLING"));
    parts.Office.Begin();
    const ApplicationLock stage(parts.Office.Session(), ApplicationLock::OfStockCounts());
    if (!stage.Held()) throw EngineError(QStringLiteral("En annen kjøring henter varetellinger. Prøv igjen senere"));
    parts.Items.Load();
    parts.Roster.Close();
    parts.Roster.Open();
    parts.Log.AddLog(QStringLiteral("Antall kasser som skal behandles: %1").arg(parts.Roster.Qry().RecordCount()));
    TillWalk(parts, planOf(parts, noteFolder)).Run();
    parts.Log.AddLog(QStringLiteral("fullføRT VARETELLING"));
    parts.Log.SaveOppgjorLog();
}

void joinStockCounts(TTorvikPos& torvikPos, const QString& noteFolder) {
    torvikPos.OnExecuteVaretelling = [noteFolder](RunParts& parts) { ExecuteVaretelling(parts, noteFolder); };
}

}  // namespace torvik
