// The log server's sink against a real web server: what it posts, over which protocol, and what it loses.
#include "logging/seq_sink.h"

#include <gtest/gtest.h>

#include "logging/logger.h"
#include "tests/support/http_server.h"

namespace torvik {
namespace {

using test::HttpRequest;
using test::HttpServer;

constexpr HttpTimeouts kShort{std::chrono::milliseconds(100), std::chrono::milliseconds(100)};

std::shared_ptr<ILogEntry> event(const QString& text = QStringLiteral("Hei")) {
    return std::make_shared<TLogEntry>(TLogLevel::llInformation, text);
}

QString urlOf(const HttpServer& server) {
    return QString::fromStdString(server.url());
}

std::string bodyOf(const std::shared_ptr<ILogEntry>& entry) {
    return entry->FormatCompactJson().toStdString();
}

TEST(SeqSink, PostsTheCompactJsonOfOneEventInOneRequest) {
    HttpServer server;
    TSeqSink sink(urlOf(server), QString());
    const auto first = event(QStringLiteral("Hentet oppgjør"));
    const auto second = event();
    sink.Write(first);
    sink.Write(second);
    const auto requests = server.requests(2);
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].line, "POST /api/events/raw?clef HTTP/1.1");
    EXPECT_EQ(requests[0].body, bodyOf(first));
    EXPECT_EQ(requests[1].body, bodyOf(second));
    EXPECT_EQ(requests[0].tls, "");
}

TEST(SeqSink, AddressIsTheSameWithAndWithoutAFinalSlashAndEndsInTheKey) {
    HttpServer server;
    TSeqSink(urlOf(server), QStringLiteral("K")).Write(event());
    TSeqSink(urlOf(server) + QLatin1Char('/'), QStringLiteral("K")).Write(event());
    for (const HttpRequest& request : server.requests(2))
        EXPECT_EQ(request.line, "POST /api/events/raw?clef&apiKey=K HTTP/1.1");
}

TEST(SeqSink, AddressMayLieBelowAPath) {
    HttpServer server;
    TSeqSink(urlOf(server) + QStringLiteral("/logg"), QString()).Write(event());
    EXPECT_EQ(server.requests(1).at(0).line, "POST /logg/api/events/raw?clef HTTP/1.1");
}

// The server speaks 1.3 as well, and nobody has signed its certificate.
TEST(SeqSink, SpeaksTls12WithoutCheckingTheCertificate) {
    HttpServer server(HttpServer::Kind::Https);
    const auto entry = event();
    TSeqSink(urlOf(server), QString()).Write(entry);
    const auto requests = server.requests(1);
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].tls, "TLSv1.2");
    EXPECT_EQ(requests[0].body, bodyOf(entry));
}

TEST(SeqSink, AddressInCapitalsAttachesTls) {
    HttpServer server(HttpServer::Kind::Https);
    TSeqSink(urlOf(server).replace(QStringLiteral("https"), QStringLiteral("HTTPS")), QString()).Write(event());
    EXPECT_EQ(server.requests(1).at(0).tls, "TLSv1.2");
}

TEST(SeqSink, SpeaksNoOtherTls) {
    HttpServer server(HttpServer::Kind::HttpsOf13Only);
    TSeqSink(urlOf(server), QString()).Write(event());
    EXPECT_TRUE(server.taken().empty());
}

TEST(SeqSink, DoesNotSpeakTlsToAPlainAddress) {
    HttpServer server(HttpServer::Kind::Https);
    TSeqSink(urlOf(server).replace(QStringLiteral("https"), QStringLiteral("http")), QString()).Write(event());
    EXPECT_TRUE(server.taken().empty());
}

TEST(SeqSink, ErrorStatusIsNeitherRaisedNorTriedAgain) {
    HttpServer server;
    server.answer = [](const HttpRequest& request) { return request.body.size() > 1000 ? 413 : 201; };
    TSeqSink sink(urlOf(server), QString());
    const auto before = event(QStringLiteral("før"));
    const auto after = event(QStringLiteral("etter"));
    sink.Write(before);
    sink.Write(event(QString(2000, QLatin1Char('x'))));
    sink.Write(after);
    EXPECT_EQ(server.requests(3).size(), 3u);
    const auto taken = server.taken();
    ASSERT_EQ(taken.size(), 2u);
    EXPECT_EQ(taken[0].body, bodyOf(before));
    EXPECT_EQ(taken[1].body, bodyOf(after));
}

TEST(SeqSink, EventOfSeveralMegabytesGoesThrough) {
    HttpServer server;
    const auto entry = event(QString(3'000'000, QLatin1Char('x')));
    TSeqSink(urlOf(server), QString()).Write(entry);
    EXPECT_EQ(server.requests(1).at(0).body, bodyOf(entry));
}

TEST(SeqSink, ConnectionThatEndsWithoutAnAnswerLosesTheEvent) {
    HttpServer server;
    server.answer = [](const HttpRequest&) { return 0; };
    TSeqSink sink(urlOf(server), QString());
    sink.Write(event());
    sink.Write(event());
    EXPECT_EQ(server.requests(2).size(), 2u);
}

TEST(SeqSink, RefusedConnectionLosesTheEvent) {
    QString url;
    {
        const HttpServer gone;
        url = urlOf(gone);
    }
    TSeqSink sink(url, QString());
    EXPECT_NO_THROW(sink.Write(event()));
}

TEST(SeqSink, ServerThatHangsCostsTheTimeOutAndTheEvent) {
    HttpServer server;
    server.answer = [&server](const HttpRequest& request) {
        return request.body.find("henger") == std::string::npos ? 201 : server.hang();
    };
    TSeqSink sink(urlOf(server), QString(), kShort);
    sink.Write(event(QStringLiteral("henger")));
    const auto next = event(QStringLiteral("neste"));
    sink.Write(next);
    ASSERT_EQ(server.taken().size(), 1u);
    EXPECT_EQ(server.taken()[0].body, bodyOf(next));
}

TEST(SeqSink, AddressThatIsNoneLosesTheEvent) {
    for (const char* url : {"http://", "ftp://127.0.0.1/", "file:///tmp/", "htp:/x", "http://[::"})
        EXPECT_NO_THROW(TSeqSink(QString::fromUtf8(url), QString(), kShort).Write(event())) << url;
}

TEST(SeqSink, TimeoutsUnlessGivenAreTwoSecondsForAConnectionAndFiveInAll) {
    EXPECT_EQ(HttpTimeouts().connect, std::chrono::seconds(2));
    EXPECT_EQ(HttpTimeouts().whole, std::chrono::seconds(5));
}

}  // namespace
}  // namespace torvik
