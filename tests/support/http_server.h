// A web server for tests, HTTP or HTTPS with a certificate that it signs itself: keeps each request it is sent and
// answers as the test says, each connection on a thread of its own.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "sandbox/server/socket.h"
#include "sandbox/server/tls.h"

namespace torvik::test {

struct HttpRequest {
    std::string line;     // "POST /path HTTP/1.1"
    std::string headers;  // one a line
    std::string body;
    std::string tls;  // "TLSv1.2"; empty without TLS
};

class HttpServer {
public:
    enum class Kind { Http, Https, HttpsOf13Only };

    // port 0: any free one.
    explicit HttpServer(Kind kind = Kind::Http, std::uint16_t port = 0);
    ~HttpServer();  // ends what is under way, hanging answers too
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    [[nodiscard]] std::string url() const;  // without a final "/"
    [[nodiscard]] std::uint16_t port() const { return sandbox::server::portOf(listening_); }

    // The status that a request gets; 0 ends the connection without an answer. Called on the connection's thread, 201
    // unless set. Set it before the first request.
    std::function<int(const HttpRequest&)> answer = [](const HttpRequest&) { return 201; };
    // For `answer`: gives no answer as long as the server stands.
    int hang();

    // The first `count` requests, waited for; fewer when they do not come within ten seconds.
    [[nodiscard]] std::vector<HttpRequest> requests(std::size_t count);
    // Those that were answered with a status below 400, so far.
    [[nodiscard]] std::vector<HttpRequest> taken() const;

private:
    struct Connection {
        sandbox::server::Socket socket;
        std::thread thread;
    };
    class Stream;

    void accept();
    void serve(const sandbox::server::Socket& socket);
    [[nodiscard]] std::optional<HttpRequest> read(Stream& stream) const;

    std::optional<sandbox::server::TlsContext> tls_;
    sandbox::server::Socket listening_;
    sandbox::server::Socket wake_;
    sandbox::server::Socket wakeEnd_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<HttpRequest> requests_;
    std::vector<HttpRequest> taken_;
    std::vector<std::unique_ptr<Connection>> connections_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace torvik::test
