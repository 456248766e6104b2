// The rows of the commands.
#include "engine/torvik_pos.h"
#include "shell/commands/command.h"
#include "shell/look/icons.h"

namespace torvik {

namespace {

using enum CommandKind;

void nothing(CommandContext&) {}  // its action's tick is all there is to it, and takes effect at the next start

bool canSend(const TTorvikPos& engine) {
    return static_cast<bool>(engine.OnExecuteDTSToPos);
}
bool canRaiseSeries(const TTorvikPos& engine) {
    return static_cast<bool>(engine.OnUpdateLedigID);
}
bool canReset(const TTorvikPos& engine) {
    return static_cast<bool>(engine.OnInitializeTorvikPOS);
}
bool canCount(const TTorvikPos& engine) {
    return static_cast<bool>(engine.OnExecuteVaretelling);
}

constexpr CommandRow kRows[] = {
    {"actiPreferences", "Innstillinger...", CommandMenu::File, Plain, actiPreferences, "Ctrl+,"},
    {"actiSaveRegistry", "Lagre standard innstillinger", CommandMenu::File, Plain, actiSaveRegistry, "Ctrl+S"},
    {.name = "actiSystemTray",
     .caption = "Vis i systemstatus felt (System Tray)",
     .menu = CommandMenu::File,
     .kind = Plain,
     .execute = nothing,
     .checkable = true},
    {.name = "FileExit1",
     .caption = "&Avslutt",
     .menu = CommandMenu::File,
     .kind = Plain,
     .execute = FileExit1,
     .shortcut = "Ctrl+Q",
     .separatedBefore = true},

    {"actiOppgjorManually", "Ta oppgjør manuelt", CommandMenu::Commands, Run, actiOppgjorManually, "F5", fetchIcon,
     true},
    {"actiSendVarer", "Sender varer, innstillinger, ansatte og arbeidsplan", CommandMenu::Commands, Run, actiSendVarer,
     "F6", sendIcon, true, false, false, canSend},
    {"actiSyncNrSerie", "Synkroniser nummerserier", CommandMenu::Commands, Run, actiSyncNrSerie, "", nullptr, true,
     false, false, canRaiseSeries},
    {"actiSendProgramUpdate", "Send program oppdatering", CommandMenu::Commands, Run, actiSendProgramUpdate},
    {"actiRunSQL", "Kjør SQL Script", CommandMenu::Commands, Run, actiRunSQL},
    {"actiNullstill", "Nullstill", CommandMenu::Commands, Run, actiNullstill, "", nullptr, false, false, false,
     canReset},
    {"actiSendMessage", "Send melding...", CommandMenu::Commands, Run, actiSendMessage},
    {"actiHealthCheck", "Sjekk helsetilstand...", CommandMenu::Commands, Run, actiHealthCheck},
    {"actiSendFile", "Send fil til TorvikPOS...", CommandMenu::Commands, Run, actiSendFile},
    {"dxBtnHentVaretelling", "Hent kun varetelling (vanlig oppgjør blir ikke med)", CommandMenu::Commands, Run,
     dxBtnHentVaretelling, "", nullptr, false, false, false, canCount},
    {"actiSpeedTest", "Linjetest (hastighet)...", CommandMenu::Commands, Run, actiSpeedTest},
    {"actiSendIniFileChanges", "Send TorvikPOS.ini endringer til TorvikPOS...", CommandMenu::Commands, Run,
     actiSendIniFileChanges},
    {"actiViewTorvikPOSini", "Hent og vis TorvikPOS.ini innhold fra TorvikPOS...", CommandMenu::Commands, Run,
     actiViewTorvikPOSini},

    {"HelpContents1", "&Innhold", CommandMenu::Help, Plain, HelpContents1, "F1"},
    {"actiCheckSetup", "Kontroller oppsett", CommandMenu::Help, Run, actiCheckSetup},
    {"actiAbout", "Om TorvikPosSync", CommandMenu::Help, Plain, actiAbout},

    {"btnNils", "Hent kredittordrer etter kriterier", CommandMenu::None, Run, btnNils, "", nullptr, true},
};

}  // namespace

std::span<const CommandRow> commandRows() {
    return kRows;
}

}  // namespace torvik
