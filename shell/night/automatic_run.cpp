// The engine's callbacks come on the main thread, within the job's tick.
#include "shell/night/automatic_run.h"

#include <QDir>
#include <QScopeGuard>

#include "engine/base/abort.h"
#include "engine/status/oppgjor_status.h"
#include "engine/torvik_pos.h"
#include "shell/dialogs/sync_preferences.h"
#include "shell/log/log_pane_view.h"
#include "shell/night/log_mail.h"
#include "shell/settings/bound_settings.h"

namespace torvik {

namespace {

constexpr char kLogFile[] = "TorvikPos.rtf";
constexpr char kErrorLogFile[] = "TorvikPosError.rtf";

}  // namespace

AutomaticRun::AutomaticRun(TTorvikPos& engine, const BoundSettings& settings, const TfrmSyncPreferences& preferences,
                           Panes panes, const QString& folder)
    : engine_(engine),
      settings_(settings),
      preferences_(preferences),
      panes_(panes),
      accumulation_(engine),
      folder_(folder),
      LogRootFolder(folder + QStringLiteral("Log/")) {
    QDir().mkpath(LogRootFolder);
    engine_.OnAutoStart = [this](QObject*) { onAutoStart(); };
    engine_.OnAutoReceiveDataDone = [this](QObject*) { onAutoReceiveDataDone(); };
    engine_.OnAutoStartDone = [this](QObject*) { onAutoStartDone(); };
}

AutomaticRun::~AutomaticRun() {
    engine_.OnAutoStart = nullptr;
    engine_.OnAutoReceiveDataDone = nullptr;
    engine_.OnAutoStartDone = nullptr;
}

// A disarming passes here too, so that each manual command lets the next accumulation run.
void AutomaticRun::arm(bool on) {
    engine_.StartTime = settings_.value("edStartTime").toTime();
    engine_.SetAutoCommunicate(on);
    accumulation_.HasAccumulatedData = false;
    engine_.IncludeCreditCouponOnOppgjor = engine_.IsEnterprise;
    engine_.IncludeGiftVoucherOnOppgjor = engine_.IsEnterprise;
    preferences_.settings().apply(kAtArming);
    preferences_.GetDeleteItemsWeekDays(&engine_.DeleteItemsWeekDays);  // not cleared: the same day twice does no harm
    settings_.apply(kAtArming);
}

void AutomaticRun::accumulateIfWanted() {
    if (!preferences_.settings().value("cbAutomaticAccumulate").toBool()) return;
    try {
        accumulation_.Execute(preferences_.settings().value("cbAutomaticUpdateStatistics").toBool());
    } catch (const std::exception& error) {
        // The letters are what the operators have always seen.
        engine_.AddLog(QStringLiteral("Klarte ikke Ã¥ akkumulere. Feil: %1").arg(ErrorText(error)), true);
    }
}

// A cancel that is left from the run before is not this night's. Each night has a folder of its own; one that cannot be
// made costs the night its saved logs and nothing more.
void AutomaticRun::onAutoStart() {
    engine_.SetCancelRequest(false);
    engine_.Cancelled = false;
    if (onRunning) onRunning(true);
    CurrentLogFolder = LogRootFolder + engine_.Seam.now().toString(QStringLiteral("yyyyMMddHHmmss")) + QLatin1Char('/');
    if (!QDir().mkpath(CurrentLogFolder))
        engine_.AddLog(QStringLiteral("Klarte ikke å lage mappen %1").arg(CurrentLogFolder), true);
}

void AutomaticRun::onAutoReceiveDataDone() {
    accumulateIfWanted();
    if (engine_.ffraOppgjorStatus) engine_.ffraOppgjorStatus->ExpandAll();
}

void AutomaticRun::onAutoStartDone() {
    const auto ended = qScopeGuard([this] {
        if (onRunning) onRunning(false);
    });
    engine_.AddLog(QStringLiteral("OnAutoStartDone"));
    try {
        saveLogs(CurrentLogFolder);
    } catch (const std::exception& error) {
        engine_.AddLog(ErrorText(error), true);  // the mail may still go
    }
    // A helping copy's log is its own: the night is mailed by the copy that runs it.
    if (preferences_.settings().value("cbActive").toBool() && !engine_.HelpFetching) mailLogs();
}

void AutomaticRun::saveLogs(const QString& folder) const {
    panes_.log.SaveRichText(folder + QString::fromUtf8(kLogFile));
    panes_.errors.SaveRichText(folder + QString::fromUtf8(kErrorLogFile));
}

// What fails is told after the panes have been saved: it stands in the next night's attachments. A night that was
// cancelled is mailed too; a cancel from now on is the mail's.
void AutomaticRun::mailLogs() {
    engine_.SetCancelRequest(false);
    const auto text = [this](const char* name) { return preferences_.settings().value(name).toString(); };
    try {
        LogMail mail;
        mail.server = text("edServer");
        mail.port = mailPort;
        mail.sender = text("edSenderAddress");
        mail.recipients = text("edReceipients");
        mail.subject = QStringLiteral("TorvikPosSync logg");
        mail.body = QStringLiteral("Se vedlagt logg fra siste TorvikPosSync kjÃ¸ring (%1)")
                        .arg(engine_.GetTargetServerAndDatabaseName());
        mail.date = engine_.Seam.now();
        saveLogs(folder_);
        mail.attachments = {folder_ + QString::fromUtf8(kLogFile), folder_ + QString::fromUtf8(kErrorLogFile)};
        mail.send([this] { engine_.Seam.pumpMessages(); }, [this] { return engine_.CancelRequest(); });
    } catch (const std::exception& error) {
        engine_.AddLog(ErrorText(error), true);
    }
}

}  // namespace torvik
