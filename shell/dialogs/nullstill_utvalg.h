// The reset prompt: what the reset of a till is to clear.
#pragma once

#include <QDialog>

#include "engine/base/torvik_pos_types.h"

namespace torvik {

class TfrmNullstillUtvalg : public QDialog {
    Q_OBJECT

public:
    explicit TfrmNullstillUtvalg(QWidget* parent = nullptr);

    // Shows the dialog; the ticked boxes, or the empty set when the answer was not OK.
    [[nodiscard]] TInitializeItems Execute();
};

}  // namespace torvik
