// The commands that ask or tell the tills something by SQL: scripts, messages, the health check.
#include <QScopeGuard>

#include "engine/status/oppgjor_status.h"
#include "engine/torvik_pos.h"
#include "fleet/health/health_check.h"
#include "fleet/messages/message_script.h"
#include "fleet/scripts/sql_script_run.h"
#include "shell/commands/busy_mark.h"
#include "shell/commands/command.h"
#include "shell/commands/questions.h"
#include "shell/results/health_view.h"
#include "shell/results/script_results.h"

namespace torvik {

namespace {

// As the operator knows them.
QStringList chosenTills(const TTorvikPos& engine) {
    const TKasseCollection& chosen = *engine.Avdeling->KasseCollection();
    QStringList tills;
    for (int i = 0; i < chosen.Count(); ++i) {
        const TKasseItem& till = chosen[i];
        const QString name = till.AvdNavn.trimmed();
        tills << QStringLiteral("avd %1 kasse %2%3")
                     .arg(till.Avdnr.trimmed(), till.Kassenr.trimmed(),
                          name.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(name));
    }
    return tills;
}

}  // namespace

void actiRunSQL(CommandContext& context) {
    if (!ApplyKasseCollection(context, kAllTills)) return;
    TTorvikPos& engine = context.engine;
    const auto script = context.ask.SqlScript(context.store, context.folder, chosenTills(engine));
    if (!script) return;
    ScriptResults& results = context.results;
    results.clear();
    engine.OnSqlScriptReturnDataEvent = [&](QObject*, db::Query& Data, db::Query& Roster) {
        results.OnSqlScriptReturnData(Data, Roster);
        engine.Seam.pumpMessages();
    };
    const auto noReceiver = qScopeGuard([&engine] { engine.OnSqlScriptReturnDataEvent = nullptr; });
    context.bringToFront(results);
    const BusyMark busy(context.window);
    engine.ffraOppgjorStatus->Clear();
    ExecuteSQLScript(engine.Parts(), script->lines, script->returnsData, false);
    results.showSummary();
}

void actiSendMessage(CommandContext& context) {
    if (!ApplyKasseCollection(context, kAllTills)) return;
    const auto message = context.ask.Message(context.folder);
    if (!message) return;
    ExecuteSQLScript(context.engine.Parts(), messageScript(*message), false, true);
}

void actiHealthCheck(CommandContext& context) {
    if (!ApplyKasseCollection(context, kAllTills, OfficeSession::Kept)) return;
    context.bringToFront(context.health);
    const BusyMark busy(context.window);
    context.engine.ffraOppgjorStatus->Clear();
    context.health.showHealth(*CheckPosHealthStatus(context.engine.Parts()));
}

}  // namespace torvik
