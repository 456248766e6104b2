// The commands that work on the tills' files. "FULLFÃ˜RT" is what the operators have always seen.
#include <QFile>
#include <QMainWindow>
#include <QScopeGuard>

#include "engine/base/abort.h"
#include "engine/status/oppgjor_status.h"
#include "engine/torvik_pos.h"
#include "fleet/copy/send_file.h"
#include "fleet/ini/ini_runs.h"
#include "fleet/upgrade/upgrade_run.h"
#include "shell/commands/command.h"
#include "shell/commands/questions.h"
#include "shell/fleet/ini_viewer.h"
#include "shell/results/script_results.h"

namespace torvik {

namespace {

// While it lives the share is reached by the operator's login in the place of the tills'.
class OverridingLogin {
public:
    OverridingLogin(RunOptions& options, const FileCopyAnswer& answer) : options_(options) {
        options_.OverrideSourceUserNameAndPassword = answer.overridesLogin;
        options_.OverrideSourceUserName = answer.userName;
        options_.OverrideSourcePassword = answer.password;
    }
    ~OverridingLogin() {
        options_.OverrideSourceUserNameAndPassword = false;
        options_.OverrideSourceUserName.clear();
        options_.OverrideSourcePassword.clear();
    }
    OverridingLogin(const OverridingLogin&) = delete;
    OverridingLogin& operator=(const OverridingLogin&) = delete;

private:
    RunOptions& options_;
};

void requireReadable(const QString& name) {
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        throw EngineError(QStringLiteral("Klarte ikke å lese %1: %2").arg(name, file.errorString()));
}

// What a command that copies a file is called, in its dialog and in the log.
struct CopyCommand {
    QString caption;
    QString starts;
    QString ends;
    bool deletesCopies;  // again, where only their speed is wanted
};

void copyToTills(CommandContext& context, const CopyCommand& command) {
    if (!ApplyKasseCollection(context, kAllTills, OfficeSession::Kept)) return;
    const auto answer = context.ask.FileCopy(command.caption);
    if (!answer) return;
    TTorvikPos& engine = context.engine;
    const OverridingLogin login(engine, *answer);
    if (!QFile::exists(answer->localFile))
        throw EngineError(QStringLiteral("Finner ikke filen %1").arg(answer->localFile));
    engine.AddLog(command.starts);
    engine.ffraOppgjorStatus->Clear();
    SendFile(engine.Parts(),
             {.AFileToCopy = answer->localFile,
              .AResource = answer->share,
              .TorvikPOSPath = answer->folder,
              .DeleteAfterCopy = command.deletesCopies},
             context.ask.Copy);
    engine.AddLog(command.ends);
}

}  // namespace

void actiSendProgramUpdate(CommandContext& context) {
    if (!ApplyKasseCollection(context, kAllTills)) return;
    const auto file =
        context.ask.ChooseFile(QStringLiteral("TorvikPOS.zip filer (TorvikPOS.zip)"), QStringLiteral("TorvikPOS.ZIP"));
    if (!file) return;
    const auto folder = context.ask.Text(QStringLiteral("TorvikPOS katalog"),
                                         QStringLiteral("Oppgi katalogen hvor TorvikPOS er installert"),
                                         QStringLiteral("\\TorvikPOS\\"));
    if (!folder) return;
    TTorvikPos& engine = context.engine;
    engine.AddLog(QStringLiteral("STARTER OPPGRADERINGER"));
    engine.ffraOppgjorStatus->Clear();
    UpgradeTorvikPOS(engine.Parts(), *file, *folder, true, context.ask.Copy);
    engine.AddLog(QStringLiteral("FULLFÃ˜RT OPPGRADERINGER"));
}

void actiSendFile(CommandContext& context) {
    copyToTills(context, {.caption = QStringLiteral("Kopier fil til TorvikPOS"),
                          .starts = QStringLiteral("STARTER FILKOPIERING"),
                          .ends = QStringLiteral("FULLFÃ˜RT FILKOPIERING"),
                          .deletesCopies = false});
}

void actiSpeedTest(CommandContext& context) {
    copyToTills(context, {.caption = QStringLiteral("Hastighetstest"),
                          .starts = QStringLiteral("STARTER HASTIGHETSTEST"),
                          .ends = QStringLiteral("FULLFÃ˜RT HASTIGHETSTEST"),
                          .deletesCopies = true});
}

void actiSendIniFileChanges(CommandContext& context) {
    if (!ApplyKasseCollection(context, kAllTills)) return;
    const auto file = context.ask.ChooseFile(QStringLiteral("TorvikPOS_Change.ini filer (TorvikPOS_Change.ini)"),
                                             QStringLiteral("TorvikPOS_Change.ini"));
    if (!file) return;
    requireReadable(*file);
    TTorvikPos& engine = context.engine;
    engine.AddLog(QStringLiteral("STARTER OPPDATERING AV TORVIKPOS.INI"));
    engine.ffraOppgjorStatus->Clear();
    UpgradeTorvikPOSini(engine.Parts(), *file);
    engine.AddLog(QStringLiteral("FULLFÃ˜RT OPPDATERING AV TORVIKPOS.INI"));
}

// Shown while the files come in, and then until the operator has read them.
void actiViewTorvikPOSini(CommandContext& context) {
    if (!ApplyKasseCollection(context, kAllTills)) return;
    TTorvikPos& engine = context.engine;
    TfrmTorvikPosIniViewerDlg viewer(context.folder, context.ask.OpenFile, &context.window);
    viewer.Init();
    viewer.show();
    context.results.clear();
    engine.OnTorvikPosIniReceivedEvent = [&viewer](const QString& avdNr, const QString& kassenr,
                                                   const QStringList& lines, const QString& navn) {
        viewer.OnTorvikPosIni(avdNr, kassenr, lines, navn);
    };
    const auto noReceiver = qScopeGuard([&engine] { engine.OnTorvikPosIniReceivedEvent = nullptr; });
    engine.ffraOppgjorStatus->Clear();
    GetTorvikPOSIni(engine.Parts());
    viewer.hide();
    viewer.exec();
}

}  // namespace torvik
