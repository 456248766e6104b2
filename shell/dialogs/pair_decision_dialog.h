// Puts to the operator a pair of transactions that another machine has left half done and not resolved: what both ends
// hold of it, and what can be done about it. Asked when a till with such a pair is to be served. docs/failures.md.
#pragma once

#include <QDialog>

#include "inbound/pairs/pair_resolution.h"

namespace torvik {

class PairDecisionDialog : public QDialog {
    Q_OBJECT

public:
    explicit PairDecisionDialog(const PairQuestion& question, QWidget* parent = nullptr);

    // Shows the dialog; Refuse is what Enter, Escape and closing it answer.
    [[nodiscard]] PairDecision Execute();

private:
    PairDecision decision_ = PairDecision::Refuse;
};

}  // namespace torvik
