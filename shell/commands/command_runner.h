// Runs commands, one run at a time: a run pumps messages, so another command can come in the middle of one, and would
// take the run's sessions and roster away. What a command raises goes to onError; a silent abort has been logged where
// it arose. Owned by the window, which asks it whether it may close.
#pragma once

#include <QObject>
#include <functional>

namespace torvik {

class TTorvikPos;
struct CommandContext;
struct CommandRow;

class CommandRunner : public QObject {
    Q_OBJECT

public:
    // The engine must outlive it.
    CommandRunner(TTorvikPos& engine, std::function<void(const std::exception&)> onError);

    void run(const CommandRow& row, CommandContext& context);
    // Does the body as a plain command is done.
    void guarded(const std::function<void()>& body);
    // A command, or the automatic run, is under way.
    [[nodiscard]] bool busy() const;
    // Whether a run is at work that a command has begun.
    [[nodiscard]] bool running() const { return running_; }

Q_SIGNALS:
    // A run of the window begins and ends; told again at its end however it ended.
    void runningChanged(bool running);

private:
    void runAlone(const CommandRow& row, CommandContext& context);

    TTorvikPos& engine_;
    std::function<void(const std::exception&)> onError_;
    int commands_ = 0;  // plain ones too: a dialog of theirs may stand open
    bool running_ = false;
};

}  // namespace torvik
