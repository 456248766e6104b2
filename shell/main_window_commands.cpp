// The window's commands, and the shell's side of the automatic run.
#include <QAction>
#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QToolBar>

#include "engine/base/abort.h"
#include "engine/roster/avdeling.h"
#include "engine/status/oppgjor_status.h"
#include "logging/program_file.h"
#include "shell/application_folder.h"
#include "shell/icons.h"
#include "shell/log_pane_view.h"
#include "shell/main_window.h"
#include "shell/settings.h"
#include "shell/settings_panel.h"

namespace torvik {

void MainWindow::createCommands() {
    const auto action = [this](const char* name, const QString& caption) {
        auto* made = new QAction(caption, this);
        made->setObjectName(QString::fromUtf8(name));
        return made;
    };
    fetchAction_ = action("actiOppgjorManually", QStringLiteral("Ta oppgjør manuelt"));
    fetchAction_->setIcon(fetchIcon());
    cancelAction_ = action("actiCancel", QStringLiteral("Avbryt"));
    cancelAction_->setIcon(cancelIcon());
    cancelAction_->setEnabled(false);
    trayAction_ = action("actiSystemTray", QStringLiteral("Vis i systemstatus felt (System Tray)"));
    trayAction_->setCheckable(true);
    auto* save = action("actiSaveRegistry", QStringLiteral("Lagre standard innstillinger"));
    auto* exit = action("FileExit1", QStringLiteral("&Avslutt"));
    auto* help = action("HelpContents1", QStringLiteral("&Innhold"));
    auto* about = action("actiAbout", QStringLiteral("Om TorvikPosSync"));

    QMenu* file = menuBar()->addMenu(QStringLiteral("&Fil"));
    file->addActions({save, trayAction_});
    file->addSeparator();
    file->addAction(exit);
    menuBar()->addMenu(QStringLiteral("TorvikPosSync"))->addAction(fetchAction_);
    menuBar()->addMenu(QStringLiteral("&Hjelp"))->addActions({help, about});
    QToolBar* bar = addToolBar(QStringLiteral("Manuell:"));
    bar->setObjectName(QStringLiteral("commands"));
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->setMovable(false);
    bar->addActions({fetchAction_, cancelAction_});

    connect(fetchAction_, &QAction::triggered, this, [this] { command([this] { actiOppgjorManually(); }); });
    connect(cancelAction_, &QAction::triggered, this, [this] { torvikPos_->SetCancelRequest(true); });
    connect(exit, &QAction::triggered, this, &QWidget::close);
    connect(save, &QAction::triggered, this, [this] {
        settings_->write(store_);
        store_.write("SystemTray", trayAction_->isChecked());
        if (!store_.save()) torvikPos_->AddLog(QStringLiteral("Klarte ikke å lagre innstillingene"), true);
    });
    connect(help, &QAction::triggered, this, [this] { command([this] { helpContents(); }); });
    connect(about, &QAction::triggered, this, &MainWindow::actiAbout);
}

void MainWindow::helpContents() {
    const QString file = helpFile(programFile());
    if (!QFileInfo::exists(file)) throw EngineError(QStringLiteral("Finner ikke filen %1").arg(file));
    OpenFile(file);
}

void MainWindow::actiAbout() {
    QMessageBox::about(this, QStringLiteral("Om TorvikPosSync"),
                       QStringLiteral("TorvikPosSync utveksler data mellom Torvik BackOffice og TorvikPOS "
                                      "kasseapparater.\n\nVersjon %1")
                           .arg(QApplication::applicationVersion()));
}

void MainWindow::command(const std::function<void()>& body) {
    struct Count {
        explicit Count(int& count) : count_(count) { ++count_; }
        ~Count() { --count_; }
        int& count_;
    } const count(commandsRunning_);
    try {
        body();
    } catch (const EAbort&) {
        // a silent abort has been logged where it arose
    } catch (const std::exception& e) {
        AppException(e);
    }
}

bool MainWindow::running() const {
    return commandsRunning_ > 0 || torvikPos_->TimerBusy();
}

// The common opening of a command: disarm, start from a fresh session, and ask for the tills. A run pumps messages, so
// a command can come in the middle of one; it would take the run's sessions and roster away.
bool MainWindow::ApplyKasseCollection() {
    if (commandsRunning_ > 1 || torvikPos_->TimerBusy())
        throw EngineError(QStringLiteral("Det er allerede en kjøring i gang"));
    settings_->setAutoStart(false);
    msConnTarget.Close();
    progressBar_->reset();
    msConnTarget.Open();
    auto chosen = std::make_shared<TKasseCollection>();
    if (!SelectTills(*chosen)) return false;
    if (chosen->Count() == 0) throw EngineError(QStringLiteral("Det er ikke valgt noen kasser"));
    torvikPos_->Avdeling->ClearFilter();
    torvikPos_->Avdeling->SetKasseCollection(std::move(chosen));
    return true;
}

void MainWindow::actiOppgjorManually() {
    if (!ApplyKasseCollection()) return;
    TTorvikPos& engine = *torvikPos_;
    engine.IncludeGiftVoucherOnOppgjor = engine.IsEnterprise;
    engine.IncludeCreditCouponOnOppgjor = engine.IsEnterprise;
    settings_->apply();
    msConnTarget.Close();
    msConnTarget.SetConnectString(msConnTarget.ConnectString());
    engine.Tasks = TTasks{taHent};
    cancelAction_->setEnabled(true);
    engine.SetAutoCommunicate(false);
    engine.ffraOppgjorStatus->Clear();

    struct Restore {
        MainWindow& window;
        ~Restore() {
            window.torvikPos_->SetAutoCommunicate(window.settings_->autoStart());
            window.cancelAction_->setEnabled(false);
        }
    } const restore{*this};
    engine.ExecuteOppgjor();
}

void MainWindow::joinAutomaticRun() {
    torvikPos_->OnAutoStart = [this](QObject*) { onAutoStart(); };
    torvikPos_->OnAutoStartDone = [this](QObject*) { onAutoStartDone(); };
}

// Each night has a folder of its own.
void MainWindow::onAutoStart() {
    CurrentLogFolder =
        LogRootFolder + torvikPos_->Seam.now().toString(QStringLiteral("yyyyMMddHHmmss")) + QLatin1Char('/');
    if (!QDir().mkpath(CurrentLogFolder))
        throw EngineError(QStringLiteral("Klarte ikke å lage mappen %1").arg(CurrentLogFolder));
}

void MainWindow::onAutoStartDone() {
    torvikPos_->AddLog(QStringLiteral("OnAutoStartDone"));
    log_->SaveRichText(CurrentLogFolder + QStringLiteral("TorvikPos.rtf"));
    errorLog_->SaveRichText(CurrentLogFolder + QStringLiteral("TorvikPosError.rtf"));
}

}  // namespace torvik
