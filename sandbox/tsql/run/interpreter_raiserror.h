// RAISERROR's message formatting: %d, %i, %u, %o, %x, %X and %s with flags, width and precision, "*" taken from the
// arguments.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "sandbox/store/values/value.h"

namespace sandbox {

// The text, at most 2,047 characters. Raises 2786 where an argument does not fit its conversion, 2787 on a
// conversion that is none, 2747 on too many arguments.
[[nodiscard]] std::string formatRaiserror(std::string_view format, std::span<const Typed> arguments);

}  // namespace sandbox
