// The failure of a till's visit whose fetch another copy of the program has left half done, and nobody has decided
// about: the till is not served. Raised by the resolution of standing pairs (inbound/pairs); the runs tell it in its
// own words.
#pragma once

#include "engine/base/abort.h"

namespace torvik {

class UndecidedPair : public EngineError {
public:
    using EngineError::EngineError;
};

}  // namespace torvik
