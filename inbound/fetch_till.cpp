#include "inbound/fetch_till.h"

#include "engine/torvik_pos.h"
#include "inbound/pairs/till_pairs.h"

namespace torvik {

void joinFetching(TTorvikPos& torvikPos, const OppgjorJoinPoints& joinPoints) {
    torvikPos.OnFetchTill = [joinPoints](const TillVisit& visit) {
        auto* oppgjor = new TOppgjor(visit, joinPoints);  // the roster owns it
        oppgjor->IncludeLastBackupStatus = true;
        oppgjor->Execute();
    };
    torvikPos.OnResolveTill = [joinPoints](const TillVisit& visit) {
        const TillPairs pairs(visit, joinPoints.NoteFolder);
        resolveStandingPairs(pairs.sides(), visit.Till.Avdelingsnummer, joinPoints.DecidePair);
    };
}

}  // namespace torvik
