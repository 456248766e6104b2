// The one window of the program: a thin shell over the engine. It owns the two sessions, the engine and the panes; each
// command asks for what it needs, chooses tills and calls one operation of the engine.
#pragma once

#include <QMainWindow>
#include <QSystemTrayIcon>
#include <functional>
#include <memory>

#include "engine/db/session.h"
#include "engine/torvik_pos.h"
#include "shell/start_message.h"

class QAction;
class QLabel;
class QProgressBar;
class QTabWidget;

namespace torvik {

class LogPaneView;
class MainThreads;
class SettingsPanel;
class SettingsStore;
class StatusView;
class TillList;

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
    // Fills the collection with the tills of a command; false when the operator thinks better of it. The dialog, unless
    // replaced.
    std::function<bool(TKasseCollection&)> SelectTills;
    // Opens a file with the program that the system has for it.
    std::function<void(const QString& file)> OpenFile;

    // What the message loop's handler of exceptions calls: the text goes to both panes, in red.
    void AppException(const std::exception& error);

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void createEngine();
    void createPanes();
    [[nodiscard]] QWidget* createLeftSide();
    void createCommands();
    void createStatusBar();
    void createTrayIcon();
    void readDataLink(const ShowMessage& showMessage);
    void loadPreferences();
    void connectBackOffice();
    void joinAutomaticRun();
    void readSettings();
    void countLines(int tab, const QString& caption, int lines);

    // Runs a command's body: what it raises goes to AppException.
    void command(const std::function<void()>& body);
    [[nodiscard]] bool running() const;  // a command or the automatic run is under way
    [[nodiscard]] bool ApplyKasseCollection();
    void actiOppgjorManually();
    void actiAbout();
    void helpContents();
    void onAutoStart();
    void onAutoStartDone();
    void savePane(const LogPaneView& pane, const char* name);

    QString folder_;
    QString LogRootFolder;
    QString CurrentLogFolder;
    SettingsStore& store_;
    bool bIsDTSCompatible = false;
    bool settingsRead_ = false;
    bool closing_ = false;
    int commandsRunning_ = 0;

    db::Session msConnTarget;
    db::Session msConnSource;
    std::unique_ptr<TTorvikPos> torvikPos_;
    std::unique_ptr<MainThreads> threads_;  // ends its workers before the engine goes

    QTabWidget* panes_ = nullptr;
    StatusView* statusView_ = nullptr;
    LogPaneView* log_ = nullptr;
    LogPaneView* errorLog_ = nullptr;
    TillList* tillList_ = nullptr;
    SettingsPanel* settings_ = nullptr;
    QAction* fetchAction_ = nullptr;
    QAction* cancelAction_ = nullptr;
    QAction* trayAction_ = nullptr;
    QLabel* progressText_ = nullptr;
    QProgressBar* progressBar_ = nullptr;
    QSystemTrayIcon* trayIcon_ = nullptr;
};

}  // namespace torvik
