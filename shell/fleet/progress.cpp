#include "shell/fleet/progress.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace torvik {

namespace {

constexpr int kWidth = 460;

}  // namespace

TfrmProgress::TfrmProgress(QWidget* parent) : QDialog(parent), bar_(new QProgressBar(this)), text_(new QLabel(this)) {
    setObjectName(QStringLiteral("TfrmProgress"));
    setWindowTitle(QStringLiteral("Kopierer fil"));
    setMinimumWidth(kWidth);
    bar_->setObjectName(QStringLiteral("bar"));
    bar_->setRange(0, 100);
    bar_->setValue(0);
    text_->setObjectName(QStringLiteral("text"));
    auto* cancel = new QPushButton(QStringLiteral("Avbryt"), this);
    cancel->setObjectName(QStringLiteral("cancel"));
    connect(cancel, &QPushButton::clicked, this, &TfrmProgress::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(bar_);
    layout->addWidget(text_);
    layout->addWidget(cancel, 0, Qt::AlignRight);
}

void TfrmProgress::show() {
    QDialog::show();
    repaint();
}

int TfrmProgress::position() const {
    return bar_->value();
}

void TfrmProgress::setProgress(int percent, const QString& text) {
    bar_->setValue(percent);
    text_->setText(text);
}

void TfrmProgress::reject() {
    Cancel = -1;
}

}  // namespace torvik
