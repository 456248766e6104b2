// The common opening of a command.
#include "engine/base/abort.h"
#include "engine/db/session.h"
#include "engine/roster/avdeling.h"
#include "engine/torvik_pos.h"
#include "shell/commands/command.h"
#include "shell/commands/questions.h"
#include "shell/settings/bound_settings.h"

namespace torvik {

bool ApplyKasseCollection(CommandContext& context, const TSyncVersions& versions, OfficeSession office) {
    context.settings.set("cbAutoStart", false);
    if (office == OfficeSession::Fresh) context.target.Close();
    context.resetProgress();
    context.target.Open();
    auto chosen = std::make_shared<TKasseCollection>();
    if (!context.ask.SelectTills(*chosen, versions)) return false;
    if (chosen->Count() == 0) throw EngineError(QStringLiteral("Det er ikke valgt noen kasser"));
    context.engine.Avdeling->ClearFilter();
    context.engine.Avdeling->SetKasseCollection(std::move(chosen));
    return true;
}

}  // namespace torvik
