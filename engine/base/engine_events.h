// What the engine calls of the boxes above it: the events of its published interface, and the operations that those
// boxes put at its disposal where the program is put together. An event that is not set is not called.
#pragma once

#include <exception>
#include <functional>
#include <optional>

#include "engine/base/torvik_pos_types.h"

namespace torvik {

class RunParts;
struct TillVisit;

// What an operation throws is its failure.
using TillOperation = std::function<void(TillVisit& visit)>;
using RunOperation = std::function<void(RunParts& parts)>;
// Over all tills that the roster holds where Ku_Id is -1, else over the one till.
using ResetOperation = std::function<void(RunParts& parts, int Ku_Id, const QString& Kassenummer)>;

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
    // Asks for a text under a caption, filled in beforehand; nothing is the operator's "Avbryt".
    std::function<std::optional<QString>(const QString& Caption, const QString& Prompt, const QString& First)>
        OnAskText;
    // Tells the operator something and returns when he has confirmed it.
    std::function<void(const QString& Text)> OnTellOperator;
    // Whether anybody is there to answer. Unset: yes, as far as the question itself is set.
    std::function<bool()> OnIsAttended;

    // An operation that is missing when it is needed is an error.
    TillOperation OnFetchTill;             // fetch the settlements of a till that is connected
    RunOperation OnExecuteDTSToPos;        // the sending run
    RunOperation OnExecuteVaretelling;     // fetch the stock counts
    RunOperation OnUpdateLedigID;          // bring the tills' number series up
    ResetOperation OnInitializeTorvikPOS;  // empty tills for new use
    // Resolves what a fetch has left half done at a till that is connected, before anything else is done there; what it
    // raises refuses the till. Unset, nothing is resolved. See ResolveTill (engine/run/till_visit.h).
    TillOperation OnResolveTill;
    // What left DoOnTimer; unset, it is logged.
    std::function<void(const std::exception_ptr&)> OnTimerException;
};

}  // namespace torvik
