#include "tests/support/http_server.h"

#include <openssl/ssl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <chrono>

namespace torvik::test {

using sandbox::server::Socket;
using sandbox::server::TlsContext;
using sandbox::server::TlsError;
using sandbox::server::TlsSession;

namespace {

constexpr std::chrono::seconds kPatience{10};

// The protocol version of the handshake that this connection's thread has just ended.
thread_local std::string negotiated;

void noteVersion(const SSL* ssl, int where, int) {
    if (where & SSL_CB_HANDSHAKE_DONE) negotiated = SSL_get_version(ssl);
}

std::size_t contentLength(const std::string& headers) {
    std::string lower = headers;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
    const std::string name = "content-length:";
    const auto at = lower.find(name);
    return at == std::string::npos ? 0 : std::stoul(lower.substr(at + name.size()));
}

std::span<const std::uint8_t> bytes(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

// A connection's bytes, through TLS when there is a context for it.
class HttpServer::Stream {
public:
    Stream(const Socket& socket, const std::optional<TlsContext>& context) : socket_(socket) {
        if (context) tls_.emplace(*context);
    }

    // False: the client does not speak the protocol.
    [[nodiscard]] bool open() {
        if (!tls_) return true;
        try {
            for (bool done = false; !done;) {
                const auto received = receive();
                if (received.empty()) return false;
                done = tls_->handshake(received);
                if (!socket_.send(tls_->takeOutgoing())) return false;
            }
        } catch (const TlsError&) {
            (void)socket_.send(tls_->takeOutgoing());
            return false;
        }
        return true;
    }

    // Empty: the connection has ended.
    [[nodiscard]] std::string read() {
        while (true) {
            auto received = receive();
            if (received.empty()) return {};
            if (tls_) received = tls_->decrypt(received);
            if (!received.empty()) return {received.begin(), received.end()};
        }
    }

    void write(const std::string& text) {
        if (tls_)
            (void)socket_.send(tls_->encrypt(bytes(text)));
        else
            (void)socket_.send(bytes(text));
    }

private:
    [[nodiscard]] std::vector<std::uint8_t> receive() const {
        std::array<std::uint8_t, 16384> part{};
        const std::size_t count = socket_.receive(part);
        return {part.begin(), part.begin() + static_cast<std::ptrdiff_t>(count)};
    }

    const Socket& socket_;
    std::optional<TlsSession> tls_;
};

HttpServer::HttpServer(Kind kind, std::uint16_t port) : listening_(sandbox::server::listenOn("127.0.0.1", port)) {
    if (kind != Kind::Http) {
        tls_.emplace("", "");
        SSL_CTX_set_max_proto_version(tls_->get(), TLS1_3_VERSION);
        if (kind == Kind::HttpsOf13Only) SSL_CTX_set_min_proto_version(tls_->get(), TLS1_3_VERSION);
        SSL_CTX_set_info_callback(tls_->get(), noteVersion);
    }
    std::array<int, 2> pair{};
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()) != 0) throw std::runtime_error("socketpair");
    wake_ = Socket(pair[0]);
    wakeEnd_ = Socket(pair[1]);
    thread_ = std::thread([this] { accept(); });
}

HttpServer::~HttpServer() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        for (const auto& connection : connections_) connection->socket.shutdown();
    }
    changed_.notify_all();
    wakeEnd_.close();
    thread_.join();
    for (const auto& connection : connections_) connection->thread.join();
}

std::string HttpServer::url() const {
    return (tls_ ? "https://127.0.0.1:" : "http://127.0.0.1:") + std::to_string(port());
}

int HttpServer::hang() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return stopping_; });
    return 0;
}

std::vector<HttpRequest> HttpServer::requests(std::size_t count) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kPatience, [&] { return requests_.size() >= count; });
    return requests_;
}

std::vector<HttpRequest> HttpServer::taken() const {
    const std::lock_guard lock(mutex_);
    return taken_;
}

void HttpServer::accept() {
    while (true) {
        Socket client = sandbox::server::acceptOn(listening_, wake_);
        const std::lock_guard lock(mutex_);
        if (stopping_) return;
        if (client.get() < 0) continue;
        auto connection = std::make_unique<Connection>();
        connection->socket = std::move(client);
        connection->thread = std::thread([this, c = connection.get()] {
            serve(c->socket);
            c->socket.shutdown();
        });
        connections_.push_back(std::move(connection));
    }
}

void HttpServer::serve(const Socket& socket) {
    Stream stream(socket, tls_);
    if (!stream.open()) return;
    while (auto request = read(stream)) {
        if (tls_) request->tls = negotiated;
        {
            const std::lock_guard lock(mutex_);
            requests_.push_back(*request);
        }
        changed_.notify_all();
        const int status = answer(*request);
        if (status == 0) return;
        if (status < 400) {
            const std::lock_guard lock(mutex_);
            taken_.push_back(*request);
        }
        const std::string body = "{\"status\":" + std::to_string(status) + "}";
        stream.write("HTTP/1.1 " + std::to_string(status) +
                     " Status\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
    }
}

std::optional<HttpRequest> HttpServer::read(Stream& stream) const {
    const std::string kHeadEnd = "\r\n\r\n";
    std::string text;
    std::size_t head = std::string::npos;
    while ((head = text.find(kHeadEnd)) == std::string::npos) {
        const std::string more = stream.read();
        if (more.empty()) return std::nullopt;
        text += more;
    }
    HttpRequest request;
    const std::size_t line = text.find("\r\n");
    request.line = text.substr(0, line);
    request.headers = text.substr(line + 2, head - line);
    request.body = text.substr(head + kHeadEnd.size());
    const std::size_t length = contentLength(request.headers);
    if (request.headers.find("100-continue") != std::string::npos) stream.write("HTTP/1.1 100 Continue\r\n\r\n");
    while (request.body.size() < length) {
        const std::string more = stream.read();
        if (more.empty()) return std::nullopt;
        request.body += more;
    }
    return request;
}

}  // namespace torvik::test
