// The SQL Server that TORVIK_TEST_SERVER names (an OLE DB connection string of a login that may create databases), on
// which the database tests then run in place of the stand-in.
#pragma once

#include <QString>
#include <memory>
#include <optional>

#include "engine/db/session.h"
#include "sandbox/chain/demo_chain.h"

namespace torvik::test {

// None: the variable is not set.
[[nodiscard]] std::optional<db::ConnectSettings> givenServer();
// The same as a place for a demo chain, whose databases have names of their own.
[[nodiscard]] std::optional<sandbox::chain::OtherServer> givenServerForAChain();

// "torvik_test_<process>_<number>": a name that no other test has.
[[nodiscard]] QString uniqueDatabaseName();
[[nodiscard]] std::unique_ptr<db::Session> opened(const db::ConnectSettings& settings);
// Waits for some seconds while the server still counts sessions that have been closed; raises StatementError.
void dropDatabase(db::ConnectSettings settings, const QString& database);
// Runs a batch; raises StatementError when the server answers an error.
void execute(db::Session& session, const QString& batch);

}  // namespace torvik::test
