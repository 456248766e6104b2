// What the engine calls of the boxes above it: the events of its published interface, and the operations that those
// boxes put at its disposal where the program is put together. An event that is not set is not called.
#pragma once

#include <exception>
#include <functional>

#include "engine/base/torvik_pos_types.h"

namespace torvik {

class RunParts;
struct TillVisit;

// What an operation throws is its failure.
using TillOperation = std::function<void(TillVisit& visit)>;
using RunOperation = std::function<void(RunParts& parts)>;

struct EngineEvents {
    TNotifyEvent OnAutoStart;
    TNotifyEvent OnAutoReceiveDataDone;
    TNotifyEvent OnAutoStartDone;
    TNotifyEvent OnThreadDone;
    TProgressEvent OnProgress;
    TPackageEventsOnProgressEvent OnDtsProgress;
    TPackageEventsOnStartEvent OnDtsStart;
    TSqlScriptReturnDataEvent OnSqlScriptReturnDataEvent;
    TTorvikPosIniReceivedEvent OnTorvikPosIniReceivedEvent;
    TVareOppdatert OnVareOppdatert;
    TNewLogMessageEvent OnAddLog;
    // Puts a warning to the operator that is answered with yes or no. Unset, the answer is no.
    std::function<bool(const QString& Text)> OnAskOperator;

    // An operation that is missing when it is needed is an error.
    TillOperation OnFetchTill;          // fetch the settlements of a till that is connected
    RunOperation OnExecuteDTSToPos;     // the sending run
    RunOperation OnExecuteVaretelling;  // fetch the stock counts
    // What left DoOnTimer; unset, it is logged.
    std::function<void(const std::exception_ptr&)> OnTimerException;
};

}  // namespace torvik
