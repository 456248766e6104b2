#include "inbound/fetch_till.h"

#include "engine/roster/avdeling.h"
#include "engine/torvik_pos.h"
#include "inbound/transfer/dm_pos_to_torvik.h"

namespace torvik {

void joinFetching(TTorvikPos& torvikPos, const OppgjorJoinPoints& joinPoints) {
    torvikPos.OnFetchTill = [joinPoints](TillVisit& visit) {
        auto* oppgjor = new TOppgjor(visit.Roster, joinPoints);  // the roster owns it
        oppgjor->IncludeLastBackupStatus = true;
        oppgjor->Execute();
    };
    torvikPos.OnCancelRequestChanged = [](bool requested) {
        if (dmPOStoTorvik) dmPOStoTorvik->CheckForCancel = requested;
    };
}

}  // namespace torvik
