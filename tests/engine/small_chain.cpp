#include "tests/engine/small_chain.h"

#include <mutex>

#include "engine/db/query.h"

namespace torvik::test {

namespace {

const char kBackOfficeSchema[] = R"(
CREATE TABLE Kunde (Ku_Id int NOT NULL PRIMARY KEY, Ku_Navn varchar(40), Ku_Adresse1 char(40))
CREATE TABLE Internkunde (
    Ik_Ku_Id int NOT NULL PRIMARY KEY, Ik_Avdelingsnummer char(10), Ik_Modemtelefon varchar(20), Ik_AntallKasser int,
    Ik_KasseBong1 varchar(40), Ik_KasseBong2 varchar(40), Ik_KasseBong3 varchar(40), Ik_KasseBong4 varchar(40),
    Ik_Foretaksnummer varchar(20), Ik_Properties int, Ik_Butikktype int, Ik_PlukkPrioritet int,
    Ik_FaktorForLagernivaa float)
CREATE TABLE KasseType (Kt_Id int NOT NULL PRIMARY KEY, Kt_Navn varchar(40))
CREATE TABLE Internkundekasse (
    Ikk_Ik_Ku_Id int NOT NULL, Ikk_Kassenummer char(10) NOT NULL, Ikk_Server char(60), Ikk_Database char(60),
    Ikk_Brukernavn char(30), Ikk_Passord char(30), Ikk_AutentiseringType int, Ikk_Provider int, Ikk_SynkVersjon int,
    Ikk_Aktiv int, Ikk_Kt_Id int, PRIMARY KEY (Ikk_Ik_Ku_Id, Ikk_Kassenummer))
CREATE TABLE Vare (Va_Id char(20) NOT NULL PRIMARY KEY)
CREATE TABLE VareAlias (Vr_Id char(20) NOT NULL PRIMARY KEY, Vr_Va_Id char(20))
CREATE TABLE Innstillinger (In_DagligJobbFlagg int, in_dbversjon float)
INSERT INTO Innstillinger VALUES (3, 12.5)
CREATE TABLE dts_logg (
    dl_id int IDENTITY(1, 1) NOT NULL PRIMARY KEY, dl_dlt_id int NOT NULL, dl_ik_ku_id int NOT NULL,
    dl_kassenr varchar(20) NOT NULL, dl_tidspunkt datetime NOT NULL, dl_dp_id int NOT NULL, dl_info varchar(255) NULL)
)";

const char kTillSchema[] = R"(
CREATE TABLE innstillinger (in_dbversion char(20), in_avdnr char(10), in_kassenr char(10))
CREATE TABLE OPPGJOR (OP_ID int, OP_TYPE varchar(20))
)";

sandbox::ServerOptions options() {
    sandbox::ServerOptions options;
    options.saPassword = "hemmelig";
    options.tls = sandbox::TlsMode::NotSupported;
    options.engine.serverName = "BAKROM";
    return options;
}

QString quoted(const QString& text) {
    return u'\'' + QString(text).replace(QStringLiteral("'"), QStringLiteral("''")) + u'\'';
}

}  // namespace

struct SmallChain::Requests {
    mutable std::mutex mutex;
    std::vector<std::string> texts;
};

const QString SmallChain::kBackOffice = QStringLiteral("Torvik");

SmallChain::SmallChain() : server(options()), _requests(std::make_shared<Requests>()) {
    run(QStringLiteral("master"), QStringLiteral("CREATE DATABASE ") + kBackOffice);
    run(kBackOffice, QString::fromUtf8(kBackOfficeSchema));
    connect(target, kBackOffice);
    engine.SetTargetConnection(&target);
    engine.SourceConnection = &source;
    server.faults().observe([requests = _requests](const sandbox::RequestInfo& request) {
        const std::lock_guard lock(requests->mutex);
        requests->texts.push_back(request.text);
    });
}

QString SmallChain::address() const {
    return QStringLiteral("127.0.0.1,%1").arg(server.port());
}

QString SmallChain::connectString(const QString& database) const {
    db::Session session;
    connect(session, database);
    return session.ConnectString();
}

void SmallChain::connect(db::Session& session, const QString& database) const {
    session.SetServer(address());
    session.SetDatabase(database);
    session.SetUsername(QStringLiteral("sa"));
    session.SetPassword(QStringLiteral("hemmelig"));
}

void SmallChain::run(const QString& database, const QString& sql) {
    db::Session session;
    connect(session, database);
    session.Open();
    db::Query query(&session);
    query.SQL = QStringList{sql};
    query.ExecSQL();
}

QString SmallChain::value(const QString& database, const QString& sql) {
    db::Session session;
    connect(session, database);
    session.Open();
    db::Query query(&session);
    query.SQL = QStringList{sql};
    query.Open();
    return query.Fields(0).AsString();
}

int SmallChain::requestsWith(const std::string& text) const {
    const std::lock_guard lock(_requests->mutex);
    int count = 0;
    for (const std::string& request : _requests->texts) count += request.find(text) != std::string::npos ? 1 : 0;
    return count;
}

void SmallChain::cutServer() {
    server.stopListening();
    server.dropConnections();
}

void SmallChain::department(const Department& d) {
    const QString id = QString::number(d.id);
    run(kBackOffice, QStringLiteral("INSERT INTO Kunde VALUES (%1, 'Kjeden', 'Storgata %1')").arg(id));
    run(kBackOffice, QStringLiteral("INSERT INTO Internkunde (Ik_Ku_Id, Ik_Avdelingsnummer, Ik_Properties, "
                                    "Ik_Butikktype, Ik_PlukkPrioritet, Ik_FaktorForLagernivaa) VALUES "
                                    "(%1, %2, %3, %4, %5, %6)")
                         .arg(id, quoted(d.number), QString::number(d.properties), QString::number(d.storeType),
                              QString::number(d.priority), QString::number(d.stockFactor)));
}

void SmallChain::till(const Till& t) {
    const bool reachable = !t.database.isEmpty();
    if (reachable) {
        run(QStringLiteral("master"), QStringLiteral("CREATE DATABASE ") + t.database);
        run(t.database,
            QString::fromUtf8(kTillSchema) + QStringLiteral("INSERT INTO innstillinger VALUES ('213', %1, %2)")
                                                 .arg(quoted(QString::number(t.department)), quoted(t.number)));
    }
    run(kBackOffice, QStringLiteral("IF NOT EXISTS (SELECT * FROM KasseType WHERE Kt_Navn = %1) "
                                    "INSERT INTO KasseType SELECT COUNT(*) + 1, %1 FROM KasseType")
                         .arg(quoted(t.type)));
    run(kBackOffice, QStringLiteral("INSERT INTO Internkundekasse SELECT %1, %2, %3, %4, 'sa', 'hemmelig', 0, NULL, "
                                    "%5, %6, Kt_Id FROM KasseType WHERE Kt_Navn = %7")
                         .arg(QString::number(t.department), quoted(t.number),
                              quoted(reachable ? address() : QStringLiteral("127.0.0.1,1")),
                              quoted(reachable ? t.database : QStringLiteral("Borte")), QString::number(t.syncVersion),
                              QString::number(t.active ? 1 : 0), quoted(t.type)));
}

void SmallChain::tills(const QString& numbers) {
    for (const QString& one : numbers.split(u' ')) {
        const QString number = one.section(u'/', 0, 0);
        if (!_departments.contains(number)) {
            department({.id = number.toInt(), .number = number});
            _departments.append(number);
        }
        const QString kassenr = one.section(u'/', 1);
        till({.department = number.toInt(),
              .number = kassenr,
              .database = QStringLiteral("Kasse_%1_%2").arg(number, kassenr)});
    }
}

}  // namespace torvik::test
