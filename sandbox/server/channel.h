// The bytes of one connection: its socket, TLS where it was settled, and the faults of sending.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "sandbox/server/faults.h"
#include "sandbox/server/socket.h"
#include "sandbox/server/tls.h"
#include "sandbox/tds/bytes.h"

namespace sandbox::server {

// One thread receives and one sends; cut() may come from any.
class Channel {
public:
    Channel(Socket socket, Faults& faults) : socket_(std::move(socket)), faults_(faults) {}

    // Some of the next bytes, at most `most` of them when plain, one record's when encrypted. Empty: the peer is gone.
    [[nodiscard]] std::vector<std::uint8_t> receive(std::size_t most);
    [[nodiscard]] const Socket& socket() const { return socket_; }

    // False when the connection is gone, by itself or by a fault.
    bool send(tds::ByteSpan bytes);

    void startTls(std::shared_ptr<TlsSession> session) { tls_ = std::move(session); }
    void endTls() { tls_.reset(); }
    [[nodiscard]] bool encrypted() const { return tls_ != nullptr; }

    void setProgram(const std::string& program) { program_ = program; }

    void cut();
    [[nodiscard]] bool isCut() const { return cut_; }
    // The end after a last message that the peer is still to read.
    void closeGently();

private:
    [[nodiscard]] bool receiveExactly(std::span<std::uint8_t> into) const;

    Socket socket_;
    Faults& faults_;
    std::shared_ptr<TlsSession> tls_;
    std::string program_;
    std::atomic<bool> cut_ = false;
};

}  // namespace sandbox::server
