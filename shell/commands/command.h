// The window's commands: one row each in command_table.cpp, with what it is called, where it stands, and the function
// that does it. A command asks for what it needs, chooses tills and calls one operation. CommandRunner runs them, one
// at a time.
#pragma once

#include <QIcon>
#include <functional>
#include <span>

#include "engine/roster/kasse_collection.h"

class QMainWindow;
class QWidget;

namespace torvik {

namespace db {
class Session;
}
class AutomaticRun;
class BoundSettings;
class HealthView;
class ScriptResults;
class SettingsStore;
class TTorvikPos;
class TfrmSyncPreferences;
struct Questions;

// What a command is handed: all of it outlives the command.
struct CommandContext {
    QMainWindow& window;
    TTorvikPos& engine;
    db::Session& target;
    QString folder;  // the application's, with a separator at its end
    SettingsStore& store;
    BoundSettings& settings;
    TfrmSyncPreferences& preferences;
    AutomaticRun& automaticRun;
    Questions& ask;
    std::function<void()> resetProgress;
    ScriptResults& results;
    HealthView& health;
    std::function<void(QWidget& pane)> bringToFront;
};

enum class CommandMenu { File, Commands, Help, None };
enum class CommandKind {
    Plain,  // done at once, also while a run is under way
    Run,    // over tills: refused while another run is under way
};

struct CommandRow {
    const char* name;  // of the action
    const char* caption;
    CommandMenu menu;
    CommandKind kind;
    void (*execute)(CommandContext& context);
    const char* shortcut = "";
    QIcon (*icon)() = nullptr;
    bool button = false;  // also in the group "Manuell:"
    bool separatedBefore = false;
    bool checkable = false;
    bool (*offered)(const TTorvikPos& engine) = nullptr;  // null: always
};

// In the order of the menus.
[[nodiscard]] std::span<const CommandRow> commandRows();

inline const TSyncVersions kOldTills{svTorvikPosSync};
inline const TSyncVersions kAllTills{svTorvikPosSync, svDotNetV1};

// What the opening of a command does with the back office's session.
enum class OfficeSession { Fresh, Kept };

// The common opening of a command: disarms the automatic run, starts from a fresh back-office session unless it is to
// be kept, and asks for the tills, which become the roster's. False when the operator thinks better of it; raises
// EngineError when none is chosen.
[[nodiscard]] bool ApplyKasseCollection(CommandContext& context, const TSyncVersions& versions,
                                        OfficeSession office = OfficeSession::Fresh);

// The commands' functions, by the names of their actions.
void actiOppgjorManually(CommandContext& context);
void actiSendVarer(CommandContext& context);
void actiSyncNrSerie(CommandContext& context);
void actiNullstill(CommandContext& context);
void actiSendProgramUpdate(CommandContext& context);
void actiRunSQL(CommandContext& context);
void actiSendMessage(CommandContext& context);
void actiHealthCheck(CommandContext& context);
void actiSendFile(CommandContext& context);
void actiSpeedTest(CommandContext& context);
void actiSendIniFileChanges(CommandContext& context);
void actiViewTorvikPOSini(CommandContext& context);
void dxBtnHentVaretelling(CommandContext& context);
void btnNils(CommandContext& context);
void actiPreferences(CommandContext& context);
void actiSaveRegistry(CommandContext& context);
void actiAbout(CommandContext& context);
void HelpContents1(CommandContext& context);
void actiCheckSetup(CommandContext& context);
void FileExit1(CommandContext& context);

}  // namespace torvik
