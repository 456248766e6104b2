// See chain_session.h.
#include "tests/support/chain_session.h"

#include "engine/db/connect_string.h"

namespace torvik::test {

QString backOfficeString(const sandbox::chain::DemoChain& chain) {
    return QString::fromStdString(chain.dataLink());
}

QString tillString(const sandbox::chain::DemoChain& chain, std::size_t till) {
    const sandbox::chain::TillAddress address = chain.addressOf(till);
    db::ConnectSettings settings;
    settings.Server = QString::fromStdString(address.server);
    settings.Database = QString::fromStdString(address.database);
    settings.Username = QString::fromStdString(address.user);
    settings.Password = QString::fromStdString(address.password);
    return db::oleDbFromSettings(settings);
}

std::unique_ptr<db::Session> sessionTo(const QString& connectString) {
    auto session = std::make_unique<db::Session>();
    session->SetConnectString(connectString);
    session->Open();
    return session;
}

std::unique_ptr<db::Session> backOfficeSession(const sandbox::chain::DemoChain& chain) {
    return sessionTo(backOfficeString(chain));
}

std::unique_ptr<db::Session> tillSession(const sandbox::chain::DemoChain& chain, std::size_t till) {
    return sessionTo(tillString(chain, till));
}

}  // namespace torvik::test
