#include "outbound/reset/till_reset.h"

#include "engine/base/abort.h"
#include "engine/base/run_options.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/office/standing_pair.h"
#include "engine/run/run_parts.h"
#include "engine/run/till_walk.h"
#include "engine/torvik_pos.h"
#include "outbound/reset/reset_batch.h"

namespace torvik {

namespace {

constexpr int kAllTills = -1;
constexpr int kBatchTimeout = 3600;  // seconds

const QString kReminder = QStringLiteral(
    "Husk å slett alle filer og mapper i mappene:\n"
    "Receipt, Attachment, Bank, Creditslip, Log, Report, Returnslip, \n"
    "Z");

// What a fetch has left half done is resolved like at any visit; but then the till may hold what the back office does
// not, which the reset would lose.
void resolve(TillVisit& visit) {
    const bool stood = HasStandingPair(visit.Office, visit.Till.Ik_Ku_Id, visit.Till.Kassenummer);
    ResolveTill(visit);
    if (!stood) return;
    throw EngineError(
        QStringLiteral("Kassen (avd. %1, kasse %2) nullstilles ikke, fordi en avbrutt innhenting nettopp er "
                       "avklart. Hent oppgjør og varetelling først")
            .arg(visit.Till.Avdelingsnummer, visit.Till.Kassenummer));
}

// All or nothing of one till. What fails is told here, and no reminder follows.
void reset(const TillVisit& visit, QStringList& batch) {
    db::Query query(&visit.TillSession);
    query.ParamCheck = false;
    query.CommandTimeout = kBatchTimeout;
    visit.TillSession.StartTransaction();
    batch += ResetBatch(visit.Context.Options.InitializeItems);
    query.SQL = batch;
    try {
        query.ExecSQL();
        visit.TillSession.Commit();
    } catch (const std::exception& e) {
        visit.TillSession.Rollback();
        visit.Log.AddLog(ErrorText(e), true);
        return;
    }
    visit.Log.AddLog(QStringLiteral("fullføRT NULLSTILLING AV KASSE..."));
    if (visit.Context.Events.OnTellOperator) visit.Context.Events.OnTellOperator(kReminder);
}

void openRoster(TAvdeling& roster, int Ku_Id, const QString& Kassenummer) {
    roster.Close();
    if (Ku_Id != kAllTills) {
        roster.ClearFilter();
        roster.SetKu_Id(Ku_Id);
        roster.SetIkk_Kassenummer(Kassenummer);
    }
    roster.Open();
}

bool confirmed(const RunParts& parts) {
    const auto& ask = parts.Context.Events.OnAskOperator;
    return ask && ask(QStringLiteral("Dette vil slette alle bonger, oppgjør og logger (%1 kasser). Vil du gjøre dette "
                                     "\nnå ?")
                          .arg(parts.Roster.Qry().RecordCount()));
}

}  // namespace

void InitializeTorvikPOS(RunParts& parts, int Ku_Id, const QString& Kassenummer) {
    if (parts.Context.Options.RunAsService()) return;
    parts.Control.Begin();
    parts.Office.Begin();
    openRoster(parts.Roster, Ku_Id, Kassenummer);
    if (!confirmed(parts)) return;
    parts.Log.AddLog(QStringLiteral("STARTER NULLSTILLING AV KASSE..."));
    QStringList batch;  // grows with each till: what stands in it twice finds nothing more to delete
    TillWalk(parts,
             {
                 .Connect = TillWalkPlan::Connecting::Once,
                 .Wait = TillWalkPlan::Waiting::Never,
                 .ResolvesFirst = false,  // the work does
                 .Work =
                     [&batch](TillVisit& visit) {
                         resolve(visit);
                         reset(visit, batch);
                     },
                 .Failed = [&parts](const TillIdentity&,
                                    const std::exception& failure) { parts.Log.AddLog(ErrorText(failure), true); },
             })
        .Run();
}

void joinReset(TTorvikPos& torvikPos) {
    torvikPos.OnInitializeTorvikPOS = InitializeTorvikPOS;
}

}  // namespace torvik
