// The parts that a run is made of, each with its own narrow header: the roster, the sessions to the back office and the
// till, the operator's log, waits and cancelling. The engine object holds one set; a second walk beside the first holds
// a second set, with sessions of its own.
#pragma once

#include <memory>

#include "engine/base/engine_context.h"
#include "engine/base/engine_events.h"
#include "engine/log/operator_log.h"
#include "engine/office/back_office.h"
#include "engine/office/daily_job_step.h"
#include "engine/office/item_numbers.h"
#include "engine/office/target_reconnect.h"
#include "engine/roster/avdeling.h"
#include "engine/run/run_control.h"
#include "engine/run/till_visit.h"
#include "engine/status/oppgjor_status.h"
#include "engine/till/till_connection.h"

namespace torvik {

class TTorvikPos;

class RunParts {
public:
    RunParts(const EngineContext& context, TTorvikPos& engine);
    ~RunParts();

    // The back office's session: the general query and the roster follow it. Not owned.
    void SetTargetConnection(db::Session* value);
    // Connects to the till of the roster's current row, with RetryCount attempts and waits between them.
    [[nodiscard]] bool ConnectSource();
    // The visit at the till of the roster's current row.
    [[nodiscard]] TillVisit Visit();
    // The work list's new log lines to the status frame, and each till's icon. See ShowKasseLogs.
    void ShowKasseLogs();
    // The till's failure for the status, as facts that the operator can ask for; nothing without a status frame.
    void KeepFailure(const TillIdentity& till, const std::exception& failure);
    // Raises EngineError if the program was put together without the operation.
    void Execute(const RunOperation& operation, const char16_t* name);

    EngineContext Context;
    TAvdeling Roster;
    OperatorLog Log;
    BackOffice Office;
    TillConnection Till;
    RunControl Control;
    ItemNumbers Items;
    DailyJobStep Step;
    TargetReconnect Reconnect;
    std::unique_ptr<TfraOppgjorStatus> Status;  // none: runs go without
};

}  // namespace torvik
