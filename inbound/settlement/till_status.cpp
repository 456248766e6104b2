#include "inbound/settlement/till_status.h"

namespace torvik {

void TillStatus::set(TOKStatus value, TOppgjorStatusType kind, const QString& melding, QTime elapsed) const {
    if (!visit_.Status) return;
    if (!elapsed.isValid()) elapsed = QTime(0, 0).addMSecs(static_cast<int>(elapsed_.elapsed()));
    visit_.Status->SetStatus(visit_.Till.Ik_Ku_Id, visit_.Till.Avdelingsnummer, visit_.Till.Ku_Adresse1,
                             visit_.Till.Kassenummer, kind, value, melding, elapsed, DaysSinceLastBackup);
}

}  // namespace torvik
