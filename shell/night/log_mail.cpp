// The mail is libcurl's MIME; its transfer is a multi handle of one, so that the window lives while a server hangs.
#include "shell/night/log_mail.h"

#include <curl/curl.h>

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSysInfo>
#include <QUuid>
#include <memory>
#include <string>

#include "engine/base/abort.h"

namespace torvik {

namespace {

constexpr long kConnectTimeoutMs = 6000;
constexpr long kAnswerTimeoutSeconds = 30;
constexpr int kPollMs = 20;

template <auto Free>
struct With {
    template <typename T>
    void operator()(T* object) const {
        Free(object);
    }
};
using Easy = std::unique_ptr<CURL, With<curl_easy_cleanup>>;
using Multi = std::unique_ptr<CURLM, With<curl_multi_cleanup>>;
using Mime = std::unique_ptr<curl_mime, With<curl_mime_free>>;

class TextList {
public:
    ~TextList() { curl_slist_free_all(first_); }
    void add(const QString& text) { first_ = curl_slist_append(first_, text.toUtf8().constData()); }
    [[nodiscard]] curl_slist* get() const { return first_; }

private:
    curl_slist* first_ = nullptr;
};

QString bracketed(const QString& address) {
    return u'<' + address + u'>';
}

// As in "Sun, 01 Mar 2026 04:05:06 +0100".
QString rfcDate(const QDateTime& date) {
    const int minutes = date.offsetFromUtc() / 60;
    const auto two = [](int number) { return QString::number(qAbs(number)).rightJustified(2, u'0'); };
    return QLocale::c().toString(date, QStringLiteral("ddd, dd MMM yyyy HH:mm:ss ")) +
           QLatin1Char(minutes < 0 ? '-' : '+') + two(minutes / 60) + two(minutes % 60);
}

Mime mimeOf(CURL* curl, const LogMail& mail) {
    Mime mime(curl_mime_init(curl));
    curl_mimepart* text = curl_mime_addpart(mime.get());
    curl_mime_data(text, (mail.body + QStringLiteral("\r\n")).toUtf8().constData(), CURL_ZERO_TERMINATED);
    curl_mime_type(text, "text/plain; charset=utf-8");
    curl_mime_encoder(text, "quoted-printable");
    for (const QString& file : mail.attachments) {
        curl_mimepart* part = curl_mime_addpart(mime.get());
        if (curl_mime_filedata(part, QFile::encodeName(file).constData()) != CURLE_OK)
            throw EngineError(QStringLiteral("Finner ikke filen %1").arg(file));
        curl_mime_filename(part, QFileInfo(file).fileName().toUtf8().constData());
        curl_mime_type(part, "application/rtf");
        curl_mime_encoder(part, "base64");
    }
    return mime;
}

// Runs the transfer to its end.
CURLcode transfer(CURL* curl, const std::function<void()>& pump, const std::function<bool()>& cancelled) {
    const Multi multi(curl_multi_init());
    curl_multi_add_handle(multi.get(), curl);
    CURLcode result = CURLE_ABORTED_BY_CALLBACK;
    for (int running = 1; running > 0 && !cancelled();) {
        curl_multi_perform(multi.get(), &running);
        int left = 0;
        while (const CURLMsg* message = curl_multi_info_read(multi.get(), &left))
            if (message->msg == CURLMSG_DONE) result = message->data.result;
        if (running > 0) curl_multi_poll(multi.get(), nullptr, 0, kPollMs, nullptr);
        pump();
    }
    curl_multi_remove_handle(multi.get(), curl);
    return result;
}

}  // namespace

void LogMail::send(const std::function<void()>& pump, const std::function<bool()>& cancelled) const {
    const Easy curl(curl_easy_init());
    if (!curl) throw EngineError(QStringLiteral("Klarte ikke å sende e-post"));
    TextList to;
    QStringList toHeader;
    for (const QString& each : recipients.split(u',')) {
        if (each.trimmed().isEmpty()) continue;
        to.add(bracketed(each.trimmed()));
        toHeader << bracketed(each.trimmed());
    }
    TextList headers;
    headers.add(QStringLiteral("Date: ") + rfcDate(date));
    headers.add(QStringLiteral("From: ") + bracketed(sender));
    headers.add(QStringLiteral("To: ") + toHeader.join(QStringLiteral(", ")));
    headers.add(QStringLiteral("Subject: ") + subject);
    headers.add(QStringLiteral("Message-ID: <%1@%2>")
                    .arg(QUuid::createUuid().toString(QUuid::WithoutBraces), QSysInfo::machineHostName()));

    char reason[CURL_ERROR_SIZE] = {};
    const QByteArray url = QStringLiteral("smtp://%1:%2/%3")
                               .arg(server.trimmed(), QString::number(port), QSysInfo::machineHostName())
                               .toUtf8();
    const Mime mime = mimeOf(curl.get(), *this);
    curl_easy_setopt(curl.get(), CURLOPT_URL, url.constData());
    curl_easy_setopt(curl.get(), CURLOPT_PROTOCOLS_STR, "smtp");
    curl_easy_setopt(curl.get(), CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_NONE));
    curl_easy_setopt(curl.get(), CURLOPT_PROXY, "");
    curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_CONNECTTIMEOUT_MS, kConnectTimeoutMs);
    curl_easy_setopt(curl.get(), CURLOPT_SERVER_RESPONSE_TIMEOUT, kAnswerTimeoutSeconds);
    curl_easy_setopt(curl.get(), CURLOPT_ERRORBUFFER, reason);
    curl_easy_setopt(curl.get(), CURLOPT_MAIL_FROM, bracketed(sender).toUtf8().constData());
    curl_easy_setopt(curl.get(), CURLOPT_MAIL_RCPT, to.get());
    curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(curl.get(), CURLOPT_MIMEPOST, mime.get());
    const CURLcode result = transfer(curl.get(), pump, cancelled);
    if (result == CURLE_ABORTED_BY_CALLBACK) throw EngineError(QStringLiteral("Sending av logg ble avbrutt"));
    if (result != CURLE_OK) throw EngineError(QString::fromUtf8(reason[0] ? reason : curl_easy_strerror(result)));
}

}  // namespace torvik
