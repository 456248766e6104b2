// The run that sends to all tills of the roster, one after the other. See docs/sending.md.
#pragma once

namespace torvik {

class RunParts;
class TTorvikPos;

// Lets no till's failure out; raises a cancel, what befalls the roster itself, and a back office that cannot be reached
// any more.
void ExecuteDTSToPos(RunParts& parts);

// Joins sending to the engine: sets its OnExecuteDTSToPos. Called once, where the program is put together.
void joinSending(TTorvikPos& torvikPos);

}  // namespace torvik
