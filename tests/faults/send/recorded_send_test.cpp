// The recorded send is what the cases of a fault take it for: it makes requests for each step, brings something in
// each, and is the same every time.
#include <gtest/gtest.h>

#include <set>

#include "outbound/exports/send_steps.h"
#include "tests/faults/send/send_stage.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

// Step 28 starts a clock; the others only make work tables, which step 5 has made.
const std::set<int> kStepsWithoutRequest{16, 19, 22, 24, 28, 29, 38};

TEST(RecordedSend, SendsRequestsForEveryStepToBothTills) {
    const RecordedSend& run = SendStage::get().run();
    EXPECT_EQ(run.errors, QStringList());
    EXPECT_EQ(run.status, (QStringList{QStringLiteral("101/1 hentet - sendt ja: Overføring OK"),
                                       QStringLiteral("102/1 hentet - sendt ja: Overføring OK")}));
    std::set<int> steps;
    for (const SentRequest& request : run.requests)
        if (request.visit == 1 && request.part == SendPart::Steps) steps.insert(request.step);
    for (const SendStep& step : sendSteps())
        EXPECT_EQ(steps.contains(step.number), !kStepsWithoutRequest.contains(step.number)) << step.number;
    EXPECT_LT(run.beginOf(2), run.requests.size());
}

TEST(RecordedSend, ChangesEveryTableThatASendWrites) {
    const RecordedSend& run = SendStage::get().run();
    const ChainState begun = run.stateBefore(0);
    const auto changed = differingTables(begun.tills[0], run.end.tills[0]);
    for (const char* table :
         {"LEVERANDOR",      "VAREGRP",        "VARE",        "VAREALIAS",   "DELVARE",     "MERSALGVARE",
          "PRISKATEGORI",    "PRIS",           "KUNDEGRUPPE", "KUNDE",       "RABATTKORT",  "RABATTKORTKUNDE",
          "RABATTMATRISE",   "TIMEPROFIL",     "ANSATT",      "ADGANGSKORT", "GRUNN",       "VALUTA",
          "BETALINGFORM",    "INNSTILLINGER",  "PRISTILBUD",  "GAVEKORT",    "TILGODELAPP", "ORDRELINJE",
          "PRISTILBUDLINJE", "VareDeleteLogg", "GAVEKORTVARE"})
        EXPECT_NE(std::find(changed.begin(), changed.end(), table), changed.end()) << table;
    EXPECT_EQ(differingTables(begun.backOffice, run.end.backOffice),
              std::vector<std::string>{"InternKundeKasseOverfort"});
}

TEST(RecordedSend, IsTheSameEachTime) {
    const RecordedSend& first = SendStage::get().run();
    const auto copy = SendStage::get().copy();
    const RecordedSend second = recordSend(copy->chain, *sendProgram(*copy));

    ASSERT_EQ(second.requests.size(), first.requests.size());
    for (std::size_t i = 0; i < first.requests.size(); ++i) {
        ASSERT_EQ(second.requests[i].text, first.requests[i].text) << "request " << i;
        ASSERT_EQ(second.requests[i].statements.size(), first.requests[i].statements.size()) << "request " << i;
    }
    EXPECT_EQ(difference(first.end, second.end), "");
}

TEST(RecordedSend, AThirdSendChangesNothing) {
    const auto copy = SendStage::get().copy();
    for (int send = 0; send < 3; ++send) EXPECT_EQ(sendProgram(*copy)->send(), QString());
    EXPECT_EQ(difference(SendStage::get().afterTwo(), readState(copy->chain)), "");
}

}  // namespace
}  // namespace torvik::test
