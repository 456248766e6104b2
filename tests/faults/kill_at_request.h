// The program as a process of its own, killed at one request: the server has received it and does not execute it, so
// that the moment is met exactly, however fast the machine.
#pragma once

#include <QString>
#include <functional>
#include <string>

#include "tests/faults/fault_stage.h"

namespace torvik::test {

// Gives the request's text, told by `same` as it is in every run; empty if the program ended without sending it.
[[nodiscard]] std::string runAndKill(ChainCopy& copy, const QString& program, std::size_t server, std::uint64_t place,
                                     const std::function<std::string(const std::string&)>& same);

}  // namespace torvik::test
