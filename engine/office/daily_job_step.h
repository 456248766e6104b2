// The step of the synchronised run, which the program shares with the back office's daily job: In_DagligJobbFlagg of
// the one row of Innstillinger. The night sets it and waits for it.
#pragma once

namespace torvik {

class BackOffice;
class OperatorLog;

class DailyJobStep {
public:
    // The values of In_DagligJobbFlagg.
    enum Step { kFetching = 0, kFetched = 1, kBackOfficeDone = 2, kSent = 3 };

    DailyJobStep(BackOffice& office, OperatorLog& log) : office_(office), log_(log) {}

    // True when the back office is done and sending may begin.
    [[nodiscard]] bool ReadNextStep();
    void SetNextStep(int step);

private:
    [[nodiscard]] long long current();

    BackOffice& office_;
    OperatorLog& log_;
};

}  // namespace torvik
