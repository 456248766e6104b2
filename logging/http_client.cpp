// The one file that includes libcurl.
#include "logging/http_client.h"

#include <curl/curl.h>
#include <openssl/ssl.h>

#include <csignal>
#include <mutex>

namespace torvik {

namespace {

constexpr int kVerifyDepth = 2;

std::size_t forget(char*, std::size_t size, std::size_t count, void*) {
    return size * count;
}

CURLcode setVerifyDepth(CURL*, void* context, void*) {
    SSL_CTX_set_verify_depth(static_cast<SSL_CTX*>(context), kVerifyDepth);
    return CURLE_OK;
}

}  // namespace

struct HttpClient::Handle {
    CURL* curl = curl_easy_init();
    ~Handle() { curl_easy_cleanup(curl); }

    template <typename T>
    void set(CURLoption option, T value) const {
        const CURLcode code = curl_easy_setopt(curl, option, value);
        if (code != CURLE_OK) throw HttpError(curl_easy_strerror(code));
    }
};

// OpenSSL must not clean up at the process's exit: a sink of the process-wide logger may still be posting then. And a
// server that goes away while it is written to must not end the process, which is what SIGPIPE would do.
void HttpClient::startUp() {
    static std::once_flag once;
    std::call_once(once, [] {
        OPENSSL_init_ssl(OPENSSL_INIT_NO_ATEXIT, nullptr);
        curl_global_init(CURL_GLOBAL_DEFAULT);
#ifdef SIGPIPE
        std::signal(SIGPIPE, SIG_IGN);
#endif
    });
}

HttpClient::HttpClient(const HttpTimeouts& timeouts) {
    startUp();
    handle_ = std::make_unique<Handle>();
    if (!handle_->curl) throw HttpError("no HTTP client could be made");
    handle_->set(CURLOPT_NOSIGNAL, 1L);
    handle_->set(CURLOPT_PROXY, "");
    handle_->set(CURLOPT_PROTOCOLS_STR, "http");
    handle_->set(CURLOPT_DEFAULT_PROTOCOL, "http");
    handle_->set(CURLOPT_FAILONERROR, 1L);
    handle_->set(CURLOPT_WRITEFUNCTION, forget);
    handle_->set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(timeouts.connect.count()));
    handle_->set(CURLOPT_TIMEOUT_MS, static_cast<long>(timeouts.whole.count()));
}

HttpClient::~HttpClient() = default;

void HttpClient::attachTls() {
    handle_->set(CURLOPT_PROTOCOLS_STR, "https");
    handle_->set(CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2} | long{CURL_SSLVERSION_MAX_TLSv1_2});
    handle_->set(CURLOPT_SSL_CTX_FUNCTION, setVerifyDepth);
    handle_->set(CURLOPT_SSL_VERIFYPEER, 0L);
    handle_->set(CURLOPT_SSL_VERIFYHOST, 0L);
}

void HttpClient::post(const QString& url, const QByteArray& body) {
    handle_->set(CURLOPT_URL, url.toUtf8().constData());
    handle_->set(CURLOPT_POST, 1L);
    handle_->set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    handle_->set(CURLOPT_POSTFIELDS, body.constData());
    const CURLcode code = curl_easy_perform(handle_->curl);
    if (code != CURLE_OK) throw HttpError(curl_easy_strerror(code));
}

}  // namespace torvik
