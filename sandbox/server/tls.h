// TLS as TDS uses it: bytes in, bytes out, carried by somebody else, for the handshake travels inside packets and may
// end after the login. OpenSSL stays behind this header.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <span>
#include <stdexcept>
#include <vector>

struct ssl_ctx_st;
struct ssl_st;

namespace sandbox::server {

class TlsError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A server's certificate and settings. Protocol versions up to 1.2: TDS 7 has no place for what 1.3 sends later on.
class TlsContext {
public:
    // Without files a key is made, and a certificate for the host name that it signs itself. Raises TlsError.
    TlsContext(const std::filesystem::path& certificate, const std::filesystem::path& key);

    [[nodiscard]] ssl_ctx_st* get() const { return context_.get(); }

private:
    std::shared_ptr<ssl_ctx_st> context_;
};

// One connection's TLS. All members may be called from several threads.
class TlsSession {
public:
    explicit TlsSession(const TlsContext& context);

    // Goes on with the handshake over the bytes received; true when it is complete. Raises TlsError.
    [[nodiscard]] bool handshake(std::span<const std::uint8_t> received);
    // Bytes received to plain ones. Raises TlsError; an orderly end gives none.
    [[nodiscard]] std::vector<std::uint8_t> decrypt(std::span<const std::uint8_t> received);
    [[nodiscard]] std::vector<std::uint8_t> encrypt(std::span<const std::uint8_t> plain);
    // What the handshake wants to send.
    [[nodiscard]] std::vector<std::uint8_t> takeOutgoing();

private:
    void put(std::span<const std::uint8_t> received);
    std::vector<std::uint8_t> outgoing();

    std::mutex mutex_;
    std::shared_ptr<ssl_st> ssl_;
};

}  // namespace sandbox::server
