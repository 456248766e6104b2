// An output of the logger. A sink swallows its own failures: logging never stops a run.
#pragma once

#include <memory>

#include "logging/log_entry.h"

namespace torvik {

class ILogSink {
public:
    virtual ~ILogSink() = default;

    virtual void Write(const std::shared_ptr<ILogEntry>& entry) = 0;
    virtual void SyncAndClose() = 0;  // returns when what was written has left the sink's queue
};

}  // namespace torvik
