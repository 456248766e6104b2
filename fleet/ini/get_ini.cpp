#include "engine/base/abort.h"
#include "engine/base/query_timeout.h"
#include "engine/base/seams.h"
#include "engine/db/query.h"
#include "engine/run/run_parts.h"
#include "engine/run/till_walk.h"
#include "fleet/ini/ini_runs.h"
#include "fleet/ini/ini_text.h"
#include "fleet/walk/fleet_walk.h"

namespace torvik {

namespace {

constexpr char kIniOfTill[] =
    "select IN_AVDNR, IN_KASSENR, IN_NAVN, IN_ADR1, BO_OBJECT from BINARYOBJECT, INNSTILLINGER where "
    "BO_TYPE='TORVIKPOS.INI' AND BO_DIRECTION=1";

// Only the first row counts; a till without one has an empty file, and no name but the blank.
void receiveIni(const TillVisit& visit) {
    db::Query ini(&visit.TillSession);
    ini.CommandTimeout = kQueryTimeout;
    ini.SQL = QStringList{QString::fromUtf8(kIniOfTill)};
    ini.Open();
    visit.Context.Seam.pumpMessages();
    if (const auto& received = visit.Context.Events.OnTorvikPosIniReceivedEvent) {
        const QString name = ini.text("In_Navn") + QLatin1Char(' ') + ini.text("In_Adr1");
        received(visit.Till.Avdelingsnummer, visit.Till.Kassenummer,
                 iniLines(ini.FieldByName(QStringLiteral("BO_OBJECT")).AsBytes()), name);
    }
    visit.Log.AddLog(QStringLiteral("Hentet TorvikPOS.ini (avd. %1, kasse %2)")
                         .arg(visit.Till.Avdelingsnummer, visit.Till.Kassenummer));
    visit.Context.Seam.pumpMessages();
}

TillWalkPlan planOf(RunParts& parts) {
    TillWalkPlan plan;
    plan.OfficeForLocksAlone = true;
    plan.LogsInAhead = true;
    plan.Unreachable = [&parts](const TillIdentity& till) {
        parts.Log.AddLog(
            QStringLiteral("Klarte ikke å koble til (avd. %1, kasse %2)").arg(till.Avdelingsnummer, till.Kassenummer),
            true);
    };
    plan.Work = [](TillVisit& visit) { receiveIni(visit); };
    plan.Failed = [&parts](const TillIdentity&, const std::exception& failure) {
        parts.Log.AddLog(QStringLiteral("En feil oppstod ved henting av TorvikPOS.ini: %1").arg(ErrorText(failure)),
                         true);
    };
    plan.ProgressText = [](const TillIdentity&, int done, int count) {
        return QStringLiteral("Utført henting av TorvikPOS.ini: %1 av %2 kasser").arg(done).arg(count);
    };
    return plan;
}

}  // namespace

void GetTorvikPOSIni(RunParts& parts) {
    parts.Log.AddLog(QStringLiteral("STARTER HENTING AV TORVIKPOS.INI"));
    beginCountedFleetWalk(parts);
    TillWalk(parts, planOf(parts)).Run();
    parts.Log.AddLog(QStringLiteral("fullføRT HENTING AV TORVIKPOS.INI"));
    parts.Log.SaveOppgjorLog();
}

}  // namespace torvik
