// The buttons "OK" and "Avbryt" of a dialog, named "ok" and "cancel", joined to its accept and reject.
#pragma once

#include <QDialogButtonBox>

class QDialog;

namespace torvik {

[[nodiscard]] QDialogButtonBox* okAndAvbryt(QDialog& dialog);

}  // namespace torvik
