// Sessions of a test's own to the databases of a demo chain, beside those of the program that it runs.
#pragma once

#include <QString>
#include <memory>

#include "engine/db/session.h"
#include "sandbox/chain/demo_chain.h"

namespace torvik::test {

// What a session to one of the chain's databases is told, as OLE DB text.
[[nodiscard]] QString backOfficeString(const sandbox::chain::DemoChain& chain);
[[nodiscard]] QString tillString(const sandbox::chain::DemoChain& chain, std::size_t till);

// Opened sessions; raise ConnectionError.
[[nodiscard]] std::unique_ptr<db::Session> sessionTo(const QString& connectString);
[[nodiscard]] std::unique_ptr<db::Session> backOfficeSession(const sandbox::chain::DemoChain& chain);
[[nodiscard]] std::unique_ptr<db::Session> tillSession(const sandbox::chain::DemoChain& chain, std::size_t till);

}  // namespace torvik::test
