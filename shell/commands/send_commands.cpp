// The commands that send to the tills.
#include "engine/status/oppgjor_status.h"
#include "engine/torvik_pos.h"
#include "shell/commands/command.h"
#include "shell/commands/questions.h"
#include "shell/dialogs/sync_preferences.h"
#include "shell/settings/bound_settings.h"

namespace torvik {

void actiSendVarer(CommandContext& context) {
    if (context.settings.value("cbUseThreads").toBool()) {
        // The letters are what the operators have always seen.
        context.ask.ShowMessage(QStringLiteral("TrÃ¥der er ikke lenger stÃ¸ttet grunnet bortfall av stÃ¸tte for DTS"));
        return;
    }
    if (!ApplyKasseCollection(context, kOldTills)) return;
    TTorvikPos& engine = context.engine;
    engine.ffraOppgjorStatus->Clear();
    context.preferences.settings().apply(kAtCommand);
    context.settings.apply(kAtCommand);
    engine.Tasks = TTasks{taSend};
    engine.ExecuteDTSToPos();
}

}  // namespace torvik
