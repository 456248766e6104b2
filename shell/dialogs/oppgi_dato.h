// The date prompt: one date, under a label that the caller sets.
#pragma once

#include <QDate>
#include <QDialog>
#include <optional>

class QDateEdit;
class QLabel;

namespace torvik {

class TfrmOppgiDato : public QDialog {
    Q_OBJECT

public:
    explicit TfrmOppgiDato(const QDate& date, QWidget* parent = nullptr);

    void SetLabel(const QString& text);  // "Dato:" unless set
    // Shows the dialog; nothing when the answer was not OK.
    [[nodiscard]] std::optional<QDate> Execute();

private:
    QLabel* label_;
    QDateEdit* date_;
};

}  // namespace torvik
