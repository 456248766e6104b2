// Own texts rather than standard buttons, whose texts follow the desktop's language.
#include "shell/dialogs/ok_avbryt.h"

#include <QDialog>
#include <QPushButton>

namespace torvik {

QDialogButtonBox* okAndAvbryt(QDialog& dialog) {
    auto* buttons = new QDialogButtonBox(&dialog);
    auto* ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("ok"));
    ok->setDefault(true);
    buttons->addButton(QStringLiteral("Avbryt"), QDialogButtonBox::RejectRole)->setObjectName(QStringLiteral("cancel"));
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    return buttons;
}

}  // namespace torvik
