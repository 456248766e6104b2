#include "inbound/fetch_till.h"

#include "engine/torvik_pos.h"

namespace torvik {

void joinFetching(TTorvikPos& torvikPos, const OppgjorJoinPoints& joinPoints) {
    torvikPos.OnFetchTill = [joinPoints](const TillVisit& visit) {
        auto* oppgjor = new TOppgjor(visit, joinPoints);  // the roster owns it
        oppgjor->IncludeLastBackupStatus = true;
        oppgjor->Execute();
    };
}

}  // namespace torvik
