// Connecting to the till of the roster's current row.
#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/torvik_pos.h"

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

db::Session& TTorvikPos::source() const {
    if (!SourceConnection) throw EngineError(QStringLiteral("SourceConnection er ikke satt"));
    return *SourceConnection;
}

void TTorvikPos::ApplySourceConnectionSettings() {
    const db::Query& till = Avdeling->Qry();
    const auto text = [&](const char16_t* column) {
        return till.FieldByName(QString::fromUtf16(column)).AsString().trimmed();
    };
    SourceAuthMethod = till.FieldByName(QStringLiteral("Ikk_AutentiseringType")).AsInteger() == 1 ? amTrusted : amSQL;

    db::Session& session = source();
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

bool TTorvikPos::ConnectSource() {
    for (int attempt = 1; attempt <= RetryCount; ++attempt) {
        if (attempt > 1) WaitRetryTime();
        try {
            ApplySourceConnectionSettings();
            source().Open();
            try {
                ReadDbVersion();
            } catch (const std::exception&) {
                // A till whose settings cannot be read counts as connected, with the version of the till before.
            }
            SetNoCount(false);
            AddLog(QStringLiteral("Database versjon %1").arg(fDbVersion));
            return true;
        } catch (const std::exception&) {
            // The caller reports a failed connection in its own words.
        }
    }
    return false;
}

// A till that answers the login and then no more is given up after as long as one that does not answer at all.
void TTorvikPos::openSourceFor(db::Query& query) {
    if (!source().Connected()) {
        ApplySourceConnectionSettings();
        source().Open();
    }
    query.SetConnection(&source());
    query.CommandTimeout = source().ConnectionTimeout();
}

void TTorvikPos::ReadDbVersion() {
    db::Query query;
    openSourceFor(query);
    query.SQL = {QStringLiteral("select in_dbversion from innstillinger")};
    query.Open();
    fDbVersion = query.Fields(0).AsString().trimmed();
}

void TTorvikPos::SetNoCount(bool on) {
    db::Query query;
    openSourceFor(query);
    query.SQL = {QStringLiteral("SET NOCOUNT %1").arg(on ? QStringLiteral("ON") : QStringLiteral("OFF"))};
    query.ExecSQL();
}

bool TTorvikPos::sourceCountIsPositive(const QString& sql) {
    db::Query query(&source());
    query.SQL = {sql};
    query.Open();
    return query.Fields(0).AsInteger() > 0;
}

bool TTorvikPos::SourceHasOpenTransactions() {
    return sourceCountIsPositive(
        QStringLiteral("SELECT SUM(open_tran) AS AntTrans FROM master..sysprocesses (NOLOCK) where dbid=db_id() and "
                       "open_tran>0"));
}

bool TTorvikPos::SourceHasTemporarySettlements() {
    return sourceCountIsPositive(QStringLiteral("SELECT COUNT(*) AS Antall FROM OPPGJOR WHERE OP_TYPE='MIDLERTIDIG'"));
}

}  // namespace torvik
