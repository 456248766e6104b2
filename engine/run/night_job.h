// The automatic run: at the chosen minute fetch from all tills, wait for the back office's daily job if the two are
// synchronised, send to all tills, and fetch stock counts; or, where HelpFetching is set, help another copy's night to
// fetch (helping.h). The engine's timer ticks it every 30 seconds.
#pragma once

#include <exception>
#include <memory>

class QObject;

namespace torvik {

class NightShare;
class OperatorLog;
class RunParts;
struct EngineEvents;
struct RunOptions;
struct Seams;

class NightJob {
public:
    explicit NightJob(RunParts& parts);

    // One tick. A tick that comes while one is served, because messages are pumped, does nothing.
    void DoOnTimer();
    // The same for an event loop, which must not see an exception.
    void Tick() noexcept;
    [[nodiscard]] bool TimerBusy() const { return FTimerBusy; }

private:
    void failed(const std::exception_ptr& failure);
    void listAllTills();
    void runNight();
    void helpNight();
    void fetchWithHelpers();
    [[nodiscard]] std::unique_ptr<NightShare> beginSharing();
    void fetchWithRetries(NightShare* share);
    void sendAfterBackOffice();
    void waitForSendingTime();
    void endNight();

    RunParts& parts_;
    const Seams& seam_;
    RunOptions& options_;
    const EngineEvents& events_;
    QObject* const sender_;
    OperatorLog& log_;
    bool FTimerBusy = false;
};

}  // namespace torvik
