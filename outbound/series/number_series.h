// Brings the number series of the roster's tills up to what the back office knows of their documents, so that a till
// that was reset gives out no number twice. docs/till-operations.md tells the whole.
#pragma once

namespace torvik {

class RunParts;
class TTorvikPos;

// Lets no till's failure out; raises a cancel that comes in a wait, and what befalls the roster.
void UpdateLedigID(RunParts& parts);

// Joins it to the engine: sets its OnUpdateLedigID. Called once, where the program is put together.
void joinNumberSeries(TTorvikPos& torvikPos);

}  // namespace torvik
