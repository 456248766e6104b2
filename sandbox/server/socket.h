// Sockets of the operating system: one that listens, and those of the clients.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace sandbox::server {

// Owns a file descriptor.
class Socket {
public:
    Socket() = default;
    explicit Socket(int descriptor) : descriptor_(descriptor) {}
    ~Socket() { close(); }
    Socket(Socket&& other) noexcept : descriptor_(other.release()) {}
    Socket& operator=(Socket&& other) noexcept;

    [[nodiscard]] int get() const { return descriptor_; }
    [[nodiscard]] int release();
    void close();

    // Bytes received, at least one; 0: the peer has ended, the time is up, or the socket was shut down.
    [[nodiscard]] std::size_t receive(std::span<std::uint8_t> into) const;
    // All of them; false: the connection is gone.
    [[nodiscard]] bool send(std::span<const std::uint8_t> bytes) const;
    // Wakes all that wait in receive and send, and tells the peer the end.
    void shutdown() const;
    void shutdownSending() const;
    void setReceiveTimeout(std::chrono::milliseconds time) const;  // 0: none
    // Waits until there is something to receive or the time is up; a negative time: for ever.
    [[nodiscard]] bool readable(std::chrono::milliseconds time) const;

private:
    int descriptor_ = -1;
};

// Listens on an address and port (0: any free one). Raises std::system_error.
[[nodiscard]] Socket listenOn(const std::string& host, std::uint16_t port);
[[nodiscard]] std::uint16_t portOf(const Socket& listening);
// The next client; waits. An empty socket: `wake` has become readable, or nothing can be accepted just now.
[[nodiscard]] Socket acceptOn(const Socket& listening, const Socket& wake);

}  // namespace sandbox::server
