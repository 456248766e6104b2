// Joins the fetch to the engine: what its settlement run does at a till, and how every other visit begins.
#pragma once

#include "inbound/settlement/oppgjor.h"

namespace torvik {

class TTorvikPos;

// Sets the engine's OnFetchTill and OnResolveTill. Called once, where the program is put together.
void joinFetching(TTorvikPos& torvikPos, const OppgjorJoinPoints& joinPoints = {});

}  // namespace torvik
