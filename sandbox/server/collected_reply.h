// Replies between a session and the wire: one that keeps the outermost end of a call back, so that a request can add to
// it, and one that collects a row set. Used for prepared statements and cursors.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sandbox/tsql/run/reply.h"

namespace sandbox::server {

// Hands all on to another reply.
class ForwardingReply : public Reply {
public:
    explicit ForwardingReply(Reply& to) : to_(to) {}
    void columns(std::span<const ResultColumn> columns) override { to_.columns(columns); }
    void row(std::span<const Value> cells) override { to_.row(cells); }
    void statementDone(std::optional<std::int64_t> count, bool) override { to_.statementDone(count, true); }
    void error(const Message& message) override { to_.error(message); }
    void info(const Message& message) override { to_.info(message); }
    void databaseChanged(const std::string& from, const std::string& to) override { to_.databaseChanged(from, to); }
    void transactionBegan(std::uint64_t descriptor) override { to_.transactionBegan(descriptor); }
    void transactionCommitted(std::uint64_t descriptor) override { to_.transactionCommitted(descriptor); }
    void transactionRolledBack(std::uint64_t descriptor) override { to_.transactionRolledBack(descriptor); }
    void returnStatus(std::int32_t status) override { to_.returnStatus(status); }
    void outputParameter(int ordinal, const std::string& name, const Typed& value) override {
        to_.outputParameter(ordinal, name, value);
    }
    void procedureDone() override { to_.procedureDone(); }

protected:
    Reply& to_;
};

// Keeps the last end of a procedure back: its status, its output parameters and its DONEPROC. What comes after it shows
// that it was an inner one, and it is handed on.
class CallReply : public ForwardingReply {
public:
    using ForwardingReply::ForwardingReply;

    struct Output {
        int ordinal;
        std::string name;
        Typed value;
    };

    void columns(std::span<const ResultColumn> columns) override;
    void row(std::span<const Value> cells) override;
    void statementDone(std::optional<std::int64_t> count, bool inProcedure) override;
    void error(const Message& message) override;
    void info(const Message& message) override;
    void returnStatus(std::int32_t status) override;
    void outputParameter(int ordinal, const std::string& name, const Typed& value) override;
    void procedureDone() override;

    // Ends the call: the status kept, these outputs, the outputs kept with their ordinals moved up, and DONEPROC.
    void finish(const std::vector<Output>& first, int shift);
    [[nodiscard]] bool failed() const { return failed_; }

private:
    void release();

    std::optional<std::int32_t> status_;
    std::vector<Output> outputs_;
    bool ended_ = false;
    bool failed_ = false;
};

// Collects the first row set and hands errors and messages on. Where it may fall back it hands everything on, behind
// message 16954, as soon as there is a row set that it cannot hold.
class RowSetReply : public ForwardingReply {
public:
    // held: how many row sets it can hold, none or one.
    explicit RowSetReply(Reply& to, bool fallBack = false, int held = 1)
        : ForwardingReply(to), fallBack_(fallBack), held_(held) {}

    void columns(std::span<const ResultColumn> columns) override;
    void row(std::span<const Value> cells) override;
    void statementDone(std::optional<std::int64_t> count, bool inProcedure) override;
    void error(const Message& message) override;
    void returnStatus(std::int32_t) override {}
    void outputParameter(int, const std::string&, const Typed&) override {}
    void procedureDone() override {}

    std::vector<ResultColumn> heads;
    std::vector<std::vector<Value>> rows;
    int rowSets = 0;
    bool failed = false;
    bool direct = false;  // it has fallen back

private:
    void goDirect();

    bool fallBack_;
    int held_;
};

}  // namespace sandbox::server
