// A failure of a step that has a name of its own; as a rule with the reason nested in it (std::throw_with_nested).
#pragma once

#include "engine/base/abort.h"

namespace torvik {

class StepError : public EngineError {
public:
    StepError(const QString& step, const QString& message) : EngineError(message), Step(step) {}

    QString Step;
};

}  // namespace torvik
