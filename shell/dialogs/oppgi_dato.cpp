// The keyboard begins in the date field, so that a date can be typed and confirmed without the mouse.
#include "shell/dialogs/oppgi_dato.h"

#include <QDateEdit>
#include <QLabel>
#include <QVBoxLayout>

#include "shell/dialogs/ok_avbryt.h"

namespace torvik {

TfrmOppgiDato::TfrmOppgiDato(const QDate& date, QWidget* parent)
    : QDialog(parent), label_(new QLabel(QStringLiteral("Dato:"), this)), date_(new QDateEdit(date, this)) {
    setObjectName(QStringLiteral("TfrmOppgiDato"));
    setWindowTitle(QStringLiteral("Oppgi dato"));
    label_->setBuddy(date_);
    date_->setObjectName(QStringLiteral("date"));
    date_->setDisplayFormat(QStringLiteral("dd.MM.yyyy"));
    date_->setCalendarPopup(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label_);
    layout->addWidget(date_);
    layout->addWidget(okAndAvbryt(*this));
    date_->setFocus();
}

void TfrmOppgiDato::SetLabel(const QString& text) {
    label_->setText(text);
}

std::optional<QDate> TfrmOppgiDato::Execute() {
    if (exec() != QDialog::Accepted) return std::nullopt;
    return date_->date();
}

}  // namespace torvik
