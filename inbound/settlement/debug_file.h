// The files that a fetch leaves for whoever looks for an error. Whether they can be written decides nothing.
#pragma once

#include <functional>

namespace torvik {

class OperatorLog;

// Runs `save`; what it raises is told, in the log and as an event, and goes no further.
void saveDebugFile(OperatorLog& log, const std::function<void()>& save);

}  // namespace torvik
