// One HTTP request by libcurl: a client is made for each and freed after it. Used by the log server's sink.
#pragma once

#include <QString>
#include <chrono>
#include <memory>
#include <stdexcept>

namespace torvik {

// No connection, no answer in time, or an answer with an error status. The text names neither address nor body.
class HttpError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// How long a client waits. The defaults are what docs/log-format.md tells.
struct HttpTimeouts {
    std::chrono::milliseconds connect{2000};
    std::chrono::milliseconds whole{5000};  // from the start to the end of the answer
};

class HttpClient {
public:
    explicit HttpClient(const HttpTimeouts& timeouts = {});
    ~HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    // Once, before the first thread that makes a client.
    static void startUp();

    // The client speaks TLS 1.2 and nothing else from here on. The server's certificate is not checked.
    void attachTls();
    // Raises HttpError. The answer's body is read and forgotten, a redirection is not followed, no proxy is asked.
    void post(const QString& url, const QByteArray& body);

private:
    struct Handle;
    std::unique_ptr<Handle> handle_;
};

}  // namespace torvik
