// From the work list's logs to the status frame: new lines into the detail table, and each till's icon.
#pragma once

#include "engine/base/torvik_pos_types.h"

namespace torvik {

class TfraOppgjorStatus;
class TKasseCollection;

// Every log item, or every one that is new, is marked as shown; with a frame it becomes a row of it, and the frame's
// icons follow from the rows and from what the run does. The frame may be null.
void ShowKasseLogs(bool ClearFirst, TKasseCollection& KasseCollection, bool OnlyNew, TfraOppgjorStatus* Frame,
                   const TTasks& Tasks);

}  // namespace torvik
