// The steps of a send to one till, in their order: one row a step. TdmTorvikToPOS walks them.
//
// How to add an export: a .cpp file here, named after what it sends, holds its work table, its query, its merge and
// the lists of actions (shape/action.h) that its steps do; declare the lists in exports.h and give each its row in
// send_steps.cpp. A condition that a step has as a whole stands in its row; one that changes a text stands on that
// piece of the text (shape/sql_text.h).
#pragma once

#include "outbound/shape/action.h"

namespace torvik {

struct SendStep {
    int number;
    const char* name;  // what CurrentTransformation is at its end; none: unchanged
    When when;
    const Actions* what;
};

// The first step whose failure is told as one of the send.
inline constexpr int kFirstGuardedStep = 3;

[[nodiscard]] std::span<const SendStep> sendSteps();

}  // namespace torvik
