// A bare client for tests of the protocol: it builds messages byte by byte, sends them in packets of its own making,
// and shows a reply token by token as lines of text. Nothing is hidden, merged or reordered.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/server/socket.h"
#include "sandbox/store/values/value.h"
#include "sandbox/tds/bytes.h"
#include "sandbox/tds/protocol.h"
#include "sandbox/tds/type_info.h"

namespace sandbox::tds {

struct LoginFields {
    std::uint32_t version = 0x74000004;
    std::uint32_t packetSize = 4096;
    std::string host = "testhost", user = "sa", password = "secret", program = "tests", server = "server",
                library = "raw", language, database;
    bool integrated = false;
    bool changesPassword = false;
    std::vector<std::uint8_t> features;  // with their end; empty: no extension
};

[[nodiscard]] std::vector<std::uint8_t> loginMessage(const LoginFields& fields);
// ALL_HEADERS, which stand in front of batches, calls and transaction requests from 7.2 on.
void appendHeaders(Writer& out, std::uint64_t transaction = 0);

struct RawParameter {
    std::string name;
    Type type;
    Value value;
    bool output = false;
};

// The body of an RPC message of one call, by number.
[[nodiscard]] std::vector<std::uint8_t> callMessage(std::uint16_t procedure,
                                                    const std::vector<RawParameter>& parameters,
                                                    Version version = Version::V74);

// Shows the tokens of a whole message:
//   cols a int, b varchar(3) | row 1|'x' | done COUNT | doneproc | doneinproc COUNT, each with " more", " error",
//   " attention" | error NUMBER SEVERITY STATE LINE TEXT | info ... | env KIND NEW OLD | return N | output NAME TYPE
//   VALUE | loginack VERSION NAME
[[nodiscard]] std::vector<std::string> showTokens(ByteSpan message, Version version);
[[nodiscard]] std::string showValue(const Value& value, const Type& type);

class TdsClient {
public:
    // Connects and does nothing more.
    explicit TdsClient(std::uint16_t port);

    // Prelogin without encryption and login; gives the reply's lines.
    std::vector<std::string> login(const LoginFields& fields);

    void sendBytes(ByteSpan bytes);
    void send(PacketType type, ByteSpan message, std::size_t packetSize = 4096,
              std::uint8_t lastStatus = kEndOfMessage);
    void sendBatch(const std::string& text);
    // The next reply; none when the server has closed the connection.
    [[nodiscard]] std::optional<std::vector<std::uint8_t>> receive();
    [[nodiscard]] std::vector<std::string> reply();  // {"closed"} in that case
    std::vector<std::string> batch(const std::string& text);
    std::vector<std::string> call(std::uint16_t procedure, const std::vector<RawParameter>& parameters);
    // Whether the server closes the connection within the time, whatever it sends before.
    [[nodiscard]] bool closes(std::chrono::milliseconds within = std::chrono::seconds(10));
    void close() { socket_.close(); }
    [[nodiscard]] std::size_t largestPacketSeen() const { return largest_; }

private:
    [[nodiscard]] bool readExactly(std::span<std::uint8_t> into);

    server::Socket socket_;
    Version version_ = Version::V74;
    std::size_t largest_ = 0;
};

}  // namespace sandbox::tds
