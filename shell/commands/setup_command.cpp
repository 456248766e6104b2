// The command "Kontroller oppsett".
#include <QEventLoop>

#include "engine/base/abort.h"
#include "engine/torvik_pos.h"
#include "shell/commands/command.h"
#include "shell/dialogs/sync_preferences.h"
#include "shell/night/automatic_run.h"
#include "shell/settings/bound_settings.h"
#include "shell/setup/setup_check.h"
#include "shell/setup/setup_report.h"

#include <QMainWindow>

namespace torvik {

// The dialog shows the rows as they are found, and stays until the operator closes it. Closing it earlier is a cancel.
void actiCheckSetup(CommandContext& context) {
    TTorvikPos& engine = context.engine;
    const auto preference = [&](const char* control) { return context.preferences.settings().value(control); };
    SetupReport report(&context.window);
    QObject::connect(&report, &SetupReport::abandoned, &report, [&engine] { engine.SetCancelRequest(true); });
    report.setModal(true);
    report.show();
    checkSetup({.engine = engine,
                .folder = context.folder,
                .startTime = context.settings.value("edStartTime").toTime(),
                .sendsLogs = preference("cbActive").toBool(),
                .mailServer = preference("edServer").toString(),
                .mailPort = context.automaticRun.mailPort},
               [&report](const CheckResult& result) { report.add(result); });
    report.finish();
    report.exec();
}

}  // namespace torvik
