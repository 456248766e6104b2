// See recorded_run.h.
#include "tests/faults/recorded_run.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <regex>

#include "inbound/transfer/transfer_steps.h"

namespace torvik::test {

namespace {

constexpr const char* kBegin = "BEGIN TRANSACTION";
constexpr const char* kCommit = "COMMIT TRANSACTION";

// Which step a request belongs to: the one whose name was told last, but for the marks in dts_logg, which some steps
// write before their name is told and two write without a name.
class StepOfRequest {
public:
    void named(const QString& step) {
        for (const TransferStep& row : transferSteps())
            if (step == QString::fromUtf8(row.name)) p_ = row.p;
    }
    int of(const std::string& text) {
        if (p_ == 0) return 0;
        if (text.find("insert into dts_logg") == std::string::npos) return p_;
        const std::vector<int> steps = stepsOfMarks();
        const int p = mark_ < steps.size() ? steps[mark_++] : 0;
        if (mark_ == steps.size()) end();
        return p;
    }
    [[nodiscard]] int now() const { return p_; }
    void end() {
        p_ = 0;
        mark_ = 0;
    }

private:
    static std::vector<int> stepsOfMarks() {
        std::vector<int> steps;
        for (const TransferStep& step : transferSteps())
            for (const DtsLogg mark : {step.before, step.after})
                if (mark != DtsLogg::None) steps.push_back(step.p);
        return steps;
    }

    int p_ = 0;
    std::size_t mark_ = 0;
};

// From the servers' logs; `before` is how many requests each had been sent when the run began.
void addStatements(sandbox::chain::DemoChain& chain, const std::vector<std::uint64_t>& before, RecordedRun& run) {
    std::map<std::pair<std::size_t, std::uint64_t>, std::size_t> requests;
    for (std::size_t i = 0; i < run.requests.size(); ++i) requests[{run.requests[i].server, run.requests[i].place}] = i;
    run.statements.resize(run.requests.size());
    for (std::size_t server = 0; server < before.size(); ++server) {
        std::vector<std::string> earlier;
        for (const sandbox::LoggedRequest& logged : serverOf(chain, server).faults().log()) {
            const auto found = requests.find({server, logged.request.serverNumber - before[server]});
            for (const std::string& text : logged.statements) {
                const auto same = std::count_if(earlier.begin(), earlier.end(), [&](const std::string& other) {
                    return other.find(text) != std::string::npos;
                });
                earlier.push_back(text);
                if (found == requests.end()) continue;
                RecordedRequest statement = run.requests[found->second];
                statement.place = static_cast<std::uint64_t>(same) + 1;
                statement.text = text;
                statement.level = sandbox::FaultLevel::Statement;
                run.statements[found->second].push_back(std::move(statement));
            }
        }
    }
}

}  // namespace

std::string sameEachRun(const std::string& text) {
    static const std::regex kOfOneRun(
        R"(\{[0-9a-fA-F]{8}(-[0-9a-fA-F]{4}){3}-[0-9a-fA-F]{12}\}|\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3})");
    return std::regex_replace(text, kOfOneRun, "");
}

std::size_t RecordedRun::firstRequestTo(std::size_t server) const {
    std::size_t index = 0;
    while (index < requests.size() && requests[index].server != server) ++index;
    return index;
}

std::size_t RecordedRun::pairsOf(std::size_t till) const {
    std::size_t count = 0;
    for (const RecordedPair& pair : pairs) count += pair.till == till;
    return count;
}

RecordedRun record(sandbox::chain::DemoChain& chain, ChainProgram& program) {
    RecordedRun run;
    StepOfRequest steps;
    std::mutex mutex;
    const std::vector<std::uint64_t> before = keepLogs(chain);
    std::size_t heard = 0;
    program.engine.Seam.pumpMessages = [&] {
        const std::lock_guard lock(mutex);
        for (; heard < run.requests.size(); ++heard) run.requests[heard].heardAt = steps.now();
    };
    program.engine.OnProgress = [&](QObject*, int, const QString& text) {
        {
            const std::lock_guard lock(mutex);
            if (text.startsWith(QStringLiteral("Start ")) && text.endsWith(QStringLiteral(": ")))
                steps.named(text.sliced(6, text.size() - 8));
        }
        program.engine.Seam.pumpMessages();
    };
    {
        const RequestWatch watch(chain, [&](std::size_t server, std::uint64_t place, const sandbox::RequestInfo& r) {
            const std::lock_guard lock(mutex);
            const std::size_t index = run.requests.size();
            if (server != kBackOffice && r.text.find(kBegin) != std::string::npos) {
                run.states.push_back(readState(chain));
                run.pairs.push_back({.till = server, .begins = index});
            }
            if (r.text == kCommit) {
                (server == kBackOffice ? run.pairs.back().backOfficeCommits : run.pairs.back().tillCommits) = index;
                steps.end();
            }
            run.requests.push_back(
                {.server = server, .place = place, .text = sameEachRun(r.text), .p = steps.of(r.text)});
        });
        program.fetch();
    }
    addStatements(chain, before, run);
    program.engine.OnProgress = nullptr;
    program.engine.Seam.pumpMessages = [] {};
    run.states.push_back(readState(chain));
    run.errors = program.errors();
    return run;
}

}  // namespace torvik::test
