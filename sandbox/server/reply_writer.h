// A session's answers as the tokens of one reply message. A DONE is held back until it is known whether more follows;
// full packets are sent while the request still runs.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/server/channel.h"
#include "sandbox/tds/packet.h"
#include "sandbox/tds/tokens.h"
#include "sandbox/tsql/run/reply.h"

namespace sandbox::server {

// Lives as long as its connection and writes one message after the other. Nothing in it throws because a client is
// gone: what cannot be sent is dropped, and the inbox cancels the session.
class ReplyWriter : public Reply {
public:
    ReplyWriter(Channel& channel, std::string serverName) : channel_(channel), serverName_(std::move(serverName)) {}

    void setVersion(tds::Version version) { version_ = version; }
    [[nodiscard]] tds::Version version() const { return version_; }
    [[nodiscard]] tds::PacketWriter& packets() { return packets_; }

    // Called at each statement's end; false: say no more of this request.
    std::function<bool()> onStatement;
    // Asked while rows are written: true when the client no longer wants them.
    std::function<bool()> interrupted;

    // From now to the end of the message nothing is written.
    void discardRest() { discarding_ = true; }
    [[nodiscard]] std::uint64_t errors() const { return errors_; }  // of all messages, those not written too

    void columns(std::span<const ResultColumn> columns) override { describe(columns, false); }
    // With a last column of row states, as cursors have; it is hidden from clients that look at the flag, or at
    // COLINFO.
    void describe(std::span<const ResultColumn> columns, bool lastIsHidden);
    void row(std::span<const Value> cells) override;
    void statementDone(std::optional<std::int64_t> count, bool inProcedure) override;
    void error(const Message& message) override;
    void info(const Message& message) override;
    void databaseChanged(const std::string& from, const std::string& to) override;
    void transactionBegan(std::uint64_t descriptor) override;
    void transactionCommitted(std::uint64_t descriptor) override;
    void transactionRolledBack(std::uint64_t descriptor) override;
    void returnStatus(std::int32_t status) override;
    void outputParameter(int ordinal, const std::string& name, const Typed& value) override;
    void procedureDone() override;

    // Tokens that no session knows of: those of a login and of a reset.
    [[nodiscard]] tds::TokenWriter tokens();
    // Ends the message and sends what is left of it. cutShort: it ends before its time, and its last DONE says so.
    void finish(bool cutShort = false);
    // The answer to an attention: a message of its own, after the one that it interrupted, if any.
    void acknowledgeAttention();
    // Drops what is not sent yet.
    void drop();

private:
    void put(const tds::DoneToken& done);
    void flushDone(bool more);
    void sendFull();

    Channel& channel_;
    std::string serverName_;
    tds::Version version_ = tds::Version::V74;
    tds::PacketWriter packets_;
    tds::Writer message_;
    std::vector<tds::ColumnToken> columns_;
    std::optional<tds::DoneToken> held_;
    bool described_ = false;  // a row set is open
    bool failed_ = false;     // an error was told since the last DONE
    std::uint64_t errors_ = 0;
    bool discarding_ = false;
};

}  // namespace sandbox::server
