// See fault_case.h.
#include "tests/faults/fault_case.h"

#include <algorithm>
#include <atomic>
#include <set>

#include "tests/support/qt_print.h"

namespace torvik::test {

namespace {

// The last step that looks whether the user has cancelled, after it has handled what the user did.
constexpr int kLastStepThatStops = 43;

sandbox::Message refusal(Fault fault) {
    if (fault == Fault::Deadlocks)
        return {.number = 1205, .severity = 13, .state = 51, .text = "Transaction was deadlocked and has been chosen"};
    return {.number = 50000, .severity = 16, .state = 1, .text = "Made to fail"};
}

// A block of staging rows that is refused is sent again row by row, so the row has to be refused as well. One row alone
// is not sent again.
bool isBlockOfRows(const std::string& text) {
    if (text.find("SAVE TRANSACTION") == std::string::npos) return false;
    return text.find("INSERT INTO Temp_") != std::string::npos || text.find("INSERT INTO temp_") != std::string::npos;
}

// A till's version that could not be read is read once more.
bool isReadAgain(const std::string& text) {
    return text.starts_with("select in_dbversion from innstillinger");
}

// Reads that go together and are refused are made one by one, so the next request has to be refused as well.
bool isReadTogether(const std::string& text) {
    return text.find("SELECT @@ERROR Lest_") != std::string::npos && !isReadAgain(text);
}

// A full batch of gift cards or credit notes, whose error is told and passed over.
bool isPassedOver(const std::string& text) {
    std::size_t count = 0;
    for (const char* insert : {"INSERT INTO POSGAVEKORT", "INSERT INTO POSTilgodelapp"})
        for (std::size_t at = text.find(insert); at != std::string::npos; at = text.find(insert, at + 1)) ++count;
    return count == 16;
}

// The walk's first request: a till's lock at the back office.
bool isLockOfTill(const std::string& text) {
    return text.find("sp_getapplock") != std::string::npos;
}

sandbox::FaultRule ruleFor(const RecordedRequest& at, Fault fault) {
    sandbox::FaultRule rule;
    rule.level = at.level;
    if (at.level == sandbox::FaultLevel::Statement) rule.match.textContains = at.text;
    rule.skip = at.place - 1;
    rule.action = fault == Fault::DropsBefore  ? sandbox::FaultAction::DropBefore
                  : fault == Fault::DropsAfter ? sandbox::FaultAction::DropAfter
                                               : sandbox::FaultAction::Fail;
    rule.message = refusal(fault);
    rule.rollBack = fault == Fault::Deadlocks;
    if (fault == Fault::Fails && (isBlockOfRows(at.text) || isReadTogether(at.text))) rule.times = 2;
    return rule;
}

// The mark of a failed transfer, written when the server had already ended the transaction that would have taken it
// back.
void forgetFailureMarks(TableLines& backOffice) {
    std::erase_if(backOffice["dts_logg"],
                  [](const std::string& line) { return line.starts_with(" | 4 |") || line.starts_with(" | 6 |"); });
}

void forgetDropped(TableLines& backOffice, const std::string& batch) {
    for (const char* table : {"POSGAVEKORT", "POSTilgodelapp"})
        std::erase_if(backOffice[table], [&](const std::string& line) {
            return batch.find("SELECT " + line.substr(0, line.find(" | ")) + ",") != std::string::npos;
        });
}

Leaves afterCancel(const RecordedRun& run, std::size_t request) {
    const std::size_t all = run.pairsOf(kFirstTill);
    const int heardAt = run.requests[request].heardAt;
    std::size_t pairs = 0;
    while (pairs < all && request > run.pairs[pairs].backOfficeCommits) ++pairs;
    // A transfer under way stops at its next progress, all else at the end of its pair.
    const bool stops = heardAt > 0 && heardAt <= kLastStepThatStops;
    return {.pairs = std::min(all, stops ? pairs : pairs + 1), .walkGoesOn = false};
}

}  // namespace

std::string nameOf(Fault fault) {
    switch (fault) {
        case Fault::Fails: return "Fails";
        case Fault::Deadlocks: return "Deadlocks";
        case Fault::DropsBefore: return "DropsBefore";
        case Fault::DropsAfter: return "DropsAfter";
        case Fault::OtherSideDrops: return "OtherSideDrops";
        case Fault::Cancelled: return "Cancelled";
    }
    return "";
}

Leaves leaves(const RecordedRun& run, std::size_t request, Fault fault) {
    const std::size_t all = run.pairsOf(kFirstTill);
    const Leaves whole{.pairs = all, .told = false};
    const std::string& text = run.requests[request].text;
    if (fault == Fault::Cancelled) return afterCancel(run, request);
    if (request < run.firstRequestTo(kFirstTill)) {
        // Before the walk there is one side only.
        if (fault == Fault::OtherSideDrops) return whole;
        return {.walkGoesOn = isLockOfTill(text)};
    }
    if (isReadAgain(text) && fault != Fault::OtherSideDrops) return whole;
    if (fault == Fault::Fails && isPassedOver(text)) return {.pairs = all, .droppedText = text};

    for (std::size_t i = 0; i < all; ++i) {
        const RecordedPair& pair = run.pairs[i];
        if (request > pair.backOfficeCommits) continue;
        if (request < pair.tillCommits) return {.pairs = i};
        // The till's session alone is lost, which the next pair meets.
        const Leaves withoutTill{.pairs = i + 1, .told = i + 1 < all};
        if (fault == Fault::OtherSideDrops) {
            if (request == pair.tillCommits) return {.pairs = i, .tillAhead = true};
            return withoutTill;
        }
        const bool ran = fault == Fault::DropsAfter;
        if (request == pair.tillCommits && ran) return withoutTill;  // looked up
        if (request == pair.tillCommits) return {.pairs = i};
        if (request == pair.backOfficeCommits && ran) return {.pairs = i + 1};
        return {.pairs = i, .tillAhead = true};
    }
    return whole;
}

ChainState stateAfter(const RecordedRun& run, const Leaves& left, bool secondTillFetched) {
    const ChainState& before = run.states[left.pairs];
    const ChainState& secondBegins = run.states[run.pairsOf(kFirstTill)];
    const ChainState& end = run.states.back();
    ChainState state = before;
    state.tills[0] = run.states[left.pairs + left.tillAhead].tills[0];
    state.tills[1] = secondTillFetched ? end.tills[1] : run.states.front().tills[1];
    if (secondTillFetched) state.backOffice = withChange(before.backOffice, secondBegins.backOffice, end.backOffice);
    if (!left.droppedText.empty()) forgetDropped(state.backOffice, left.droppedText);
    return state;
}

ChainState outcomeAfter(const FaultStage& stage, const Leaves& left) {
    ChainState outcome = stage.run().states.back();
    if (!left.droppedText.empty()) forgetDropped(outcome.backOffice, left.droppedText);
    return outcome;
}

namespace {

// One run in which `arm` has been done to the servers and `onRequest` hears every request; then nothing is left of it
// but the tables.
FaultRun watched(ChainCopy& copy, FaultProgram& program, const RequestWatch::Callback& onRequest) {
    {
        const RequestWatch watch(copy.chain, onRequest);
        program.fetch();
    }
    // Sessions that the servers still hold would be met by the next run.
    program.source.Close();
    program.target.Close();
    forgetRun(copy.chain);
    return {.errors = program.errors(), .log = program.log()};
}

}  // namespace

FaultRun runWithFault(ChainCopy& copy, const RecordedRequest& at, Fault fault) {
    const auto running = copy.program();
    FaultProgram& program = *running;
    std::atomic<bool> clicked = false;
    program.engine.Seam.pumpMessages = [&] {
        if (clicked.exchange(false)) program.engine.SetCancelRequest(true);
    };
    program.engine.OnProgress = [&](QObject*, int, const QString&) { program.engine.Seam.pumpMessages(); };
    if (fault != Fault::OtherSideDrops && fault != Fault::Cancelled)
        serverOf(copy.chain, at.server).faults().add(ruleFor(at, fault));

    std::string struck;
    FaultRun result =
        watched(copy, program, [&](std::size_t server, std::uint64_t place, const sandbox::RequestInfo& r) {
            if (server != at.server || place != at.place) return;
            struck = sameEachRun(r.text);
            if (fault == Fault::Cancelled) clicked = true;
            if (fault == Fault::OtherSideDrops)
                serverOf(copy.chain, server == kBackOffice ? kFirstTill : kBackOffice).dropConnections();
        });
    result.struck = struck;
    return result;
}

void expectNextRunMakesGood(const FaultStage& stage, ChainCopy& copy, const Leaves& left) {
    const auto program = copy.program();
    program->fetch();
    EXPECT_EQ(program->errors(), QStringList());
    EXPECT_EQ(copy.standingPairs(), 0U);
    EXPECT_EQ(copy.notes(), 0U);
    ChainState state = readState(copy.chain);
    forgetFailureMarks(state.backOffice);
    EXPECT_EQ(difference(outcomeAfter(stage, left), state), "") << "after the next run";
}

std::vector<FaultCase> casesOf(const RecordedRun& run, std::span<const std::size_t> requests) {
    std::vector<FaultCase> cases;
    for (const std::size_t request : requests) cases.push_back({request, run.requests[request]});
    return cases;
}

std::vector<FaultCase> statementCasesOf(const RecordedRun& run, std::span<const std::size_t> requests) {
    std::vector<FaultCase> cases;
    std::set<std::string> known;
    for (const std::size_t request : requests)
        for (const RecordedRequest& statement : run.statements[request])
            if (isLongRun() || known.insert(statement.text).second) cases.push_back({request, statement});
    return cases;
}

void runCases(const FaultStage& stage, std::span<const FaultCase> cases, Fault fault, Follow follow) {
    const RecordedRun& run = stage.run();
    std::vector<Leaves> followed;
    std::unique_ptr<ChainCopy> copy;
    bool secondTillFetched = false;
    Leaves last;
    for (const auto& [index, at] : cases) {
        SCOPED_TRACE(nameOf(fault) + " at request " + std::to_string(index) + ", p=" + std::to_string(at.p) + ", to " +
                     (at.server == kBackOffice ? "the back office" : "the till") + ": " + at.text.substr(0, 100));
        if (!copy) {
            copy = stage.copy();
            secondTillFetched = run.states.front().tills[1] == run.states.back().tills[1];
        }
        const Leaves left = leaves(run, index, fault);
        const FaultRun result = runWithFault(*copy, at, fault);
        secondTillFetched = secondTillFetched || left.walkGoesOn;

        if (at.level == sandbox::FaultLevel::Request) {
            EXPECT_EQ(result.struck, at.text);
        }
        EXPECT_EQ(!result.errors.isEmpty(), left.told) << result.errors.join(u'\n').toStdString();
        EXPECT_EQ(result.log.contains(QStringLiteral("SLUTT oppgjør FOR AVDELING 102")), left.walkGoesOn);
        ChainState state = readState(copy->chain);
        if (fault == Fault::Deadlocks) forgetFailureMarks(state.backOffice);
        const ChainState expected = stateAfter(run, left, secondTillFetched);
        const std::string differs = difference(expected, state);
        EXPECT_EQ(differs, "");

        // What could be said and done at once has been: only a side that was lost leaves its intent or its note.
        if (fault == Fault::Fails || fault == Fault::Cancelled) {
            EXPECT_EQ(copy->standingPairs(), left.tillAhead ? 1U : 0U);
            EXPECT_EQ(copy->notes(), left.tillAhead ? 1U : 0U);
        }

        last = left;
        const bool asBefore = differs.empty() && copy->standingPairs() + copy->notes() == 0 &&
                              expected == stateAfter(run, {.pairs = 0}, secondTillFetched);
        if (asBefore && follow == Follow::Once) continue;
        if (follow == Follow::Each || std::find(followed.begin(), followed.end(), left) == followed.end())
            expectNextRunMakesGood(stage, *copy, left);
        followed.push_back(left);
        copy.reset();
    }
    if (copy) expectNextRunMakesGood(stage, *copy, last);
}

bool isLongRun() {
    return qEnvironmentVariableIsSet("TORVIK_LONG");
}

}  // namespace torvik::test
