// The commands that set tills in order: their number series, and the reset.
#include "engine/status/oppgjor_status.h"
#include "engine/torvik_pos.h"
#include "shell/commands/command.h"
#include "shell/commands/questions.h"
#include "shell/settings/bound_settings.h"

namespace torvik {

void actiSyncNrSerie(CommandContext& context) {
    if (!ApplyKasseCollection(context, kAllTills)) return;
    context.engine.ffraOppgjorStatus->Clear();
    context.engine.UpdateLedigID();
}

void actiNullstill(CommandContext& context) {
    context.settings.set("cbAutoStart", false);
    const TInitializeItems scope = context.ask.ResetScope();
    if (scope.empty() || !ApplyKasseCollection(context, kAllTills)) return;
    context.engine.ffraOppgjorStatus->Clear();
    context.engine.InitializeItems = scope;
    context.engine.InitializeTorvikPOS(-1, {});
}

}  // namespace torvik
