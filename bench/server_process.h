// What the measurements of the session layer share: a stand-in server in a process of its own, so that its memory and
// its processor time are not the measured program's, and the tables of the work that is measured.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <QString>
#include <memory>
#include <stdexcept>

#include "engine/db/query.h"
#include "engine/db/session.h"
#include "sandbox/server/server.h"

namespace torvik::bench {

// To be made before any thread and any session.
class ServerProcess {
public:
    ServerProcess() {
        int toChild[2];
        int toParent[2];
        if (::pipe(toChild) != 0 || ::pipe(toParent) != 0) throw std::runtime_error("no pipe");
        child_ = ::fork();
        if (child_ < 0) throw std::runtime_error("no process");
        if (child_ == 0) {
            ::close(toChild[1]);
            serve(toChild[0], toParent[1]);
        }
        ::close(toChild[0]);
        ::close(toParent[1]);
        end_ = toChild[1];
        const bool told = ::read(toParent[0], &port_, sizeof port_) == sizeof port_;
        ::close(toParent[0]);
        if (!told) throw std::runtime_error("the server did not start");
    }
    ~ServerProcess() {
        ::close(end_);
        ::waitpid(child_, nullptr, 0);
    }
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    [[nodiscard]] int port() const { return port_; }
    static constexpr const char* kPassword = "sandbox";

    [[nodiscard]] std::unique_ptr<db::Session> connect(const QString& database) const {
        auto session = std::make_unique<db::Session>();
        session->SetServer(QStringLiteral("127.0.0.1,%1").arg(port_));
        session->SetUsername(QStringLiteral("sa"));
        session->SetPassword(QString::fromUtf8(kPassword));
        session->SetDatabase(database);
        session->Open();
        return session;
    }

private:
    // Serves until the parent closes its end of the pipe, or ends.
    [[noreturn]] static void serve(int until, int answer) {
        {
            sandbox::ServerOptions options;
            options.saPassword = kPassword;
            options.tls = sandbox::TlsMode::NotSupported;
            const sandbox::Server server(options);
            const int port = server.port();
            char none = 0;
            if (::write(answer, &port, sizeof port) == sizeof port)
                while (::read(until, &none, 1) > 0) {
                }
        }
        ::_exit(0);
    }

    pid_t child_ = -1;
    int end_ = -1;
    int port_ = 0;
};

inline void execute(db::Session& session, const QString& batch) {
    db::Query query(&session);
    query.ParamCheck = false;
    query.CommandTimeout = 600;
    query.SQL = {batch};
    query.ExecSQL();
}

inline QString scalar(db::Session& session, const QString& batch) {
    db::Query query(&session);
    query.CommandTimeout = 600;
    query.SQL = {batch};
    query.Open();
    return query.Fields(0).AsString();
}

// The work table of items on a till.
inline const QString kItemTable = QStringLiteral(R"(
CREATE TABLE VAREIMPORT (
    VAI_ID char(20) NOT NULL, VAI_NAVN char(50) NOT NULL, VAI_PRIS float NOT NULL,
    VAI_UTGAATT smallint NOT NULL DEFAULT 0, VAI_NUMMERTYPE varchar(20) NULL, VAI_VAREGRUPPE varchar(60) NOT NULL,
    VAI_VEILPRIS float NULL, VAI_MVASATS float NULL, VAI_KOSTPRIS float NULL, VAI_LE_ID int NULL,
    VAI_MINLAGER float NULL, VAI_MAKSLAGER float NULL, VAI_VG_ID char(4), VAI_PRISLAPP int NULL, VAI_P_ID varchar(25),
    VAI_MAKSRABATT int NULL, VAI_SLETTET bit NULL, VAI_P_NAVN varchar(100) NULL, VAI_FARGENAVN varchar(50) NULL,
    VAI_STORRELSENAVN varchar(50) NULL))");

// The values of item number n, in the table's order.
inline std::vector<db::Value> itemRow(int n) {
    const QString number = QString::number(7'000'000'000LL + n);
    return {number,
            QStringLiteral("Vare %1 blå størrelse").arg(n),
            10 + n % 990 * 0.5,
            n % 17 == 0,
            QStringLiteral("EAN"),
            QStringLiteral("Gruppe %1 for klær og sko").arg(n % 40),
            12.5 + n % 990,
            25.0,
            n % 3 == 0 ? db::Value() : db::Value(n * 0.25),
            n % 200,
            db::Value(),
            db::Value(),
            QStringLiteral("%1").arg(n % 9000 + 1000),
            1,
            QStringLiteral("P%1").arg(n / 12),
            n % 5 == 0 ? db::Value() : db::Value(50),
            false,
            QStringLiteral("Produkt nummer %1").arg(n / 12),
            QStringLiteral("Mørkeblå"),
            n % 4 == 0 ? db::Value() : db::Value("XL")};
}

}  // namespace torvik::bench
