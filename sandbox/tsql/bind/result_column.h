// A column of a result, as the binder finds it and as replies tell it.
#pragma once

#include <string>

#include "sandbox/store/values/type.h"

namespace sandbox {

struct ResultColumn {
    std::string name;  // empty: an unnamed column
    Type type;
    bool nullable = true;
    bool identity = false;
    bool updatable = false;
};

}  // namespace sandbox
