// Prelogin, TLS and login of one connection, in the order in which a client goes through them.
#include "sandbox/server/login_handler.h"

#include <algorithm>

#include "sandbox/server/collected_reply.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox::server {
namespace {

using tds::Encryption;

constexpr std::size_t kLongestLogin = 128 * 1024;  // features and tokens counted

// [MS-TDS] 3.3.5.1: what the server answers, given what it can and what the client wants.
Encryption answer(TlsMode mode, Encryption wanted) {
    if (mode == TlsMode::NotSupported) return Encryption::NotSupported;
    if (wanted == Encryption::On || wanted == Encryption::Required) return Encryption::On;
    if (mode == TlsMode::Required) return Encryption::Required;
    return wanted;
}

}  // namespace

std::string applyLanguage(Session& session, const std::string& wanted) {
    SilentReply silent;
    std::string quoted;
    for (const char c : wanted) quoted += c == ']' ? "]]" : std::string(1, c);
    if (!wanted.empty()) session.batch("SET LANGUAGE [" + quoted + "]", silent);
    RowSetReply answer(silent);
    session.batch("SELECT @@LANGUAGE", answer);
    return answer.rows.empty() ? std::string("us_english") : std::get<std::string>(answer.rows.front().front());
}

std::unique_ptr<Session> LoginHandler::run() {
    packets_.setLargest(tds::kLargestPacket);
    ahead_ = readPacket();
    if (!ahead_) return nullptr;
    if (ahead_->type == tds::PacketType::Prelogin && !settleEncryption()) return nullptr;
    if (!readLogin()) return nullptr;
    if (mode_ == TlsMode::Required && !channel_.encrypted()) {
        refuse({errorMessage<17835>().atLine(1)});
        return nullptr;
    }
    if (loginOnly_) channel_.endTls();
    return letIn();
}

std::optional<tds::Packet> LoginHandler::readPacket() {
    if (ahead_) return std::exchange(ahead_, std::nullopt);
    while (true) {
        if (auto packet = packets_.next()) return packet;
        // No byte more than the packet has: what follows may be encrypted otherwise.
        const std::vector<std::uint8_t> bytes = channel_.receive(packets_.missing());
        if (bytes.empty()) return std::nullopt;
        packets_.feed(bytes);
    }
}

std::optional<std::vector<std::uint8_t>> LoginHandler::readMessage(tds::PacketType type) {
    std::vector<std::uint8_t> message;
    while (true) {
        const std::optional<tds::Packet> packet = readPacket();
        if (!packet) return std::nullopt;
        if (packet->type != type) throw tds::StreamError("a request before the login");
        message.insert(message.end(), packet->body.begin(), packet->body.end());
        if (message.size() > kLongestLogin) throw tds::StreamError("a login that is too long");
        if (packet->last()) return message;
    }
}

bool LoginHandler::settleEncryption() {
    const auto message = readMessage(tds::PacketType::Prelogin);
    if (!message) return false;
    const tds::Prelogin wanted = tds::readPrelogin(*message);
    const Encryption settled = answer(mode_, wanted.encryption);
    std::vector<std::uint8_t> reply = tds::writePrelogin(settled, wanted.fedAuth);
    if (!channel_.send(reply_.packets().packLast(tds::PacketType::Reply, reply))) return false;
    if (settled == Encryption::NotSupported) return true;
    // A client that was told "required" and cannot goes away by itself, or logs in and is refused.
    if (settled == Encryption::Required && wanted.encryption == Encryption::NotSupported) return true;
    loginOnly_ = settled == Encryption::Off;
    return handshake();
}

// The handshake's records travel as the bodies of prelogin packets, both ways; afterwards they carry the packets.
bool LoginHandler::handshake() {
    const auto session = std::make_shared<TlsSession>(*tls_);
    bool complete = false;
    while (!complete) {
        const std::optional<tds::Packet> packet = readPacket();
        if (!packet) return false;
        if (packet->type != tds::PacketType::Prelogin) throw tds::StreamError("a request within the TLS handshake");
        complete = session->handshake(packet->body);
        std::vector<std::uint8_t> reply = session->takeOutgoing();
        if (!reply.empty() && !channel_.send(reply_.packets().packLast(tds::PacketType::Prelogin, reply))) return false;
    }
    channel_.startTls(session);
    return true;
}

bool LoginHandler::readLogin() {
    const auto message = readMessage(tds::PacketType::Login7);
    if (!message) return false;
    login_ = tds::readLogin(*message);
    reply_.setVersion(login_.version);
    return true;
}

std::unique_ptr<Session> LoginHandler::letIn() {
    const Message failed = loginFailed(login_.user);
    if (auto refusal = faults_.takeLoginRefusal(login_.user)) {
        if (refusal->line == 0) refusal->line = 1;
        if (refusal->number == failed.number) {
            refuse({*refusal});
        } else {
            refuse({*refusal, failed});
        }
        return nullptr;
    }
    if (login_.integrated) {
        refuse({errorMessage<18452>().atLine(1)});
        return nullptr;
    }
    if (login_.changesPassword) {
        refuse({errorMessage<18463>(login_.user).atLine(1)});
        return nullptr;
    }
    if (login_.fedAuth || !logins_.accepts(login_.user, login_.password)) {
        refuse({failed});
        return nullptr;
    }
    LoginInfo info;
    info.user = login_.user;
    info.database = login_.database;
    info.host = login_.host;
    info.program = login_.program;
    info.language = login_.language;
    info.odbc = login_.odbc;
    try {
        return std::make_unique<Session>(engine_, info);
    } catch (const SqlError& e) {
        std::vector<Message> messages = e.messages;
        for (Message& m : messages) m.line = std::max(m.line, 1);
        messages.push_back(failed);
        refuse(messages);
        return nullptr;
    }
}

void LoginHandler::refuse(const std::vector<Message>& messages) {
    for (const Message& m : messages) reply_.error(m);
    reply_.finish();
    channel_.closeGently();
}

void LoginHandler::welcome(Session& session) {
    const std::size_t size =
        login_.packetSize == 0 ? tds::kDefaultPacket
                               : std::clamp<std::size_t>(login_.packetSize, tds::kSmallestPacket, tds::kLargestPacket);
    const std::string language = applyLanguage(session, login_.language);
    reply_.packets().setSpid(static_cast<std::uint16_t>(session.spid()));
    tds::TokenWriter tokens = reply_.tokens();
    tokens.databaseChange(session.database(), "master");
    tokens.info(errorMessage<5701, 2>(session.database()).atLine(1));
    tokens.collationChange();
    tokens.languageChange(language, "");
    tokens.info(errorMessage<5703>(language).atLine(1));
    tokens.loginAck();
    tokens.packetSizeChange(size, tds::kDefaultPacket);
    reply_.finish();
    reply_.packets().setSize(size);
}

}  // namespace sandbox::server
