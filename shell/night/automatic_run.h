// The shell's side of the automatic run: arming it, and what comes between the steps of the night's job: a log folder
// of its own, the accumulation after the fetch, and the logs saved and mailed at the end. The window owns it; the job
// itself is the engine's. See docs/engine.md.
#pragma once

#include <QString>
#include <functional>

#include "shell/night/accumulation.h"

namespace torvik {

class BoundSettings;
class LogPaneView;
class TTorvikPos;
class TfrmSyncPreferences;

class AutomaticRun {
public:
    struct Panes {
        const LogPaneView& log;
        const LogPaneView& errors;
    };

    // Joins the engine's callbacks. folder: the application folder, with a separator at its end. All must outlive it.
    AutomaticRun(TTorvikPos& engine, const BoundSettings& settings, const TfrmSyncPreferences& preferences, Panes panes,
                 const QString& folder);
    ~AutomaticRun();
    AutomaticRun(const AutomaticRun&) = delete;
    AutomaticRun& operator=(const AutomaticRun&) = delete;

    // Armed or disarmed: the engine takes the time and all settings, and may accumulate again.
    void arm(bool on);
    // Accumulates if the operator has chosen so; a failure is logged as an error and goes no further.
    void accumulateIfWanted();

    int mailPort = 25;
    // The night's job has begun, and ended.
    std::function<void(bool running)> onRunning;

private:
    void onAutoStart();
    void onAutoReceiveDataDone();
    void onAutoStartDone();
    void saveLogs(const QString& folder) const;
    void mailLogs();

    TTorvikPos& engine_;
    const BoundSettings& settings_;
    const TfrmSyncPreferences& preferences_;
    Panes panes_;
    Accumulation accumulation_;
    QString folder_;
    QString LogRootFolder;
    QString CurrentLogFolder;  // of the night
};

}  // namespace torvik
