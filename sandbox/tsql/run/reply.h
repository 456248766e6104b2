// What a session answers while it runs a batch or a call, in the order in which it happens. The wire protocol writes it
// as tokens; a test may collect it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "sandbox/store/values/error.h"
#include "sandbox/store/values/type.h"
#include "sandbox/store/values/value.h"
#include "sandbox/tsql/bind/result_column.h"

namespace sandbox {

class Reply {
public:
    virtual ~Reply() = default;

    virtual void columns(std::span<const ResultColumn> columns) = 0;
    virtual void row(std::span<const Value> cells) = 0;  // one cell a column, in the types that columns() told

    // The end of one statement. count: rows returned or affected, none where the statement has no count or NOCOUNT is
    // on. inProcedure: it ended inside a procedure or EXEC text (DONEINPROC).
    virtual void statementDone(std::optional<std::int64_t> count, bool inProcedure) = 0;

    virtual void error(const Message& message) = 0;  // severity above 10
    virtual void info(const Message& message) = 0;   // PRINT, RAISERROR up to 10, changed contexts

    virtual void databaseChanged(const std::string& from, const std::string& to) = 0;  // ENVCHANGE 1
    virtual void transactionBegan(std::uint64_t descriptor) = 0;                       // ENVCHANGE 8
    virtual void transactionCommitted(std::uint64_t descriptor) = 0;                   // ENVCHANGE 9
    virtual void transactionRolledBack(std::uint64_t descriptor) = 0;                  // ENVCHANGE 10

    // The end of a procedure that a request or an EXEC statement called: its status, then for a request its output
    // parameters.
    virtual void returnStatus(std::int32_t status) = 0;
    virtual void outputParameter(int ordinal, const std::string& name, const Typed& value) = 0;
    virtual void procedureDone() = 0;  // DONEPROC
};

// Takes all and keeps nothing: for what runs without a client that listens, and for replies that want a part only.
class SilentReply : public Reply {
public:
    void columns(std::span<const ResultColumn>) override {}
    void row(std::span<const Value>) override {}
    void statementDone(std::optional<std::int64_t>, bool) override {}
    void error(const Message&) override {}
    void info(const Message&) override {}
    void databaseChanged(const std::string&, const std::string&) override {}
    void transactionBegan(std::uint64_t) override {}
    void transactionCommitted(std::uint64_t) override {}
    void transactionRolledBack(std::uint64_t) override {}
    void returnStatus(std::int32_t) override {}
    void outputParameter(int, const std::string&, const Typed&) override {}
    void procedureDone() override {}
};

}  // namespace sandbox
