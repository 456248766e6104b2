#include "engine/till/till_connection.h"

#include <optional>

#include "engine/base/abort.h"
#include "engine/base/run_options.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/log/operator_log.h"
#include "engine/roster/avdeling.h"

namespace torvik {

namespace {

// Any other value than these leaves the session with the provider of the till before.
std::optional<db::ProviderKind> providerOf(const QString& ikkProvider) {
    if (ikkProvider.isEmpty() || ikkProvider == u"3") return db::ProviderKind::OleDb;
    if (ikkProvider == u"0") return db::ProviderKind::Auto;
    if (ikkProvider == u"1") return db::ProviderKind::Compact;
    if (ikkProvider == u"2") return db::ProviderKind::NativeClient;
    return std::nullopt;
}

}  // namespace

TillConnection::TillConnection(const EngineContext& context, const TAvdeling& roster, OperatorLog& log)
    : context_(context), roster_(roster), log_(log) {}

db::Session& TillConnection::Session() const {
    if (!SourceConnection) throw EngineError(QStringLiteral("SourceConnection er ikke satt"));
    return *SourceConnection;
}

void TillConnection::ApplySourceConnectionSettings() {
    const db::Query& till = roster_.Qry();
    const auto text = [&](const char16_t* column) {
        return till.FieldByName(QString::fromUtf16(column)).AsString().trimmed();
    };
    SourceAuthMethod = till.FieldByName(QStringLiteral("Ikk_AutentiseringType")).AsInteger() == 1 ? amTrusted : amSQL;

    db::Session& session = Session();
    versionIsCurrent_ = false;
    session.Close();
    session.SetLoginPrompt(false);
    session.SetServer(text(u"Ikk_Server"));
    session.SetDatabase(text(u"Ikk_Database"));
    if (const auto provider = providerOf(text(u"Ikk_Provider"))) session.SetProvider(*provider);
    const bool bySql = SourceAuthMethod == amSQL;
    session.SetAuthentication(bySql ? db::Auth::Server : db::Auth::Windows);
    session.SetUsername(bySql ? text(u"Ikk_Brukernavn") : QString());
    session.SetPassword(bySql ? text(u"Ikk_Passord") : QString());
}

bool TillConnection::ConnectSource(const std::function<void()>& wait) {
    lastFailure_ = nullptr;
    for (int attempt = 1; attempt <= context_.Options.RetryCount; ++attempt) {
        if (attempt > 1) wait();
        try {
            connectOnce();
            lastFailure_ = nullptr;
            return true;
        } catch (const std::exception&) {
            lastFailure_ = std::current_exception();  // the caller tells of it in its own words
        }
    }
    return false;
}

void TillConnection::connectOnce() {
    ApplySourceConnectionSettings();
    Session().Open();
    try {
        ReadDbVersion();
    } catch (const std::exception&) {
        // A till whose settings cannot be read counts as connected, with the version of the till before.
    }
    SetNoCount(false);
    log_.AddLog(QStringLiteral("Database versjon %1").arg(fDbVersion));
}

// A till that answers the login and then no more is given up after as long as one that does not answer at all.
void TillConnection::openFor(db::Query& query) {
    if (!Session().Connected()) {
        ApplySourceConnectionSettings();
        Session().Open();
    }
    query.SetConnection(&Session());
    query.CommandTimeout = Session().ConnectionTimeout();
}

void TillConnection::ReadDbVersion() {
    db::Query query;
    openFor(query);
    query.SQL = {QStringLiteral("select in_dbversion from innstillinger")};
    query.Open();
    fDbVersion = query.Fields(0).AsString().trimmed();
    versionIsCurrent_ = true;
}

void TillConnection::SetNoCount(bool on) {
    db::Query query;
    openFor(query);
    query.SQL = {QStringLiteral("SET NOCOUNT %1").arg(on ? QStringLiteral("ON") : QStringLiteral("OFF"))};
    query.ExecSQL();
}

bool TillConnection::countIsPositive(const QString& sql) {
    db::Query query(&Session());
    query.SQL = {sql};
    query.Open();
    return query.Fields(0).AsInteger() > 0;
}

bool TillConnection::SourceHasOpenTransactions() {
    return countIsPositive(
        QStringLiteral("SELECT SUM(open_tran) AS AntTrans FROM master..sysprocesses (NOLOCK) where dbid=db_id() and "
                       "open_tran>0"));
}

bool TillConnection::SourceHasTemporarySettlements() {
    return countIsPositive(QStringLiteral("SELECT COUNT(*) AS Antall FROM OPPGJOR WHERE OP_TYPE='MIDLERTIDIG'"));
}

}  // namespace torvik
