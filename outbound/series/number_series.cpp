#include "outbound/series/number_series.h"

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/run/run_parts.h"
#include "engine/run/till_walk.h"
#include "engine/torvik_pos.h"
#include "outbound/series/till_series.h"

namespace torvik {

namespace {

constexpr int kAskTimeout = 1200;  // seconds

constexpr char kFreeNumbers[] = "exec POSLedigID %1,'%2'";

// Asks the back office before the till is touched at all.
void update(TillVisit& visit) {
    const TillIdentity& till = visit.Till;
    visit.Log.AddLog(
        QStringLiteral("Oppdaterer nummerserie for avd. %1 kasse %2").arg(till.Avdelingsnummer, till.Kassenummer));
    db::Query free(&visit.OfficeSession);
    free.ParamCheck = false;
    free.CommandTimeout = kAskTimeout;
    free.SQL = QStringList{
        QString::fromUtf8(kFreeNumbers)
            .arg(QString::number(till.Ik_Ku_Id), QString(till.Kassenummer).replace(u'\'', QStringLiteral("''")))};
    free.Open();
    visit.Log.AddLog(QStringLiteral("exec ok"));
    if (!visit.Connection.ConnectSource([&visit](qint64 left) { visit.Control.WaitRetryTime(left); }))
        throw EngineError(
            QStringLiteral("Klarte ikke koble til avd.%1 kasse %2").arg(till.Avdelingsnummer, till.Kassenummer));
    ResolveTill(visit);
    TillSeries series(visit.TillSession, visit.Log);
    for (; !free.Eof(); free.Next()) series.raise(free.text("LI_ATTRIBUTT"), free.integer("LI_NESTELEDIGEID"));
    series.SetSeriesSynchronized();
}

TillWalkPlan planOf(OperatorLog& log) {
    return {
        .Connect = TillWalkPlan::Connecting::ByTheWork,
        .Wait = TillWalkPlan::Waiting::BetweenTills,
        .TestCancel = TillWalkPlan::CancelTest::Never,
        .Work = update,
        .Failed =
            [&log](const TillIdentity& till, const std::exception& failure) {
                log.AddLog(QStringLiteral("Feil ved oppdatering av ID, avd. %1, kasse %2 (%3)")
                               .arg(till.Avdelingsnummer, till.Kassenummer, ErrorText(failure)),
                           true);
            },
    };
}

}  // namespace

void UpdateLedigID(RunParts& parts) {
    parts.Control.Begin();
    parts.Log.AddLog(QStringLiteral("STARTER OPPDATERING AV ID"));
    parts.Office.Begin();
    parts.Roster.Close();
    parts.Roster.Open();
    parts.Log.AddLog(QStringLiteral("Antall kasser som skal behandles: %1").arg(parts.Roster.Qry().RecordCount()));
    TillWalk(parts, planOf(parts.Log)).Run();
    parts.Log.AddLog(QStringLiteral("fullføRT OPPDATERING AV ID"));
}

void joinNumberSeries(TTorvikPos& torvikPos) {
    torvikPos.OnUpdateLedigID = UpdateLedigID;
}

}  // namespace torvik
