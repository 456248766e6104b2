// How the window comes about, in the order that its parts depend on each other, and how it ends.
#include "shell/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QProgressBar>
#include <QScreen>
#include <QScrollArea>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/db/udl.h"
#include "engine/roster/avdeling.h"
#include "fleet/health/backup_age.h"
#include "inbound/fetch_till.h"
#include "inbound/stock_counts/stock_count_run.h"
#include "logging/ini_file.h"
#include "logging/logger.h"
#include "outbound/reset/till_reset.h"
#include "outbound/run/send_run.h"
#include "outbound/series/number_series.h"
#include "shell/commands/command.h"
#include "shell/commands/command_bar.h"
#include "shell/commands/command_runner.h"
#include "shell/dialogs/sync_preferences.h"
#include "shell/log/log_pane_view.h"
#include "shell/look/icons.h"
#include "shell/main_threads.h"
#include "shell/night/automatic_run.h"
#include "shell/results/health_view.h"
#include "shell/results/script_results.h"
#include "shell/server_wait.h"
#include "shell/settings/bound_settings.h"
#include "shell/settings/settings_panel.h"
#include "shell/settings/settings_store.h"
#include "shell/status/status_view.h"
#include "shell/till_list.h"
#include "shell/window_layout.h"

namespace torvik {

namespace {

enum Pane { kStatusPane, kLogPane, kErrorLogPane };

constexpr QSize kSize(1400, 860);
constexpr int kStatusBarMargin = 6;
constexpr int kDtsLevel = 91;  // databases below this compatibility level can run DTS

constexpr char kCompatibilityLevel[] = "select compatibility_level from sys.databases where name=db_name()";

constexpr int kTitleHeight = 32;

QWidget* titled(const QString& title, QWidget* content) {
    auto* panel = new QWidget;
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(4, 4, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(new QLabel(title));
    layout->addWidget(content);
    return panel;
}

const QString kLogNote =
    QStringLiteral("Denne loggen viser alle hendelser. For å se direkte feil, så må du se på 'Feil logg' fanen.");
const QString kErrorLogNote =
    QStringLiteral("Denne feil loggen viser alle feil i forbindelse med innhenting, eller utsending.");

}  // namespace

MainWindow::MainWindow(const QString& folder, SettingsStore& store, const ShowMessage& showMessage)
    : folder_(folder), store_(store) {
    setObjectName(QStringLiteral("MainWindow"));
    setWindowTitle(QStringLiteral("TorvikPosSync"));
    setWindowIcon(applicationIcon());
    createEngine();
    createPanes();
    createCommands();
    createStatusBar();
    readDataLink(showMessage);
    preferences_->settings().apply(kAtStart);
    settings_->apply(kAtStart);
    connectBackOffice();
    serverWait_ =
        std::make_unique<ServerWait>(commands_->cancel(), commands_->cancelButton(), [this] { torvikPos_->Abandon(); });
    createTrayIcon();
    layout_ = new WindowLayout(store_, *this, *statusView_);
    if (!layout_->restore()) resize(kSize.boundedTo(screen()->availableSize()));
}

// The panes look at the engine's tables and the engine writes to the panes: neither is there for the other any more.
MainWindow::~MainWindow() {
    delete layout_;
    torvikPos_->Log = nullptr;
    torvikPos_->ErrorLog = nullptr;
    torvikPos_->OnProgress = nullptr;
    torvikPos_->OnTimerException = nullptr;
    torvikPos_->OnAskOperator = nullptr;
    torvikPos_->OnAskText = nullptr;
    torvikPos_->OnTellOperator = nullptr;
    torvikPos_->OnIsAttended = nullptr;
    delete takeCentralWidget();
}

void MainWindow::createEngine() {
    torvikPos_ = std::make_unique<TTorvikPos>();
    TTorvikPos& engine = *torvikPos_;
    engine.SourceConnection = &msConnSource;
    engine.SetTargetConnection(&msConnTarget);
    engine.IncludeGiftVoucherOnOppgjor = true;
    engine.FlagAsSentAfterUpdate = false;
    engine.SourceAuthMethod = amTrusted;
    engine.Cancelled = false;

    const bool singleBackOffice = QFileInfo::exists(folder_ + QStringLiteral("backoffice"));
    engine.IsEnterprise = !singleBackOffice;
    setWindowTitle(windowTitle() + (singleBackOffice ? QStringLiteral(" BackOffice") : QStringLiteral(" Enterprise")));

    engine.Avdeling->SetButikktyper(
        IniFile(folder_ + QStringLiteral("TorvikPosSync.ini")).value("Filter", "Butikktyper"));
    engine.IncludeDTS_TorvikPOS = true;

    const QString notes = folder_ + QStringLiteral("Notater");
    joinFetching(engine, {.DaysSinceLastBackup = [](TOppgjor& till) { return DaysSinceLastBackup(till.Visit()); },
                          .NoteFolder = notes,
                          .DecidePair = [this](const PairQuestion& question) { return decidePair(question); }});
    joinStockCounts(engine, notes);
    joinSending(engine);
    joinNumberSeries(engine);
    joinReset(engine);
    threads_ = std::make_unique<MainThreads>(engine, *this);
    Ask = dialogQuestions(*this, msConnTarget);
}

// At night nobody answers, and the night must not wait for it: the till is refused and told.
PairDecision MainWindow::decidePair(const PairQuestion& question) {
    return !torvikPos_->OnIsAttended() || !Ask.DecidePair ? PairDecision::Refuse : Ask.DecidePair(question);
}

void MainWindow::createPanes() {
    TTorvikPos& engine = *torvikPos_;
    log_ = new LogPaneView(kLogNote);
    errorLog_ = new LogPaneView(kErrorLogNote);
    statusView_ = new StatusView(*engine.ffraOppgjorStatus);
    statusView_->setObjectName(QStringLiteral("statusView"));
    engine.Log = log_;
    engine.ErrorLog = errorLog_;
    engine.StatusParent = statusView_;

    panes_ = new QTabWidget(this);
    panes_->setObjectName(QStringLiteral("panes"));
    panes_->addTab(statusView_, QStringLiteral("Status"));
    panes_->addTab(log_, QStringLiteral("Logg"));
    panes_->addTab(errorLog_, QStringLiteral("Feil logg"));
    createResultPanes();
    // An empty error pane's caption becomes "Logg" too.
    connect(log_, &LogPaneView::lineCountChanged, this,
            [this](int n) { countLines(kLogPane, QStringLiteral("Logg"), n); });
    connect(errorLog_, &LogPaneView::lineCountChanged, this,
            [this](int n) { countLines(kErrorLogPane, QStringLiteral("Feillogg"), n); });

    auto* whole = new QSplitter(Qt::Horizontal);
    whole->setObjectName(QStringLiteral("whole"));
    whole->addWidget(createLeftSide());
    whole->addWidget(panes_);
    whole->setStretchFactor(0, 0);
    whole->setStretchFactor(1, 1);
    whole->setChildrenCollapsible(false);
    setCentralWidget(whole);
}

// Their commands fill them.
void MainWindow::createResultPanes() {
    const auto guarded = [this](const std::function<void()>& body) { runner_->guarded(body); };
    const auto tell = [this](const QString& text) { Ask.ShowMessage(text); };
    const auto openFile = [this](const QString& file) { Ask.OpenFile(file); };
    const auto askTextFile = [this] {
        return Ask
            .SaveFile(QStringLiteral("Lagre tekstfil som..."), QStringLiteral("Tekst filer (*.txt);;Alle files (*.*)"),
                      QStringLiteral("txt"))
            .value_or(QString());
    };
    const auto askSpreadsheet = [this] {
        return Ask
            .SaveFile(QStringLiteral("Eksporter til regneark"), QStringLiteral("Regneark (*.xls)"),
                      QStringLiteral("xls"))
            .value_or(QString());
    };
    scriptResults_ = new ScriptResults({folder_, openFile, tell, askTextFile, guarded});
    health_ = new HealthView({askSpreadsheet, tell, guarded});
    panes_->addTab(scriptResults_, QStringLiteral("Sql script resultat"));
    panes_->addTab(health_, QStringLiteral("Helsetilstand"));
}

// The tills over the settings. What a tall window has over is the list's, and a low one takes it from there first.
QWidget* MainWindow::createLeftSide() {
    tillList_ = new TillList;
    settingsPanel_ =
        new SettingsPanel(torvikPos_->IsEnterprise, torvikPos_->Seam.now().toString(QStringLiteral("yyyyMM")));
    auto* scroll = new QScrollArea;
    scroll->setWidget(settingsPanel_);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setMinimumWidth(settingsPanel_->sizeHint().width() + 24);
    auto* left = new QSplitter(Qt::Vertical);
    left->setObjectName(QStringLiteral("left"));
    left->addWidget(titled(QStringLiteral("Kasser"), tillList_));
    left->addWidget(titled(QStringLiteral("Oppsett"), scroll));
    left->setStretchFactor(0, 1);
    left->setStretchFactor(1, 0);
    left->setChildrenCollapsible(false);
    left->setSizes({0, settingsPanel_->sizeHint().height() + kTitleHeight});
    return left;
}

// Commands come first: one of them, "Vis i systemstatus felt", is the control of a setting.
void MainWindow::createCommands() {
    TTorvikPos& engine = *torvikPos_;
    runner_ = std::make_unique<CommandRunner>(engine, [this](const std::exception& error) { AppException(error); });
    commands_ =
        std::make_unique<CommandBar>(*this, engine, [this](const CommandRow& row) { runner_->run(row, *context_); });
    commands_->setCancelEnabled(false);
    connect(runner_.get(), &CommandRunner::runningChanged, this, &MainWindow::showRunning);
    engine.OnTimerException = [this](const std::exception_ptr& failure) {
        runner_->guarded([&failure] { std::rethrow_exception(failure); });
    };

    engine.OnAskOperator = [this](const QString& text) { return Ask.Confirm(text); };
    engine.OnAskText = [this](const QString& caption, const QString& prompt, const QString& first) {
        return Ask.Text(caption, prompt, first);
    };
    engine.OnTellOperator = [this](const QString& text) { Ask.ShowMessage(text); };
    engine.OnIsAttended = [this] { return !torvikPos_->TimerBusy(); };

    settings_ = std::make_unique<BoundSettings>(*this, windowSettings(), engine);
    preferences_ = new TfrmSyncPreferences(store_, engine, this);
    connect(preferences_, &TfrmSyncPreferences::savingFailed, this,
            [this] { torvikPos_->AddLog(QStringLiteral("Klarte ikke å lagre innstillingene"), true); });
    automaticRun_ = std::make_unique<AutomaticRun>(engine, *settings_, *preferences_,
                                                   AutomaticRun::Panes{*log_, *errorLog_}, folder_);
    // A night can pass while a command asks its first question, and ends within it.
    automaticRun_->onRunning = [this](bool running) { showRunning(running || runner_->running()); };
    connect(settingsPanel_, &SettingsPanel::autoStartChanged, this, [this](bool on) { automaticRun_->arm(on); });
    context_.reset(new CommandContext{*this, engine, msConnTarget, folder_, store_, *settings_, *preferences_,
                                      *automaticRun_, Ask, [this] { resetProgress(); }, *scriptResults_, *health_,
                                      [this](QWidget& pane) { panes_->setCurrentWidget(&pane); }});
}

// Arming starts the clock and runs the roster's query again. Under a walk that would begin at the first till anew, and
// a tick would take the back office's session from under it.
void MainWindow::showRunning(bool running) {
    commands_->setCancelEnabled(running);
    settingsPanel_->setArmingEnabled(!running);
}

void MainWindow::countLines(int tab, const QString& caption, int lines) {
    panes_->setTabText(tab, lines > 0 ? QStringLiteral("%1 (%2)").arg(caption).arg(lines) : QStringLiteral("Logg"));
}

void MainWindow::createStatusBar() {
    auto* version = new QLabel(QStringLiteral("Versjon %1").arg(QApplication::applicationVersion()));
    version->setObjectName(QStringLiteral("version"));
    progressText_ = new QLabel;
    progressText_->setObjectName(QStringLiteral("progressText"));
    progressBar_ = new QProgressBar;
    progressBar_->setRange(0, 100);
    progressBar_->setMaximumWidth(220);
    progressBar_->hide();  // until there is progress to show
    statusBar()->setContentsMargins(kStatusBarMargin, 0, kStatusBarMargin, 0);
    statusBar()->addWidget(version);
    statusBar()->addWidget(progressText_, 1);
    statusBar()->addPermanentWidget(progressBar_);
    torvikPos_->OnProgress = [this](QObject*, int percent, const QString& text) {
        torvikPos_->Seam.pumpMessages();
        progressText_->setText(text);
        progressBar_->setValue(percent);
        progressBar_->show();
        torvikPos_->Seam.pumpMessages();
    };
    torvikPos_->OnDtsProgress = [this](QObject*, const QString& task, const QString& message, int) {
        progressText_->setText(QStringLiteral("%1:   %2").arg(task, message));
    };
}

// What the command before has done is no progress of this one's.
void MainWindow::resetProgress() {
    progressBar_->reset();
    progressBar_->hide();
    progressText_->clear();
}

// A missing file is told at once; reading it raises all the same, and that ends the start.
void MainWindow::readDataLink(const ShowMessage& showMessage) {
    const QString udl = folder_ + QStringLiteral("Torvik.UDL");
    if (!QFileInfo::exists(udl))
        showMessage(QStringLiteral("Filen %1 finnes ikke. Kan ikke koble til databasen").arg(udl));
    msConnTarget.SetConnectString(db::ReadUdlFile(udl));
}

void MainWindow::connectBackOffice() {
    msConnTarget.Open();

    db::Query level(&msConnTarget);
    level.SQL = QStringList{QString::fromUtf8(kCompatibilityLevel)};
    level.Open();
    const bool bIsDTSCompatible = level.IsEmpty() || level.Fields(0).AsInteger() < kDtsLevel;
    settingsPanel_->setDtsCompatible(bIsDTSCompatible);

    const QString where = torvikPos_->GetTargetServerAndDatabaseName();
    if (where.isEmpty()) throw EngineError(QStringLiteral("Klarer ikke Ã¥ koble til server"));
    setWindowTitle(QStringLiteral("%1 %2").arg(windowTitle(), where));
    runner_->guarded(
        [this] { tillList_->load(msConnTarget); });  // for the eye only: its failure does not stop the start
}

// Also where there is no tray yet: at a log-on the tray may come later than the program, and the icon then joins it.
void MainWindow::createTrayIcon() {
    trayIcon_ = new QSystemTrayIcon(applicationIcon(), this);
    trayIcon_->setToolTip(QStringLiteral("TorvikPosSync"));
    connect(trayIcon_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger) setVisible(!isVisible());
    });
    trayIcon_->show();
}

// The settings are read when the window is first shown; until then the automatic run is not armed.
void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (std::exchange(settingsRead_, true)) return;
    settings_->read(store_);
    settings_->apply(kAtStart);
}

// Workers that run are only warned of: they end with the window. A run that is under way is cancelled first, its
// statement too, and the window closes once it has ended. Each run of a night clears the cancel as it begins, so it is
// asked for at every look.
void MainWindow::closeEvent(QCloseEvent* event) {
    constexpr int kLookAgainMs = 100;
    const bool first = !std::exchange(closing_, true);
    if (const QString warning = threads_->ClosingWarning(); first && !warning.isEmpty()) threads_->ShowMessage(warning);
    if (runner_->busy()) {
        if (first) torvikPos_->SetAutoCommunicate(false);
        torvikPos_->Abandon();
        if (!torvikPos_->CancelRequest()) torvikPos_->SetCancelRequest(true);
        if (QWidget* dialog = QApplication::activeModalWidget()) dialog->close();  // a log-off waits for no answer
        QTimer::singleShot(kLookAgainMs, this, [this] { close(); });
        event->ignore();
        return;
    }
    layout_->keep();
    savePane(*log_, "TorvikPos.log");
    savePane(*errorLog_, "TorvikPosError.log");
    if (trayIcon_) trayIcon_->hide();
    event->accept();
    QApplication::quit();
}

// The panes are saved at once: what does not end in time is ended where it stands. The run is cancelled here, since the
// close of a window that waits for a server comes only after the wait.
void MainWindow::terminate() {
    closing_ = true;
    savePane(*log_, "TorvikPos.log");
    savePane(*errorLog_, "TorvikPosError.log");
    torvikPos_->SetAutoCommunicate(false);
    torvikPos_->Abandon();
    if (runner_->busy()) torvikPos_->SetCancelRequest(true);
    while (QWidget* menu = QApplication::activePopupWidget()) {
        menu->close();
        if (QApplication::activePopupWidget() == menu) break;
    }
    while (QWidget* dialog = QApplication::activeModalWidget()) {
        dialog->close();
        if (QApplication::activeModalWidget() == dialog) break;
    }
    close();
}

// A pane that cannot be saved does not keep the window open.
void MainWindow::savePane(const LogPaneView& pane, const char* name) {
    const QString file = folder_ + QString::fromUtf8(name);
    try {
        pane.SaveLines(file);
    } catch (const std::exception& e) {
        GlobalLogger().LogError(e, QStringLiteral("Klarte ikke å lagre {Fil}"), {file});
    }
}

void MainWindow::AppException(const std::exception& error) {
    for (LogPaneView* pane : {log_, errorLog_}) pane->SetColor(PaneColor::Red);
    torvikPos_->AddLog(ErrorText(error), true);
    for (LogPaneView* pane : {log_, errorLog_}) pane->SetColor(PaneColor::Normal);
}

}  // namespace torvik
