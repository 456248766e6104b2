#include "fleet/health/backup_age.h"

#include "engine/run/till_visit.h"
#include "fleet/health/health_status.h"

namespace torvik {

int DaysSinceLastBackup(const TillVisit& visit) {
    TLastBackupDates backups;
    backups.POSConnection = &visit.TillSession;
    backups.AvdNr = visit.Till.Avdelingsnummer;
    backups.AvdNavn = visit.Till.Ku_Adresse1;
    backups.Execute(visit.Till.Ik_Ku_Id, visit.Till.Kassenummer);
    return backups.Items.empty() ? -1 : backups.Items.front().DaysSinceLastBackup;
}

}  // namespace torvik
