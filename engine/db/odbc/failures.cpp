// See failures.h.
#include "engine/db/odbc/failures.h"

#include <QtGlobal>
#include <algorithm>

#ifdef Q_OS_UNIX
#include <netdb.h>
#include <sys/socket.h>
#endif

#include "engine/db/odbc/driver.h"

namespace torvik::db::odbc {

namespace {

// Numbers below are the server's; from kFirstClientNumber to kLastClientNumber they are FreeTDS' own.
constexpr int kFirstClientNumber = 20001;
constexpr int kLastClientNumber = 20299;
constexpr int kConnectionFailed = 20002;  // FreeTDS' closing remark on any failed login

// The server closes the connection behind a message of this severity.
constexpr int kFatal = 20;

bool isUnknownDatabase(const ServerMessage& m) {
    return m.Number == 4060 || m.Number == 911;
}

bool isLoginFailure(const ServerMessage& m) {
    return (m.Number >= 18450 && m.Number <= 18488) || m.SqlState == u"28000";
}

// Microsoft's driver gives the number of the system's own answer to the name.
bool isUnknownHost(const ServerMessage& m) {
    constexpr int kHostNotFound = 11001;
    constexpr int kNoAddress = 11004;
    return m.SqlState == u"08001" && (m.Number == kHostNotFound || m.Number == kNoAddress);
}

// FreeTDS says nothing at all of a name that it cannot resolve.
bool hasAddress(const QString& server) {
#ifdef Q_OS_UNIX
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const QByteArray host = parseServer(server).Host.toUtf8();
    if (::getaddrinfo(host.constData(), nullptr, &hints, &found) != 0) return false;
    ::freeaddrinfo(found);
    return true;
#else
    Q_UNUSED(server);
    return true;
#endif
}

// 18456 follows 4060 too, so that the database is asked for first.
ConnectionError::Reason reasonOf(const QList<ServerMessage>& messages) {
    if (std::ranges::any_of(messages, isUnknownDatabase)) return ConnectionError::Reason::UnknownDatabase;
    if (std::ranges::any_of(messages, isLoginFailure)) return ConnectionError::Reason::LoginFailed;
    if (std::ranges::any_of(messages, isUnknownHost)) return ConnectionError::Reason::UnknownHost;
    if (std::ranges::any_of(messages, fromServer)) return ConnectionError::Reason::Refused;
    return ConnectionError::Reason::Unreachable;
}

// FreeTDS' closing remarks on any failed connection say nothing where another message does.
bool isRemark(const ServerMessage& m) {
    return m.Number == kConnectionFailed || (m.Number == 0 && m.SqlState == u"08001");
}

}  // namespace

bool fromServer(const ServerMessage& m) {
    return m.Number != 0 && (m.Number < kFirstClientNumber || m.Number > kLastClientNumber);
}

ServerMessage bareMessage(const QString& text) {
    ServerMessage message;
    message.Text = text;
    return message;
}

ServerMessage lostMessage() {
    return bareMessage(QStringLiteral("The connection to the server is lost"));
}

bool isTimeout(const ServerMessage& m) {
    return m.SqlState == u"HYT00";
}

bool isFatal(const ServerMessage& m) {
    return m.Severity >= kFatal;
}

bool isInformation(const ServerMessage& message) {
    return message.SqlState.startsWith(u"01");
}

ConnectionError connectFailure(QList<ServerMessage> messages, const ConnectSettings& settings) {
    messages.removeIf(isInformation);
    ConnectionError::Reason reason = reasonOf(messages);
    if (settings.Server.trimmed().isEmpty()) reason = ConnectionError::Reason::UnknownHost;
    messages.removeIf(isRemark);
    // The driver puts 18456 before 4060, which the server sent first and which says what is wrong.
    std::ranges::stable_partition(messages, isUnknownDatabase);
    if (messages.isEmpty()) {
        const bool known = hasAddress(settings.Server);
        if (!known) reason = ConnectionError::Reason::UnknownHost;
        messages +=
            bareMessage(known ? QStringLiteral("the host cannot be reached") : QStringLiteral("the host is not known"));
    }
    if (reason == ConnectionError::Reason::UnknownHost || reason == ConnectionError::Reason::Unreachable)
        messages.first().Text =
            QStringLiteral("Cannot connect to server \"%1\": %2").arg(settings.Server, messages.first().Text);
    return {reason, messages};
}

}  // namespace torvik::db::odbc
