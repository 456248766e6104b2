// A send without a fault, request by request, with what the request's server held before it: the list from which the
// faults of sends are aimed, and the measure of what they leave. A send has no transaction around it, so that what a
// fault leaves is what stood when its request came.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/faults/chain_state.h"
#include "tests/faults/request_watch.h"
#include "tests/faults/send/send_program.h"

namespace torvik::test {

// Where in a run a request stands. Each till has all but the first.
enum class SendPart {
    Roster,        // before the first till
    Beginning,     // the till's lock, its login, the questions whether it may be sent to
    Steps,         // the 49 steps
    Numbering,     // the send's number is given back
    GiftCardItem,  // asked for, and replaced
    Ending         // the till's lock goes, the back office is looked at
};

struct SentRequest {
    std::size_t server = 0;
    std::uint64_t place = 0;  // 1-based, among the requests of this run to its server
    std::string text;
    int visit = 0;  // 1 for the first till, 2 for the second
    SendPart part = SendPart::Roster;
    int step = 0;      // its number, in the steps
    std::string name;  // what the step is called while the request runs, likewise
    std::vector<std::string> statements;
    std::uint64_t statementsBefore = 0;  // of this run at its server
};

struct RecordedSend {
    std::vector<SentRequest> requests;
    std::vector<TableLines> before;  // what the server of each request held when it came
    ChainState end;
    QStringList errors;
    QStringList status;

    // All tables when the request of this place came; behind the last, the end.
    [[nodiscard]] ChainState stateBefore(std::size_t request) const;
    // The first request of a visit.
    [[nodiscard]] std::size_t beginOf(int visit) const;
    // What a request has changed at its server.
    [[nodiscard]] std::vector<std::string> tablesChangedBy(std::size_t request) const;

private:
    [[nodiscard]] const TableLines& held(std::size_t server, std::size_t request) const;
};

// A request's text as it is the same in every run: without the number of the send.
[[nodiscard]] std::string sameEachSend(const std::string& text);

[[nodiscard]] RecordedSend recordSend(sandbox::chain::DemoChain& chain, SendProgram& program);

}  // namespace torvik::test
