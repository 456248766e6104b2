#include "fleet/scripts/sql_script_run.h"

#include "engine/base/abort.h"
#include "engine/base/seams.h"
#include "engine/db/batch_separators.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/run/run_parts.h"
#include "engine/run/till_walk.h"
#include "fleet/scripts/script_batches.h"
#include "fleet/walk/fleet_walk.h"

namespace torvik {

namespace {

class ScriptRun {
public:
    ScriptRun(RunParts& parts, const QStringList& script, bool returnCursor, bool paramCheck, int timeout)
        : parts_(parts),
          script_(script),
          batches_(scriptBatches(script)),
          returnCursor_(returnCursor),
          paramCheck_(paramCheck),
          timeout_(timeout) {}

    void run();

private:
    void serve(const TillVisit& visit) const;
    void runScript(const TillVisit& visit) const;
    void openRows(const TillVisit& visit, db::Query& query) const;
    void executeBatches(const TillVisit& visit, db::Query& query) const;
    void tellOfOpenTransaction(const TillVisit& visit) const;

    RunParts& parts_;
    const QStringList& script_;
    std::vector<QStringList> batches_;
    bool returnCursor_;
    bool paramCheck_;
    int timeout_;
};

void ScriptRun::run() {
    TillWalkPlan plan;
    plan.OfficeForLocksAlone = true;
    plan.LogsInAhead = true;
    plan.CancelEndsStatements = true;
    plan.Unreachable = [this](const TillIdentity& till) {
        parts_.Log.AddLog(
            QStringLiteral("Klarte ikke å koble til (avd. %1, kasse %2)").arg(till.Avdelingsnummer, till.Kassenummer),
            true);
    };
    plan.Work = [this](TillVisit& visit) { serve(visit); };
    plan.Failed = [this](const TillIdentity&, const std::exception& failure) {
        parts_.Log.AddLog(QStringLiteral("En feil oppstod i rutinen SQL Script: %1").arg(ErrorText(failure)), true);
    };
    plan.ProgressText = [](const TillIdentity&, int done, int count) {
        return QStringLiteral("Utført SQL script for %1 av %2 kasser").arg(done).arg(count);
    };
    TillWalk(parts_, plan).Run();
}

// The walk leaves the session of a failed till open until the next one's turn. A script may have begun a transaction,
// whose locks would stop the till for as long.
void ScriptRun::serve(const TillVisit& visit) const {
    try {
        runScript(visit);
    } catch (...) {
        visit.TillSession.Close();
        throw;
    }
}

void ScriptRun::runScript(const TillVisit& visit) const {
    db::Query query(&visit.TillSession);
    query.CommandTimeout = timeout_;
    query.ParamCheck = paramCheck_;
    if (returnCursor_) {
        openRows(visit, query);
    } else {
        executeBatches(visit, query);
    }
    tellOfOpenTransaction(visit);
    // The misspelling is what the log has always had.
    visit.Log.AddLog(QStringLiteral("Kjført SQL Script (avd. %1, kasse %2)")
                         .arg(visit.Till.Avdelingsnummer, visit.Till.Kassenummer));
}

void ScriptRun::openRows(const TillVisit& visit, db::Query& query) const {
    query.SQL = db::withoutBatchSeparators(script_);
    query.Open();
    visit.Context.Seam.pumpMessages();
    if (const auto& returned = visit.Context.Events.OnSqlScriptReturnDataEvent)
        returned(visit.Context.Sender, query, visit.Roster.Qry());
}

void ScriptRun::executeBatches(const TillVisit& visit, db::Query& query) const {
    for (const QStringList& batch : batches_) {
        query.SQL = db::withoutBatchSeparators(batch);
        if (query.SQL.join(QString()).trimmed().isEmpty()) continue;  // nothing for the server to do
        try {
            query.ExecSQL();
        } catch (const EAbort&) {
            throw;  // the operator wants no more of it
        } catch (const std::exception& failure) {
            visit.Log.AddLog(ErrorText(failure), true);
        }
    }
}

// The session is closed behind the till, and what the script did not commit goes with it.
void ScriptRun::tellOfOpenTransaction(const TillVisit& visit) const {
    if (!visit.TillSession.Connected() || !visit.TillSession.InTransaction()) return;
    visit.Log.AddLog(QStringLiteral("Skriptet fullførte ikke transaksjonen sin, og den tas tilbake (avd. %1, kasse %2)")
                         .arg(visit.Till.Avdelingsnummer, visit.Till.Kassenummer),
                     true);
}

}  // namespace

void ExecuteSQLScript(RunParts& parts, const QStringList& AScript, bool ReturnCursor, bool ParamCheck, int timeout) {
    parts.Log.AddLog(QStringLiteral("STARTER SQL SCRIPT kjøring"));
    beginCountedFleetWalk(parts);
    ScriptRun(parts, AScript, ReturnCursor, ParamCheck, timeout).run();
    parts.Log.AddLog(QStringLiteral("fullføRT SQL SCRIPT kjøring"));
    parts.Log.SaveOppgjorLog();
}

}  // namespace torvik
