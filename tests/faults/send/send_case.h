// One fault at one request of the recorded send: how it is made, and what the run must leave, worked out from the place
// of the request alone. docs/failures.md tells the same as a table.
#pragma once

#include <gtest/gtest.h>

#include <span>

#include "tests/faults/fault_case.h"
#include "tests/faults/send/send_stage.h"

namespace torvik::test {

// Those of Fault that a send knows: it hears a cancel between two tills only.
inline constexpr Fault kSendFaults[] = {Fault::Fails, Fault::Deadlocks, Fault::DropsBefore, Fault::DropsAfter,
                                        Fault::OtherSideDrops};

// How a run tells what befell the first till.
enum class SendTold {
    Sent,          // as sent
    InStatusOnly,  // as not reached: in its status row
    Failed,        // as failed, in the status row and the log, with the failure's own text
    FailedAtStep,  // likewise, with the names of the step and of the send
    RunEnds        // the run ends before it
};

// What stands after a run with a fault in the first till's part.
struct SendLeaves {
    std::size_t done = 0;       // of the first till's requests those before this one are done
    bool giftCardItem = false;  // the till's gift-card item is refreshed, whatever else
    SendTold told = SendTold::Sent;
    std::string step;  // the name that it is told with
};
[[nodiscard]] SendLeaves sendLeaves(const RecordedSend& run, std::size_t request, Fault fault);
[[nodiscard]] ChainState stateAfterSend(const RecordedSend& run, const SendLeaves& left);

// The fault in a send on a fresh copy: what it tells and all tables, and then what the next two sends make of it. In
// the ordinary run a state that comes again is not followed by them again.
void expectSendWithFault(const SendStage& stage, std::size_t request, Fault fault);
// The same at one statement of the request. A batch goes on behind a statement that fails, so that of the tables which
// the request changes nothing is said until the next two sends are over.
void expectSendWithFaultAtStatement(const SendStage& stage, std::size_t request, std::size_t statement, Fault fault);

// Two more sends leave what two sends without a fault leave, but for the choice of items that a send broken off at
// `left` leaves at the back office.
void expectNextSendsMakeGood(const SendStage& stage, ChainCopy& copy, const ChainState& left);

}  // namespace torvik::test
