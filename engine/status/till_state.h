// What a run has made of a till so far: the icon of its row, and the state that the operator counts and filters by.
// ShowKasseLogs sets the icons; docs/run-status.md tells the rules.
#pragma once

#include <QString>
#include <array>

#include "engine/base/torvik_pos_types.h"

namespace torvik {

class LogEntryTable;
class TfraOppgjorStatus;
struct OppgjorStatusRow;

// The icon of a till as a TKasseLogSeverity value: klsNone, kls_OK or kls_Error. A warning changes nothing.
[[nodiscard]] int TillIcon(const OppgjorStatusRow& row, const LogEntryTable& entries, const TTasks& tasks);

enum class TillState { Failed, Running, Waiting, Done };
inline constexpr std::array kTillStates{TillState::Failed, TillState::Running, TillState::Waiting, TillState::Done};

// "Feilet", "Pågår", "Venter" or "Ferdig".
[[nodiscard]] QString TillStateText(TillState state);
// Of a row of memOppgjorStatus: running while the run is at the till, whatever its icon, else as the icon says.
[[nodiscard]] TillState TillStateOf(const TfraOppgjorStatus& status, int row);
// How many tills are in each state, by the state's value.
[[nodiscard]] std::array<int, kTillStates.size()> CountTillStates(const TfraOppgjorStatus& status);

}  // namespace torvik
