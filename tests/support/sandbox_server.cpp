// See sandbox_server.h.
#include "tests/support/sandbox_server.h"

#include <stdexcept>

#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "tests/support/sandbox_given_server.h"

namespace torvik::test {

namespace {

QString cellText(const db::Value& value) {
    if (value.isNull()) return QStringLiteral("NULL");
    if (const auto* time = std::get_if<db::DateTime>(&value.variant()))
        return time->toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"));
    if (const auto* bytes = std::get_if<QByteArray>(&value.variant()))
        return QStringLiteral("0x") + QString::fromLatin1(bytes->toHex().toUpper());
    if (const auto* decimal = std::get_if<db::Decimal>(&value.variant())) return decimal->toQString();
    return value.toQString();
}

}  // namespace

SandboxServer::SandboxServer(Wire wire) : database_(uniqueDatabaseName()) {
    if (const auto given = givenServer()) {
        settings_ = *given;
    } else {
        sandbox::ServerOptions options;
        options.saPassword = "sandbox";
        options.tls = wire == Wire::Tls ? sandbox::TlsMode::Required : sandbox::TlsMode::NotSupported;
        server_ = std::make_unique<sandbox::Server>(options);
        settings_.Server = QStringLiteral("%1,%2").arg(QString::fromStdString(server_->host())).arg(server_->port());
        settings_.Username = QStringLiteral("sa");
        settings_.Password = QStringLiteral("sandbox");
    }
    if (wire == Wire::Tls) settings_.Encrypt = settings_.TrustServerCertificate = true;
    settings_.Database = QStringLiteral("master");
    execute(*opened(settings_), QStringLiteral("CREATE DATABASE ") + database_);
    settings_.Database = database_;
    session_ = opened(settings_);
}

SandboxServer::~SandboxServer() {
    try {
        session_->Close();
        if (server_) return;  // its databases end with it
        dropDatabase(settings_, database_);
    } catch (const db::Error& e) {
        qWarning("%s stays: %s", qPrintable(database_), e.what());
    }
}

sandbox::Server& SandboxServer::server() {
    if (!isSandbox()) throw std::logic_error("the test runs on the server that TORVIK_TEST_SERVER names");
    return *server_;
}

std::unique_ptr<db::Session> SandboxServer::connect(const QString& applicationName) const {
    db::ConnectSettings settings = settings_;
    settings.ApplicationName = applicationName;
    return opened(settings);
}

QString SandboxServer::connectString() const {
    return db::oleDbFromSettings(settings_);
}

void SandboxServer::run(const QString& batch) {
    execute(*session_, batch);
}

std::string SandboxServer::rows(const QString& batch) {
    return rows(batch, *session_);
}

std::string SandboxServer::rows(const QString& batch, db::Session& session) const {
    db::Query query(&session);
    query.ParamCheck = false;
    query.SQL = QStringList{batch};
    query.Open();
    QString text = query.FieldNames().join(QStringLiteral(" | ")) + u'\n';
    for (int row = 0; row < query.RecordCount(); ++row) {
        QStringList cells;
        for (int field = 0; field < query.FieldCount(); ++field) cells += cellText(query.ValueAt(row, field));
        text += cells.join(QStringLiteral(" | ")) + u'\n';
    }
    return text.toStdString();
}

}  // namespace torvik::test
