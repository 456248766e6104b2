// See sandbox_given_server.h.
#include "tests/support/sandbox_given_server.h"

#include <QCoreApplication>
#include <QThread>

#include "engine/db/errors.h"
#include "engine/db/query.h"

namespace torvik::test {

std::optional<db::ConnectSettings> givenServer() {
    const QString given = qEnvironmentVariable("TORVIK_TEST_SERVER");
    return given.isEmpty() ? std::nullopt : std::optional(db::settingsFromOleDb(given));
}

std::optional<sandbox::chain::OtherServer> givenServerForAChain() {
    const auto settings = givenServer();
    if (!settings) return std::nullopt;
    sandbox::chain::OtherServer server;
    server.address = settings->Server.toStdString();
    server.user = settings->Username.toStdString();
    server.password = settings->Password.toStdString();
    server.prefix = uniqueDatabaseName().toStdString() + "_";
    // A chain is made database by database: the session stays while the database does.
    const auto session = std::make_shared<std::unique_ptr<db::Session>>();
    server.run = [settings = *settings, session](const std::string& name, std::string_view batch) mutable {
        const QString database = QString::fromStdString(name);
        if (!*session || settings.Database != database) {
            settings.Database = database;
            session->reset();
            *session = opened(settings);
        }
        execute(**session, QString::fromUtf8(batch.data(), qsizetype(batch.size())));
    };
    server.drop = [settings = *settings, session](const std::string& name) {
        session->reset();
        dropDatabase(settings, QString::fromStdString(name));
    };
    return server;
}

QString uniqueDatabaseName() {
    static int count = 0;
    return QStringLiteral("torvik_test_%1_%2").arg(QCoreApplication::applicationPid()).arg(++count);
}

std::unique_ptr<db::Session> opened(const db::ConnectSettings& settings) {
    auto session = std::make_unique<db::Session>();
    session->SetConnectString(db::oleDbFromSettings(settings));
    session->Open();
    return session;
}

void dropDatabase(db::ConnectSettings settings, const QString& database) {
    constexpr int kInUse = 3702;
    settings.Database = QStringLiteral("master");
    const auto session = opened(settings);
    for (int tries = 50;; --tries) {
        try {
            return execute(*session, QStringLiteral("DROP DATABASE ") + database);
        } catch (const db::StatementError& e) {
            if (e.Number != kInUse || tries == 0) throw;
            QThread::msleep(100);
        }
    }
}

void execute(db::Session& session, const QString& batch) {
    db::Query query(&session);
    query.ParamCheck = false;
    query.SQL = QStringList{batch};
    query.ExecSQL();
}

}  // namespace torvik::test
