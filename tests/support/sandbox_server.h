// A SQL Server for a test: the stand-in server in this process, or the one that TORVIK_TEST_SERVER names
// (sandbox_given_server.h). Each object has a fresh database, dropped at its end, and a session on it. Tests that make
// faults or count requests need the stand-in and say so with TORVIK_NEEDS_SANDBOX.
#pragma once

#include <QString>
#include <memory>
#include <string>

#include "engine/db/session.h"
#include "sandbox/server/server.h"

namespace torvik::test {

// How the sessions on a server go: an encrypted one takes any certificate.
enum class Wire { Plain, Tls };

class SandboxServer {
public:
    explicit SandboxServer(Wire wire = Wire::Plain);
    ~SandboxServer();
    SandboxServer(const SandboxServer&) = delete;
    SandboxServer& operator=(const SandboxServer&) = delete;

    // The session that the test starts with, open on the fresh database.
    [[nodiscard]] db::Session& session() { return *session_; }
    // Another session on the same database, open.
    [[nodiscard]] std::unique_ptr<db::Session> connect(const QString& applicationName = {}) const;
    // OLE DB text of the fresh database, as a data-link file holds it.
    [[nodiscard]] QString connectString() const;
    [[nodiscard]] const QString& database() const { return database_; }
    [[nodiscard]] const db::ConnectSettings& settings() const { return settings_; }

    // Runs a batch on the test's session.
    void run(const QString& batch);
    // The rows that a batch gives, read over the test's session: a line of column names, then a line a row, cells
    // between " | ", NULL for null. Dates with time are "yyyy-MM-dd hh:mm:ss.fff", bytes "0x..".
    [[nodiscard]] std::string rows(const QString& batch);
    [[nodiscard]] std::string rows(const QString& batch, db::Session& session) const;

    // Whether it is the stand-in: not when TORVIK_TEST_SERVER is set. What the stand-in alone has raises
    // std::logic_error then.
    [[nodiscard]] bool isSandbox() const { return server_ != nullptr; }
    [[nodiscard]] sandbox::Server& server();
    [[nodiscard]] sandbox::Faults& faults() { return server().faults(); }

private:
    std::unique_ptr<sandbox::Server> server_;
    db::ConnectSettings settings_;  // of the fresh database
    QString database_;
    std::unique_ptr<db::Session> session_;
};

#define TORVIK_NEEDS_SANDBOX(fixture) \
    if (!(fixture).isSandbox())       \
    GTEST_SKIP() << "needs the stand-in server: it makes faults, counts requests or uses what is the server's own"

}  // namespace torvik::test
