// What commands ask the operator, each as a function that a dialog answers: the window sets the real dialogs, a test
// its own answers. Nothing, or false, or an empty set is the operator's "Avbryt", which ends the command without a
// word.
#pragma once

#include <QDate>
#include <QString>
#include <functional>
#include <optional>

#include "engine/base/torvik_pos_types.h"
#include "engine/roster/kasse_collection.h"
#include "fleet/copy/copy_window.h"
#include "fleet/messages/message_script.h"
#include "inbound/pairs/pair_resolution.h"
#include "shell/fleet/kopier_fil.h"
#include "shell/fleet/sql_script_dialog.h"

class QWidget;

namespace torvik {

namespace db {
class Session;
}

struct Questions {
    // Fills the collection with the tills of a command, of those that have one of the versions.
    std::function<bool(TKasseCollection& tills, const TSyncVersions& versions)> SelectTills;
    std::function<std::optional<QDate>(const QString& label)> Date;
    std::function<std::optional<QString>(const QString& title, const QString& label, const QString& first)> Text;
    std::function<TInitializeItems()> ResetScope;
    std::function<void(const QString& text)> ShowMessage;
    std::function<bool(const QString& text)> Confirm;
    // What becomes of a pair of transactions that another machine has left half done.
    PairDecisionHandler DecidePair;
    // One local file whose name has the pattern, such as "*.*"; text: what such files are called, and the dialog's
    // title.
    std::function<std::optional<QString>(const QString& text, const QString& pattern)> ChooseFile;
    std::function<std::optional<FileCopyAnswer>(const QString& caption)> FileCopy;
    // How a till's file share is reached, and the little window of a copy to it.
    CopyTools Copy;
    // The script for the tills, which the operator sees named; folder: the program's.
    std::function<std::optional<SqlScriptAnswer>(SettingsStore& store, const QString& folder, const QStringList& tills)>
        SqlScript;
    // The message for the tills; folder: the program's.
    std::function<std::optional<InstantMessage>(const QString& folder)> Message;
    // A name to save under, of a file that need not be there; the suffix is added to one that has none.
    std::function<std::optional<QString>(const QString& title, const QString& filter, const QString& suffix)> SaveFile;
    // Opens a file with the program that the system has for it.
    std::function<void(const QString& file)> OpenFile;
};

// The dialogs, over the window; the list of tills comes from the session.
[[nodiscard]] Questions dialogQuestions(QWidget& window, db::Session& target);

}  // namespace torvik
