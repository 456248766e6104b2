// Asks the back office whether a pair of transactions with a till has been broken off and not resolved yet: its intent
// still stands in dts_logg (inbound/pairs/pair_intent.h writes and strikes it). The till may then hold marks of data
// that the back office does not have. Asked before vouchers are sent and before a till is reset.
#pragma once

#include <QString>

namespace torvik {

class BackOffice;

// Waits for nobody's lock. Raises what the back office's session raises.
[[nodiscard]] bool HasStandingPair(BackOffice& office, int Ik_Ku_Id, const QString& KasseNr);

}  // namespace torvik
