// Joins the fetch to the engine: what its settlement run does at a till, and how a cancel reaches a transfer under way.
#pragma once

#include "inbound/settlement/oppgjor.h"

namespace torvik {

// Sets the engine's OnFetchTill and OnCancelRequestChanged. Called once, where the program is put together.
void joinFetching(TTorvikPos& torvikPos, const OppgjorJoinPoints& joinPoints = {});

}  // namespace torvik
