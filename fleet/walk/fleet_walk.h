// How every work on the fleet begins, before its walk over the chosen tills. Used by the runs of the other rooms.
#pragma once

namespace torvik {

class RunParts;

// Clears what a cancel of the run before has left, makes the back office ready, and puts the roster on its first till.
void beginFleetWalk(RunParts& parts);
// The same; then tells how many tills there are, and empties the status frame.
void beginCountedFleetWalk(RunParts& parts);

}  // namespace torvik
