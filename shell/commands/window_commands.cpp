// The commands that are about the program itself: settings, help, the end.
#include <QApplication>
#include <QFileInfo>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>

#include "engine/base/abort.h"
#include "engine/torvik_pos.h"
#include "logging/program_file.h"
#include "shell/commands/command.h"
#include "shell/commands/questions.h"
#include "shell/dialogs/sync_preferences.h"
#include "shell/settings/bound_settings.h"
#include "shell/settings/settings_store.h"
#include "shell/start/application_folder.h"

namespace torvik {

void actiPreferences(CommandContext& context) {
    context.preferences.exec();
}

void actiSaveRegistry(CommandContext& context) {
    context.settings.write(context.store);
    if (!context.store.save()) context.engine.AddLog(QStringLiteral("Klarte ikke å lagre innstillingene"), true);
}

void HelpContents1(CommandContext& context) {
    const QString file = helpFile(programFile());
    if (!QFileInfo::exists(file)) throw EngineError(QStringLiteral("Finner ikke filen %1").arg(file));
    context.ask.OpenFile(file);
}

void actiAbout(CommandContext& context) {
    QMessageBox box(QMessageBox::NoIcon, QStringLiteral("Om TorvikPosSync"),
                    QStringLiteral("TorvikPosSync utveksler data mellom Torvik BackOffice og TorvikPOS "
                                   "kasseapparater.\n\nVersjon %1")
                        .arg(QApplication::applicationVersion()),
                    QMessageBox::Ok, &context.window);
    box.setIconPixmap(context.window.windowIcon().pixmap(48));
    box.setEscapeButton(QMessageBox::Ok);  // beside a help button nothing else would close it
    const auto* help = box.addButton(QStringLiteral("Hjelp"), QMessageBox::HelpRole);
    box.exec();
    if (box.clickedButton() == help) HelpContents1(context);
}

void FileExit1(CommandContext& context) {
    QMetaObject::invokeMethod(&context.window, &QWidget::close, Qt::QueuedConnection);  // when no command is at work
}

}  // namespace torvik
