// The mail is libcurl's MIME. It is sent on a thread of its own, since libcurl waits in one piece for the server's word
// on the mail, and the window is to live while a server hangs.
#include "shell/night/log_mail.h"

#include <curl/curl.h>

#ifndef Q_OS_WIN
#include <sys/socket.h>
#include <unistd.h>
#endif

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QScopeGuard>
#include <QSysInfo>
#include <QUuid>
#include <chrono>
#include <future>
#include <memory>
#include <mutex>

#include "engine/base/abort.h"

namespace torvik {

namespace {

constexpr long kConnectTimeoutMs = 6000;
constexpr long kAnswerTimeoutSeconds = 30;
constexpr std::chrono::milliseconds kPoll{20};

template <auto Free>
struct With {
    template <typename T>
    void operator()(T* object) const {
        Free(object);
    }
};
using Easy = std::unique_ptr<CURL, With<curl_easy_cleanup>>;
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

// The connection of a transfer, which a cancel cuts: libcurl itself would wait for the server's word even then.
class Line {
public:
    explicit Line(CURL* curl) {
        curl_easy_setopt(curl, CURLOPT_SOCKOPTFUNCTION, &Line::opened);
        curl_easy_setopt(curl, CURLOPT_SOCKOPTDATA, this);
        curl_easy_setopt(curl, CURLOPT_CLOSESOCKETFUNCTION, &Line::closing);
        curl_easy_setopt(curl, CURLOPT_CLOSESOCKETDATA, this);
        curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
        curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, &Line::isCut);
        curl_easy_setopt(curl, CURLOPT_XFERINFODATA, this);
    }
    void cut() {
        const std::scoped_lock lock(mutex_);
        cut_ = true;
        if (socket_ != CURL_SOCKET_BAD) ::shutdown(socket_, kBothWays);
    }

private:
#ifdef Q_OS_WIN
    static constexpr int kBothWays = SD_BOTH;
    static int close(curl_socket_t socket) {
        return ::closesocket(socket);
    }
#else
    static constexpr int kBothWays = SHUT_RDWR;
    static int close(curl_socket_t socket) {
        return ::close(socket);
    }
#endif
    static int opened(void* line, curl_socket_t socket, curlsocktype) {
        auto& self = *static_cast<Line*>(line);
        const std::scoped_lock lock(self.mutex_);
        self.socket_ = socket;
        return self.cut_ ? CURL_SOCKOPT_ERROR : CURL_SOCKOPT_OK;
    }
    static int closing(void* line, curl_socket_t socket) {
        auto& self = *static_cast<Line*>(line);
        const std::scoped_lock lock(self.mutex_);
        if (self.socket_ == socket) self.socket_ = CURL_SOCKET_BAD;
        return close(socket);
    }
    static int isCut(void* line, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
        auto& self = *static_cast<Line*>(line);
        const std::scoped_lock lock(self.mutex_);
        return self.cut_ ? 1 : 0;
    }

    std::mutex mutex_;
    curl_socket_t socket_ = CURL_SOCKET_BAD;
    bool cut_ = false;
};

// Keeps the server's last line: libcurl does not always say why a mail was refused.
std::size_t keepReply(char* text, std::size_t size, std::size_t count, void* reply) {
    *static_cast<QByteArray*>(reply) = QByteArray(text, static_cast<qsizetype>(size * count)).trimmed();
    return size * count;
}

// Runs the transfer to its end, or until it is cancelled.
CURLcode transfer(CURL* curl, Line& line, const std::function<void()>& pump, const std::function<bool()>& cancelled) {
    std::future<CURLcode> result = std::async(std::launch::async, [curl] { return curl_easy_perform(curl); });
    auto left = qScopeGuard([&line] { line.cut(); });  // when an event raises
    bool wasCancelled = false;
    while (result.wait_for(kPoll) != std::future_status::ready) {
        if (!wasCancelled && cancelled()) {
            wasCancelled = true;
            line.cut();
        }
        pump();
    }
    left.dismiss();
    return wasCancelled ? CURLE_ABORTED_BY_CALLBACK : result.get();
}

}  // namespace

void LogMail::send(const std::function<void()>& pump, const std::function<bool()>& cancelled) const {
    Easy curl(curl_easy_init());
    if (!curl) throw EngineError(QStringLiteral("Klarte ikke å sende e-post"));
    Line line(curl.get());
    const auto closed = qScopeGuard([&curl] { curl.reset(); });  // closes the line, which has to be there still
    TextList to;
    QStringList toHeader;
    for (const QString& each : recipients.split(u',')) {
        if (each.trimmed().isEmpty()) continue;
        to.add(bracketed(each.trimmed()));
        toHeader << bracketed(each.trimmed());
    }
    // libcurl takes a mail to nobody for a question to the server, and says that all went well.
    if (toHeader.isEmpty()) throw EngineError(QStringLiteral("Loggen har ingen mottaker"));
    TextList headers;
    headers.add(QStringLiteral("Date: ") + rfcDate(date));
    headers.add(QStringLiteral("From: ") + bracketed(sender));
    headers.add(QStringLiteral("To: ") + toHeader.join(QStringLiteral(", ")));
    headers.add(QStringLiteral("Subject: ") + subject);
    headers.add(QStringLiteral("Message-ID: <%1@%2>")
                    .arg(QUuid::createUuid().toString(QUuid::WithoutBraces), QSysInfo::machineHostName()));

    char reason[CURL_ERROR_SIZE] = {};
    QByteArray reply;
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
    curl_easy_setopt(curl.get(), CURLOPT_HEADERFUNCTION, keepReply);
    curl_easy_setopt(curl.get(), CURLOPT_HEADERDATA, &reply);
    curl_easy_setopt(curl.get(), CURLOPT_MAIL_FROM, bracketed(sender).toUtf8().constData());
    curl_easy_setopt(curl.get(), CURLOPT_MAIL_RCPT, to.get());
    curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(curl.get(), CURLOPT_MIMEPOST, mime.get());
    const CURLcode result = transfer(curl.get(), line, pump, cancelled);
    if (result == CURLE_ABORTED_BY_CALLBACK) throw EngineError(QStringLiteral("Sending av logg ble avbrutt"));
    if (result == CURLE_OK) return;
    QString told = QString::fromUtf8(reason[0] ? reason : curl_easy_strerror(result));
    if (reply.startsWith('4') || reply.startsWith('5')) told += QStringLiteral(": ") + QString::fromUtf8(reply);
    throw EngineError(told);
}

}  // namespace torvik
