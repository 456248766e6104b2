// A back office and tills of their own, only as wide as the engine's box needs, on one stand-in server, with an engine
// on a clock of its own. Tests of the engine that need a database build their case on it.
#pragma once

#include <memory>

#include "engine/db/session.h"
#include "sandbox/server/server.h"
#include "tests/engine/fake_surroundings.h"

namespace torvik::test {

class SmallChain : public FakeEngine {
public:
    SmallChain();

    struct Department {
        int id = 1;
        QString number = QStringLiteral("1");
        int properties = 0;
        int storeType = 1;
        int priority = 0;
        double stockFactor = 0;
    };
    void department(const Department& department);

    struct Till {
        int department = 1;
        QString number = QStringLiteral("1");
        QString database = {};  // made if named; a till without one cannot be reached
        bool active = true;
        int syncVersion = 0;
        QString type = QStringLiteral("TorvikPOS 5");
    };
    void till(const Till& till);
    // One department with one reachable till for each of the numbers: "1/1 1/2 2/1".
    void tills(const QString& numbers);

    // Runs a batch in a database over a session of the test's own.
    void run(const QString& database, const QString& sql);
    // The first column of the first row, as text.
    [[nodiscard]] QString value(const QString& database, const QString& sql);
    // Requests so far whose text holds this.
    [[nodiscard]] int requestsWith(const std::string& text) const;

    [[nodiscard]] QString address() const;
    // OLE DB text of one of the databases, as a data-link file holds it.
    [[nodiscard]] QString connectString(const QString& database) const;
    // The pulled cable: connections are cut, new ones refused.
    void cutServer();

    static const QString kBackOffice;
    sandbox::Server server;
    db::Session target;
    db::Session source;

private:
    struct Requests;
    void connect(db::Session& session, const QString& database) const;

    std::shared_ptr<Requests> _requests;
    QStringList _departments;
};

}  // namespace torvik::test
