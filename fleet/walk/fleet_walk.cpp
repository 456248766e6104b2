#include "fleet/walk/fleet_walk.h"

#include "engine/db/query.h"
#include "engine/run/run_parts.h"

namespace torvik {

void beginFleetWalk(RunParts& parts) {
    parts.Control.Begin();
    parts.Office.Begin();
    parts.Roster.Close();
    parts.Roster.Open();
}

void beginCountedFleetWalk(RunParts& parts) {
    beginFleetWalk(parts);
    parts.Log.AddLog(QStringLiteral("Antall kasser som skal behandles: %1").arg(parts.Roster.Qry().RecordCount()));
    if (parts.Status) parts.Status->Clear();
}

}  // namespace torvik
