// See send_case.h.
#include "tests/faults/send/send_case.h"

#include <algorithm>
#include <optional>

#include "outbound/exports/send_steps.h"
#include "tests/support/qt_print.h"

namespace torvik::test {

namespace {

constexpr const char* kGiftCardItems = "GAVEKORTVARE";
constexpr const char* kChoices = "VareEksport";
constexpr int kFirstDepartment = 1001;

struct SendFaultRun {
    std::string struck;  // the text of the request that the fault met; empty: it was never sent
    QString ended;       // what ended the run; empty for nothing
    QStringList errors;
    QStringList status;
};

// Rows go in blocks. One that is refused is taken back and sent again row by row, so what follows it has to be refused
// as well.
bool isBlockOfRows(const std::string& text) {
    return text.ends_with(" SELECT @@ROWCOUNT");
}

// A block with a transaction of its own, which is refused once: it is sent again.
bool isWholeBlock(const std::string& text) {
    return text.find("BEGIN TRANSACTION IF @@TRANCOUNT > 0 INSERT INTO ") != std::string::npos;
}

// Questions that go together, also those behind the making of the work tables: refused, each goes by itself.
bool isAskedTogether(const std::string& text) {
    return text.find(" Lest_1,") != std::string::npos || text.find("\nSELECT OBJECT_ID(N'") != std::string::npos;
}

// A block that is copied row by row is a transaction of its own: one that is not committed is sent again.
bool isSentAgain(const SentRequest& at) {
    if (isWholeBlock(at.text)) return true;
    if (isAskedTogether(at.text)) return true;
    if (at.text != "COMMIT TRANSACTION") return false;
    const auto& step = sendSteps()[static_cast<std::size_t>(at.step) - 1];
    return std::any_of(step.what->begin(), step.what->end(),
                       [](const Action& action) { return std::holds_alternative<CopyRows>(action); });
}

sandbox::FaultRule ruleFor(const SentRequest& at, Fault fault) {
    sandbox::FaultRule rule;
    rule.skip = at.place - 1;
    rule.action = fault == Fault::DropsBefore  ? sandbox::FaultAction::DropBefore
                  : fault == Fault::DropsAfter ? sandbox::FaultAction::DropAfter
                                               : sandbox::FaultAction::Fail;
    rule.message = fault == Fault::Deadlocks
                       ? sandbox::Message{.number = 1205, .severity = 13, .state = 51, .text = "Deadlock victim"}
                       : sandbox::Message{.number = 50000, .severity = 16, .state = 1, .text = "Made to fail"};
    rule.rollBack = fault == Fault::Deadlocks;
    if (rule.action == sandbox::FaultAction::Fail && isBlockOfRows(at.text)) rule.times = 2;
    return rule;
}

std::size_t otherSide(std::size_t server) {
    return server == kBackOffice ? kFirstTill : kBackOffice;
}

// A send that meets the rule, or without one loses the other side while the request runs.
SendFaultRun sendWith(ChainCopy& copy, const SentRequest& at, const std::optional<sandbox::FaultRule>& rule) {
    const auto program = sendProgram(copy);
    if (rule) serverOf(copy.chain, at.server).faults().add(*rule);
    SendFaultRun result;
    std::string struck;
    {
        const RequestWatch watch(copy.chain,
                                 [&](std::size_t server, std::uint64_t place, const sandbox::RequestInfo& r) {
                                     if (server != at.server || place != at.place) return;
                                     struck = sameEachSend(r.text);
                                     if (!rule) serverOf(copy.chain, otherSide(server)).dropConnections();
                                 });
        result.ended = program->send();
    }
    program->source.Close();
    program->target.Close();
    forgetRun(copy.chain);
    result.struck = struck;
    result.errors = program->errors();
    result.status = program->status();
    return result;
}

void expectTold(const SendFaultRun& run, SendTold told, const std::string& step) {
    const QString first = run.status.value(0);
    const QString allErrors = run.errors.join(u'\n');
    EXPECT_EQ(run.ended.isEmpty(), told != SendTold::RunEnds) << run.ended.toStdString();
    if (told == SendTold::RunEnds) {
        EXPECT_EQ(run.status.filter(QStringLiteral("sendt ja")), QStringList());
        return;
    }
    EXPECT_EQ(run.status.value(1), QStringLiteral("102/1 hentet - sendt ja: Overføring OK"));
    if (told == SendTold::Sent || told == SendTold::InStatusOnly) {
        EXPECT_EQ(run.errors, QStringList());
        EXPECT_TRUE(first.startsWith(told == SendTold::Sent ? QStringLiteral("101/1 hentet - sendt ja: Overføring OK")
                                                            : QStringLiteral("101/1 hentet - sendt nei: ")))
            << first.toStdString();
        return;
    }
    const QString name = QString::fromStdString(step);
    const QString text = told == SendTold::FailedAtStep
                             ? QStringLiteral("TorvikToPOS failed: %1 SessionID: \\d{1,4} \\S").arg(name)
                             : QStringLiteral("(?!TorvikToPOS failed)");
    const QRegularExpression row(QStringLiteral("^101/1 hentet nei sendt -: DTS feilet: ") + text);
    const QRegularExpression line(
        QStringLiteral("^Feil ved Execute prosedyren ved utsending til \\(Avd 101, kasse 1\\)\\(%1\\): ").arg(name) +
        text);
    EXPECT_TRUE(row.match(first).hasMatch()) << first.toStdString();
    EXPECT_EQ(run.errors.size(), 1) << allErrors.toStdString();
    EXPECT_TRUE(line.match(run.errors.value(0)).hasMatch()) << allErrors.toStdString();
}

std::string described(const SentRequest& at, std::size_t request, Fault fault) {
    return nameOf(fault) + " at request " + std::to_string(request) + ", step " + std::to_string(at.step) + ", to " +
           (at.server == kBackOffice ? "the back office" : "the till") + ": " + at.text.substr(0, 100);
}

}  // namespace

namespace {

// The login at the till follows its lock, the first request of the visit.
bool isConnected(const RecordedSend& run, std::size_t request, std::size_t server) {
    return server == kBackOffice || request > run.beginOf(1);
}

// The request runs; what the lost side is asked for next finds it gone.
SendLeaves leavesWithoutOtherSide(const RecordedSend& run, std::size_t request) {
    const std::size_t lost = otherSide(run.requests[request].server);
    const std::size_t end = run.beginOf(2);
    std::size_t next = request + 1;
    while (next < end && run.requests[next].server != lost) ++next;
    if (next == end || !isConnected(run, request, lost)) return {.done = end, .giftCardItem = true};
    return sendLeaves(run, next, Fault::DropsBefore);
}

}  // namespace

SendLeaves sendLeaves(const RecordedSend& run, std::size_t request, Fault fault) {
    if (fault == Fault::OtherSideDrops) return leavesWithoutOtherSide(run, request);
    const SentRequest& at = run.requests[request];
    const bool ran = fault == Fault::DropsAfter;
    const bool lost = ran || fault == Fault::DropsBefore;
    const std::size_t done = ran ? request + 1 : request;
    if (!lost && at.part == SendPart::Steps && isSentAgain(at)) return {.done = run.beginOf(2), .giftCardItem = true};
    switch (at.part) {
        case SendPart::Roster: return {.done = done, .told = SendTold::RunEnds};
        case SendPart::Beginning: return {.done = done, .told = SendTold::InStatusOnly};
        // The first two steps stand outside of the guard that names the step.
        case SendPart::Steps:
            return {.done = done,
                    .giftCardItem = !lost,  // it takes both sessions
                    .told = at.step < kFirstGuardedStep ? SendTold::Failed : SendTold::FailedAtStep,
                    .step = at.name};
        case SendPart::Numbering: return {.done = done, .giftCardItem = !lost};
        case SendPart::GiftCardItem: return {.done = done, .giftCardItem = ran && at.server == kFirstTill};
        case SendPart::Ending: return {.done = done, .giftCardItem = true};
    }
    return {};
}

ChainState stateAfterSend(const RecordedSend& run, const SendLeaves& left) {
    const ChainState begun = run.stateBefore(run.beginOf(1));
    const ChainState served = run.stateBefore(run.beginOf(2));
    ChainState state = run.stateBefore(left.done);
    state.tills[0][kGiftCardItems] = (left.giftCardItem ? served : begun).tills[0].at(kGiftCardItems);
    if (left.told == SendTold::RunEnds) return state;
    state.tills[1] = run.end.tills[1];
    state.backOffice = withChange(state.backOffice, served.backOffice, run.end.backOffice);
    return state;
}

void expectNextSendsMakeGood(const SendStage& stage, ChainCopy& copy, const ChainState& left) {
    // In the ordinary run a second till that has been sent to whole is left at that.
    const bool both = isLongRun() || left.tills[1] != stage.run().end.tills[1];
    for (int send = 0; send < 2; ++send) {
        const auto program = sendProgram(copy);
        if (!both) program->engine.Avdeling->SetKu_Id(kFirstDepartment);
        EXPECT_EQ(program->send(), QString());
        EXPECT_EQ(program->errors(), QStringList());
    }
    ChainState expected = stage.afterTwo();
    expected.backOffice[kChoices] = left.backOffice.at(kChoices);
    if (!both) expected.tills[1] = left.tills[1];
    EXPECT_EQ(difference(expected, readState(copy.chain)), "") << "after the next two sends";
}

namespace {

// Whether a state is to be followed by the next two sends: in the long run each, else each once. What the walk does
// with the gift-card item makes no other state.
bool isFollowed(ChainState state) {
    static std::vector<ChainState> followed;
    if (isLongRun()) return true;
    state.tills[0].erase(kGiftCardItems);
    if (std::find(followed.begin(), followed.end(), state) != followed.end()) return false;
    followed.push_back(std::move(state));
    return true;
}

}  // namespace

void expectSendWithFault(const SendStage& stage, std::size_t request, Fault fault) {
    const RecordedSend& run = stage.run();
    const SentRequest& at = run.requests[request];
    SCOPED_TRACE(described(at, request, fault));
    const SendLeaves left = sendLeaves(run, request, fault);
    const auto copy = stage.copy();

    const SendFaultRun result =
        sendWith(*copy, at, fault == Fault::OtherSideDrops ? std::nullopt : std::optional(ruleFor(at, fault)));

    EXPECT_EQ(result.struck, at.text);
    expectTold(result, left.told, left.step);
    const ChainState expected = stateAfterSend(run, left);
    EXPECT_EQ(difference(expected, readState(copy->chain)), "");
    if (isFollowed(expected)) expectNextSendsMakeGood(stage, *copy, expected);
}

void expectSendWithFaultAtStatement(const SendStage& stage, std::size_t request, std::size_t statement, Fault fault) {
    const RecordedSend& run = stage.run();
    const SentRequest& at = run.requests[request];
    SCOPED_TRACE(described(at, request, fault) + "\n statement " + std::to_string(statement) + ": " +
                 at.statements[statement]);
    const auto copy = stage.copy();
    sandbox::FaultRule rule = ruleFor(at, fault);
    rule.level = sandbox::FaultLevel::Statement;
    rule.skip = at.statementsBefore + statement;

    const SendFaultRun result = sendWith(*copy, at, rule);

    EXPECT_EQ(result.struck, at.text);
    const SendLeaves left = sendLeaves(run, request, fault);
    expectTold(result, left.told, left.step);
    ChainState expected = stateAfterSend(run, left);
    ChainState found = readState(copy->chain);
    const ChainState whole = found;
    for (const std::string& table : run.tablesChangedBy(request))
        for (ChainState* state : {&expected, &found})
            (at.server == kBackOffice ? state->backOffice : state->tills[at.server - kFirstTill]).erase(table);
    EXPECT_EQ(difference(expected, found), "");
    expectNextSendsMakeGood(stage, *copy, whole);
}

}  // namespace torvik::test
