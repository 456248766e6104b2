// What a helping copy does at its armed time: it waits for another copy's night to begin, and fetches along with it
// what nobody has fetched, until nothing is left or the night's fetching is over. See docs/engine.md.
#pragma once

namespace torvik {

class RunParts;

// Raises a cancel, and what befalls the back office's session while it waits.
void HelpToFetch(RunParts& parts);

}  // namespace torvik
