// One POST for each event; what the server does not take is only in the file.
#include "logging/seq_sink.h"

namespace torvik {

namespace {

QString addressOf(const QString& serverUrl, const QString& apiKey) {
    QString url = serverUrl;
    if (!url.endsWith(QLatin1Char('/'))) url += QLatin1Char('/');
    url += QLatin1String("api/events/raw?clef");
    if (!apiKey.isEmpty()) url += QLatin1String("&apiKey=") + apiKey;
    return url;
}

}  // namespace

TSeqSink::TSeqSink(const QString& ServerUrl, const QString& ApiKey, const HttpTimeouts& timeouts)
    : FUrl(addressOf(ServerUrl, ApiKey)), timeouts_(timeouts) {
    HttpClient::startUp();
}

void TSeqSink::Write(const std::shared_ptr<ILogEntry>& entry) {
    const QByteArray body = entry->FormatCompactJson().toUtf8();
    try {
        HttpClient client(timeouts_);
        if (FUrl.toLower().startsWith(QLatin1String("https://"))) client.attachTls();
        client.post(FUrl, body);
    } catch (const std::exception&) {
        // lost for the server; not told, not tried again, not kept
    }
}

}  // namespace torvik
