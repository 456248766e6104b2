// The priority of worker threads: one step below normal, the third of the seven levels from idle.
#pragma once

namespace torvik {

// Of the calling thread. Where the system refuses, the thread keeps its priority.
void lowerPriorityOfThisThread();

}  // namespace torvik
