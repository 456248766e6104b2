#include "engine/status/till_state.h"

#include "engine/status/oppgjor_status.h"

namespace torvik {

int TillIcon(const OppgjorStatusRow& row, const LogEntryTable& entries, const TTasks& tasks) {
    if (row.Ik_Ku_Id && entries.HasError(*row.Ik_Ku_Id, row.Kassenr.trimmed())) return kls_Error;
    const bool fetching = tasks.contains(taHent);
    const bool sending = tasks.contains(taSend);
    if (row.Hentet == false && fetching) return kls_Error;
    if (row.Sendt == false && sending) return kls_Error;
    if ((!row.Hentet && fetching) || (!row.Sendt && sending)) return klsNone;
    return kls_OK;
}

QString TillStateText(TillState state) {
    switch (state) {
        case TillState::Failed: return QStringLiteral("Feilet");
        case TillState::Running: return QStringLiteral("Pågår");
        case TillState::Waiting: return QStringLiteral("Venter");
        case TillState::Done: return QStringLiteral("Ferdig");
    }
    return {};
}

TillState TillStateOf(const TfraOppgjorStatus& status, int row) {
    if (row == status.RunningRow()) return TillState::Running;
    switch (status.memOppgjorStatus.Row(row).StatusIcon) {
        case kls_Error: return TillState::Failed;
        case kls_OK: return TillState::Done;
        default: return TillState::Waiting;
    }
}

std::array<int, kTillStates.size()> CountTillStates(const TfraOppgjorStatus& status) {
    std::array<int, kTillStates.size()> counts{};
    for (int row = 0; row < status.memOppgjorStatus.RecordCount(); ++row)
        ++counts[static_cast<std::size_t>(TillStateOf(status, row))];
    return counts;
}

}  // namespace torvik
