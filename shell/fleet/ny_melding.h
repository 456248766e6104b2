// The dialog in which a message to the tills is written: as plain text, or as a page in a pane that shows it as the
// till will.
#pragma once

#include <QDialog>
#include <functional>
#include <optional>

#include "fleet/messages/message_script.h"

class QCheckBox;
class QDateTimeEdit;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QSpinBox;
class QStackedWidget;

namespace torvik {

class HtmlPane;

class TfrmNyMelding : public QDialog {
    Q_OBJECT

public:
    // What it asks the operator over itself.
    struct Asking {
        std::function<bool(const QString& question)> confirm;
        std::function<void(const QString& fault)> tell;
        // A file to read; empty: none. filter: as "Tekst filer (*.txt)|*.TXT", in the toolkit's form.
        std::function<QString(const QString& title, const QString& filter)> chooseFile;
    };

    // folder: the program's, where the standard page is written. now: the moment from which a message expires in a day.
    TfrmNyMelding(const QString& folder, const QDateTime& now, Asking ask, QWidget* parent = nullptr);

    // True when it was closed with OK.
    [[nodiscard]] bool Execute();
    [[nodiscard]] InstantMessage message() const;

    // The first fault of what is filled in; empty: none.
    [[nodiscard]] QString fault() const;
    void accept() override;

private:
    [[nodiscard]] QLineEdit* required(const char* name, const QString& hint = {});
    void setHtml(bool on);
    void readFile();
    void readFileNamed(const QString& file);

    QString folder_;
    Asking ask_;
    QLineEdit* edMe_Tittel_;
    QLineEdit* edMe_Til_;
    QLineEdit* edMe_Fra_;
    QStackedWidget* bodies_;
    QPlainTextEdit* meMelding_;
    HtmlPane* page_ = nullptr;  // made when it is first wanted
    QCheckBox* cbHtml_;
    QCheckBox* cbDisplayOnPosFront_;
    QLabel* priorityLabel_;
    QSpinBox* sePrioritet_;
    QLabel* expiryLabel_;
    QDateTimeEdit* deExpiry_;
};

}  // namespace torvik
