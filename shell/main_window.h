// The one window of the program: a thin shell over the engine. It owns the two sessions, the engine, the panes, the
// settings and the commands, and puts them together; each of them has a class of its own. See docs/start-up.md.
#pragma once

#include <QMainWindow>
#include <QSystemTrayIcon>
#include <functional>
#include <memory>

#include "engine/db/session.h"
#include "engine/torvik_pos.h"
#include "shell/commands/questions.h"
#include "shell/start/start_message.h"

class QLabel;
class QProgressBar;
class QTabWidget;

namespace torvik {

class AutomaticRun;
class BoundSettings;
class CommandBar;
class CommandRunner;
class HealthView;
class LogPaneView;
class MainThreads;
class ScriptResults;
class SettingsPanel;
class ServerWait;
class SettingsStore;
class StatusView;
class TfrmSyncPreferences;
class TillList;
class WindowLayout;
struct CommandContext;

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    // folder: the application folder, with a separator at its end. Connects to the back office through "Torvik.UDL";
    // raises what stops the start: the data link's and the session's own errors. showMessage tells of a missing data
    // link before that raises.
    MainWindow(const QString& folder, SettingsStore& store, const ShowMessage& showMessage = showStartMessage);
    ~MainWindow() override;

    [[nodiscard]] TTorvikPos& TorvikPos1() { return *torvikPos_; }
    [[nodiscard]] MainThreads& Threads() { return *threads_; }
    [[nodiscard]] AutomaticRun& Night() { return *automaticRun_; }
    Questions Ask;  // what commands ask the operator: dialogs, unless replaced

    // What the message loop's handler of exceptions calls: the text goes to both panes, in red.
    void AppException(const std::exception& error);
    // Closes the window for the operating system: menus and dialogs that stand open are closed, nobody is asked or told
    // anything, and a run that is under way is cancelled first.
    void terminate();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void createEngine();
    [[nodiscard]] PairDecision decidePair(const PairQuestion& question);
    void createPanes();
    void createResultPanes();
    [[nodiscard]] QWidget* createLeftSide();
    void createCommands();
    void createStatusBar();
    void resetProgress();
    void createTrayIcon();
    void readDataLink(const ShowMessage& showMessage);
    void connectBackOffice();
    void showRunning(bool running);
    void countLines(int tab, const QString& caption, int lines);
    void savePane(const LogPaneView& pane, const char* name);

    QString folder_;
    SettingsStore& store_;
    bool settingsRead_ = false;
    bool closing_ = false;

    db::Session msConnTarget;
    db::Session msConnSource;
    std::unique_ptr<TTorvikPos> torvikPos_;
    std::unique_ptr<MainThreads> threads_;  // ends its workers before the engine goes

    QTabWidget* panes_ = nullptr;
    StatusView* statusView_ = nullptr;
    LogPaneView* log_ = nullptr;
    LogPaneView* errorLog_ = nullptr;
    ScriptResults* scriptResults_ = nullptr;
    HealthView* health_ = nullptr;
    TillList* tillList_ = nullptr;
    SettingsPanel* settingsPanel_ = nullptr;
    TfrmSyncPreferences* preferences_ = nullptr;
    QLabel* progressText_ = nullptr;
    QProgressBar* progressBar_ = nullptr;
    QSystemTrayIcon* trayIcon_ = nullptr;
    WindowLayout* layout_ = nullptr;

    std::unique_ptr<CommandRunner> runner_;
    std::unique_ptr<CommandBar> commands_;
    std::unique_ptr<BoundSettings> settings_;
    std::unique_ptr<AutomaticRun> automaticRun_;
    std::unique_ptr<CommandContext> context_;
    std::unique_ptr<ServerWait> serverWait_;  // goes before the sessions do
};

}  // namespace torvik
