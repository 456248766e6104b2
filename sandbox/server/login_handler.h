// The way into a server: prelogin, TLS, LOGIN7, and the answer to it.
#pragma once

#include <memory>
#include <optional>

#include "sandbox/server/channel.h"
#include "sandbox/server/logins.h"
#include "sandbox/server/reply_writer.h"
#include "sandbox/server/server.h"
#include "sandbox/server/tls.h"
#include "sandbox/tds/login.h"
#include "sandbox/tds/prelogin.h"
#include "sandbox/tsql/run/session.h"

namespace sandbox::server {

// Gives a session the language that its login asks for, and tells the one that it has then: us_english where the login
// names none or one that is not known.
std::string applyLanguage(Session& session, const std::string& wanted);

class LoginHandler {
public:
    LoginHandler(Channel& channel, ReplyWriter& reply, Engine& engine, Faults& faults, const Logins& logins,
                 const TlsContext* tls, TlsMode mode)
        : channel_(channel), reply_(reply), engine_(engine), faults_(faults), logins_(logins), tls_(tls), mode_(mode) {}

    // The session of a client that is to be let in; the channel is then as the client and the server settled it. None:
    // the client is gone or has been refused. Raises StreamError.
    [[nodiscard]] std::unique_ptr<Session> run();
    // Tells the client that it is in.
    void welcome(Session& session);
    [[nodiscard]] const tds::Login& login() const { return login_; }

private:
    std::optional<std::vector<std::uint8_t>> readMessage(tds::PacketType type);
    std::optional<tds::Packet> readPacket();
    bool settleEncryption();
    bool handshake();
    bool readLogin();
    std::unique_ptr<Session> letIn();
    void refuse(const std::vector<Message>& messages);

    Channel& channel_;
    ReplyWriter& reply_;
    Engine& engine_;
    Faults& faults_;
    const Logins& logins_;
    const TlsContext* tls_;
    TlsMode mode_;
    tds::PacketReader packets_;
    std::optional<tds::Packet> ahead_;  // a login that came without a prelogin
    tds::Login login_;
    bool loginOnly_ = false;  // encryption ends with the login
};

}  // namespace sandbox::server
