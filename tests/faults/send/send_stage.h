// The chain that the cases of a send's fault start from: two tills of two departments that have been sent to once, and
// a day's work at the back office since, so that every step has something to bring, to change or to take away. It is
// made once for a test program, in files; each case works on a copy of its own.
#pragma once

#include "tests/faults/fault_stage.h"
#include "tests/faults/send/recorded_send.h"

namespace torvik::test {

class SendStage {
public:
    static const SendStage& get();

    [[nodiscard]] std::unique_ptr<ChainCopy> copy() const;
    // The send without a fault from here on.
    [[nodiscard]] const RecordedSend& run() const { return run_; }
    // What two of them leave.
    [[nodiscard]] const ChainState& afterTwo() const { return afterTwo_; }

private:
    SendStage();

    ChainFolder folder_;
    RecordedSend run_;
    ChainState afterTwo_;
};

// The program over a copy.
[[nodiscard]] std::unique_ptr<SendProgram> sendProgram(ChainCopy& copy);

}  // namespace torvik::test
