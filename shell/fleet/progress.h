// The little window of one copy: how far it is, and its button "Avbryt". The rest of the window stays in use.
#pragma once

#include <QDialog>

#include "fleet/copy/copy_window.h"

class QLabel;
class QProgressBar;

namespace torvik {

class TfrmProgress : public QDialog, public CopyWindow {
    Q_OBJECT

public:
    explicit TfrmProgress(QWidget* parent = nullptr);

    void show() override;
    [[nodiscard]] int position() const override;
    void setProgress(int percent, const QString& text) override;
    // Closing the window means the button too; the window goes when the copy has ended.
    void reject() override;

private:
    QProgressBar* bar_;
    QLabel* text_;
};

}  // namespace torvik
