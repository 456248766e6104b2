// The tokens of a reply ([MS-TDS] 2.2.7), written in the version that a connection speaks.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/values/error.h"
#include "sandbox/tds/type_info.h"
#include "sandbox/tds/values.h"

namespace sandbox::tds {

// Major, minor and build of the version that the server gives itself: 13.0.5026, as SERVERPROPERTY tells it too.
inline constexpr std::array<std::uint8_t, 4> kServerVersion = {13, 0, 0x13, 0xA2};

struct ColumnToken {
    std::string name;
    WireType type;
    bool nullable = true;
    bool identity = false;
    bool updatable = false;
    bool hidden = false;
};

// One DONE, DONEPROC or DONEINPROC; whether more follows is known only later.
struct DoneToken {
    Token token = Token::Done;
    std::uint16_t status = 0;
    std::uint16_t command = 0;
    std::uint64_t count = 0;
};

// Appends tokens to a message.
class TokenWriter {
public:
    TokenWriter(Writer& out, Version version, std::string serverName);

    [[nodiscard]] Version version() const { return version_; }
    [[nodiscard]] Writer& out() { return out_; }

    void loginAck();
    void databaseChange(std::string_view to, std::string_view from);
    void languageChange(std::string_view to, std::string_view from);
    void packetSizeChange(std::size_t to, std::size_t from);
    void collationChange();
    void transactionBegan(std::uint64_t descriptor);
    void transactionCommitted(std::uint64_t descriptor);
    void transactionRolledBack(std::uint64_t descriptor);
    void connectionReset();

    void columns(std::span<const ColumnToken> columns);
    // COLINFO, which follows the columns of a cursor: all are taken for expressions, and hidden ones are marked.
    // Clients of cursors look here for hidden columns.
    void columnOrigins(std::span<const ColumnToken> columns);
    void row(std::span<const ColumnToken> columns, std::span<const Value> cells);
    void done(const DoneToken& done);
    void error(const Message& message) { this->message(Token::Error, message); }
    void info(const Message& message) { this->message(Token::Info, message); }
    void returnStatus(std::int32_t status);
    void returnValue(std::uint16_t ordinal, std::string_view name, const Typed& value);

private:
    std::size_t begin(Token token);
    std::size_t environment(std::uint8_t kind);
    void descriptorChange(std::uint8_t kind, std::uint64_t now, std::uint64_t before);
    void userType(std::uint32_t number = 0);
    void message(Token token, const Message& message);

    Writer& out_;
    Version version_;
    std::string serverName_;
};

}  // namespace sandbox::tds
