#include "tests/fleet/support/fleet_run.h"

#include <QFile>
#include <stdexcept>

#include "engine/db/query.h"
#include "engine/roster/avdeling.h"

namespace torvik::test {

namespace {

enum State { kOff = 1, kRefuses, kDrops, kLacksTable };

}  // namespace

FleetRun::FleetRun(const sandbox::chain::ChainOptions& options) : ChainRun(options) {
    engine.ffraOppgjorStatus = std::make_unique<TfraOppgjorStatus>();
    target.Open();
    engine.Avdeling->SetKasseCollection(std::make_shared<TKasseCollection>());
}

sandbox::chain::ChainOptions FleetRun::tills(std::vector<int> versions) {
    sandbox::chain::ChainOptions options;
    options.departments = 1;
    options.tills = static_cast<int>(versions.size());
    options.days = 1;
    options.ordersADay = 1;
    options.items = 5;
    options.versions = std::move(versions);
    return options;
}

void FleetRun::spoilTills(const std::string& dropsAt) {
    chain.till(kOff).stopListening();
    chain.till(kOff).dropConnections();
    chain.till(kRefuses).faults().refuseUser(sandbox::chain::DemoChain::kTillUser);
    chain.till(kDrops).faults().add({.match = {.textContains = dropsAt}});
    chain.runInTill(kLacksTable, "DROP TABLE BINARYOBJECT");
}

void FleetRun::allowLogins() {
    chain.till(kRefuses).faults().allowUser(sandbox::chain::DemoChain::kTillUser);
}

QString FleetRun::file(const QString& name, const QByteArray& content) {
    QFile made(folder.filePath(name));
    if (!made.open(QIODevice::WriteOnly)) throw std::runtime_error("no file");
    made.write(content);
    return made.fileName();
}

QByteArray FleetRun::bytes(qsizetype count) {
    QByteArray all(count, Qt::Uninitialized);
    quint32 state = 12345;
    for (char& c : all) {
        state = state * 1664525 + 1013904223;
        c = static_cast<char>(state >> 24);
    }
    return all;
}

std::vector<std::string> FleetRun::objects(std::size_t till) const {
    return tillRows(till, "SELECT BO_ID, BO_TYPE, BO_DIRECTION, BO_STATUS, BO_OBJECT FROM BINARYOBJECT ORDER BY BO_ID");
}

std::string FleetRun::object(int id, const char* type, int direction, const QByteArray& content) {
    return std::to_string(id) + " | " + type + " | " + std::to_string(direction) + " | 0 | 0x" +
           content.toHex().toUpper().toStdString();
}

QByteArray FleetRun::objectOf(std::size_t till, const std::string& type) const {
    const auto rows = tillRows(till, "SELECT BO_OBJECT FROM BINARYOBJECT WHERE BO_TYPE = '" + type + "'");
    if (rows.size() != 1) throw std::runtime_error(std::to_string(rows.size()) + " rows");
    return QByteArray::fromHex(QByteArray::fromStdString(rows.front().substr(2)));
}

QStringList FleetRun::lines() const {
    QStringList kept;
    for (const QString& line : log())
        if (!line.startsWith(u"Venter i ") && !line.startsWith(u"Database versjon ")) kept << line;
    return kept;
}

}  // namespace torvik::test
