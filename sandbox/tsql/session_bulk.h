// A bulk load that a session has under way, with everything that must live as long as it does.
#pragma once

#include <memory>
#include <vector>

#include "sandbox/tsql/interpreter.h"

namespace sandbox {

// For what runs without a client that listens.
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

struct BulkLoad {
    explicit BulkLoad(SessionState& session) : interpreter(session, reply) {}

    SilentReply reply;
    Interpreter interpreter;
    Unit unit;
    BindContext bind;
    std::unique_ptr<ExecuteContext> execute;
    std::vector<Type> types;
    std::unique_ptr<BulkInsert> insert;
};

}  // namespace sandbox
