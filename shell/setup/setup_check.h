// The check of the set-up, from the menu "Hjelp": one row after the other, each with what it found. Used by the command
// actiCheckSetup; the rows are in setup_check.cpp. docs/handbok.md has a page for the operator.
#pragma once

#include <QString>
#include <QStringList>
#include <QTime>
#include <functional>
#include <vector>

namespace torvik {

class TTorvikPos;

enum class CheckOutcome { Good, Warning, Bad };

struct CheckResult {
    QString what;
    CheckOutcome outcome = CheckOutcome::Good;
    QString detail;  // what was found, or the reason
};

// What is checked, beyond the engine with its two sessions.
struct SetupToCheck {
    TTorvikPos& engine;
    QString folder;  // the application's, with a separator at its end
    QTime startTime;
    bool sendsLogs = false;
    QString mailServer;
    int mailPort = 25;
};

// Tells each result as it is found; a failed one stops only those that need it. Closes both sessions and the roster at
// its end. Raises the silent abort when it is cancelled.
void checkSetup(const SetupToCheck& setup, const std::function<void(const CheckResult&)>& tell);

}  // namespace torvik
