// A session of greeting, EHLO, NOOP and QUIT, which no server minds.
#include "shell/setup/mail_server_check.h"

#include <curl/curl.h>

#include <memory>

#include "engine/base/abort.h"

namespace torvik {

namespace {

constexpr long kTimeoutMs = 6000;
constexpr int kPollMs = 20;

std::size_t keepHeader(char* text, std::size_t size, std::size_t count, void* to) {
    static_cast<QByteArray*>(to)->append(text, static_cast<qsizetype>(size * count));
    return size * count;
}

}  // namespace

QString greetingOf(const QString& server, int port, const std::function<void()>& pump) {
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), curl_easy_cleanup);
    const std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi(curl_multi_init(), curl_multi_cleanup);
    const QByteArray url = QStringLiteral("smtp://%1:%2").arg(server.trimmed(), QString::number(port)).toUtf8();
    QByteArray said;
    char reason[CURL_ERROR_SIZE] = {};
    curl_easy_setopt(curl.get(), CURLOPT_URL, url.constData());
    curl_easy_setopt(curl.get(), CURLOPT_PROTOCOLS_STR, "smtp");
    curl_easy_setopt(curl.get(), CURLOPT_PROXY, "");
    curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_NOBODY, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_CUSTOMREQUEST, "NOOP");
    curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT_MS, kTimeoutMs);
    curl_easy_setopt(curl.get(), CURLOPT_ERRORBUFFER, reason);
    curl_easy_setopt(curl.get(), CURLOPT_HEADERFUNCTION, keepHeader);
    curl_easy_setopt(curl.get(), CURLOPT_HEADERDATA, &said);
    curl_multi_add_handle(multi.get(), curl.get());
    CURLcode result = CURLE_OK;
    for (int running = 1; running > 0;) {
        curl_multi_perform(multi.get(), &running);
        int left = 0;
        while (const CURLMsg* message = curl_multi_info_read(multi.get(), &left)) result = message->data.result;
        if (running > 0) curl_multi_poll(multi.get(), nullptr, 0, kPollMs, nullptr);
        pump();
    }
    curl_multi_remove_handle(multi.get(), curl.get());
    if (result != CURLE_OK) throw EngineError(QString::fromUtf8(reason[0] ? reason : curl_easy_strerror(result)));
    return QString::fromUtf8(said).section(u'\r', 0, 0).trimmed();
}

}  // namespace torvik
