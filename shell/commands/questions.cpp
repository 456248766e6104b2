// Each question opens its dialog over the window and waits for the answer.
#include "shell/commands/questions.h"

#include <QDateTime>
#include <QDesktopServices>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>

#include "shell/dialogs/nullstill_utvalg.h"
#include "shell/dialogs/oppgi_dato.h"
#include "shell/dialogs/pair_decision_dialog.h"
#include "shell/dialogs/velg_internkunde_kasse.h"
#include "shell/fleet/ny_melding.h"
#include "shell/fleet/progress.h"

namespace torvik {

namespace {

std::optional<QString> askText(QWidget& window, const QString& title, const QString& label, const QString& first) {
    QInputDialog dialog(&window);
    dialog.setWindowTitle(title);
    dialog.setLabelText(label);
    dialog.setTextValue(first);
    dialog.setOkButtonText(QStringLiteral("OK"));
    dialog.setCancelButtonText(QStringLiteral("Avbryt"));
    if (dialog.exec() != QDialog::Accepted) return std::nullopt;
    return dialog.textValue();
}

std::optional<QString> chooseFile(QWidget& window, const QString& text, const QString& pattern) {
    const QString file =
        QFileDialog::getOpenFileName(&window, text, QString(), QStringLiteral("%1 (%2)").arg(text, pattern));
    return file.isEmpty() ? std::nullopt : std::optional(file);
}

std::optional<FileCopyAnswer> askFileCopy(QWidget& window, const QString& caption) {
    TfrmKopierFil dialog(
        [&window] { return chooseFile(window, QStringLiteral("Alle filer (*.*)"), QStringLiteral("*")); }, &window);
    dialog.setWindowTitle(caption);
    return dialog.Execute();
}

// "Nei" is what Enter and Escape answer.
bool confirmed(QWidget& window, const QString& text) {
    QMessageBox box(QMessageBox::Warning, window.windowTitle(), text, QMessageBox::NoButton, &window);
    auto* yes = box.addButton(QStringLiteral("Ja"), QMessageBox::YesRole);
    auto* no = box.addButton(QStringLiteral("Nei"), QMessageBox::NoRole);
    box.setDefaultButton(no);
    box.setEscapeButton(no);
    box.exec();
    return box.clickedButton() == yes;
}

std::optional<InstantMessage> askMessage(QWidget& window, const QString& folder) {
    const TfrmNyMelding::Asking asking{
        .confirm = [&window](const QString& question) { return confirmed(window, question); },
        .tell = [&window](const QString& fault) { QMessageBox::warning(&window, window.windowTitle(), fault); },
        .chooseFile =
            [&window](const QString& title, const QString& filter) {
                return QFileDialog::getOpenFileName(&window, title, QString(), filter);
            }};
    TfrmNyMelding dialog(folder, QDateTime::currentDateTime(), asking, &window);
    if (!dialog.Execute()) return std::nullopt;
    return dialog.message();
}

std::optional<QString> askNewFile(QWidget& window, const QString& title, const QString& filter, const QString& suffix) {
    QFileDialog dialog(&window, title, QString(), filter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(suffix);
    if (dialog.exec() != QDialog::Accepted) return std::nullopt;
    return dialog.selectedFiles().constFirst();
}

}  // namespace

Questions dialogQuestions(QWidget& window, db::Session& target) {
    Questions ask;
    ask.SelectTills = [&window, &target](TKasseCollection& tills, const TSyncVersions& versions) {
        TfrmVelgInternkundeKasse dialog(target, &window);
        dialog.fSyncVersions = versions;
        return dialog.Execute(tills);
    };
    ask.Date = [&window](const QString& label) {
        TfrmOppgiDato dialog(QDate::currentDate(), &window);
        dialog.SetLabel(label);
        return dialog.Execute();
    };
    ask.Text = [&window](const QString& title, const QString& label, const QString& first) {
        return askText(window, title, label, first);
    };
    ask.ResetScope = [&window] { return TfrmNullstillUtvalg(&window).Execute(); };
    ask.ShowMessage = [&window](const QString& text) { QMessageBox::information(&window, window.windowTitle(), text); };
    ask.Confirm = [&window](const QString& text) { return confirmed(window, text); };
    ask.DecidePair = [&window](const PairQuestion& question) {
        return PairDecisionDialog(question, &window).Execute();
    };
    ask.ChooseFile = [&window](const QString& text, const QString& pattern) {
        return chooseFile(window, text, pattern);
    };
    ask.FileCopy = [&window](const QString& caption) { return askFileCopy(window, caption); };
    ask.Copy.Window = [&window] { return std::make_unique<TfrmProgress>(&window); };
    ask.SqlScript = [&window](SettingsStore& store, const QString& folder, const QStringList& tills) {
        return TfrmSQLScript(store, folder, tills, &window).Execute();
    };
    ask.Message = [&window](const QString& folder) { return askMessage(window, folder); };
    ask.SaveFile = [&window](const QString& title, const QString& filter, const QString& suffix) {
        return askNewFile(window, title, filter, suffix);
    };
    ask.OpenFile = [](const QString& file) { QDesktopServices::openUrl(QUrl::fromLocalFile(file)); };
    return ask;
}

}  // namespace torvik
