#include "engine/till/till_connection.h"

#include <optional>
#include <utility>

#include "engine/base/abort.h"
#include "engine/base/run_options.h"
#include "engine/db/batched_reads.h"
#include "engine/db/errors.h"
#include "engine/db/planned_reads.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/log/operator_log.h"
#include "engine/roster/avdeling.h"
#include "engine/till/logins_ahead.h"

namespace torvik {

namespace {

constexpr char kDbVersion[] = "select in_dbversion from innstillinger";
constexpr char kNoCount[] = "SET NOCOUNT %1";

constexpr char kOpenTransactions[] =
    "SELECT SUM(open_tran) AS AntTrans FROM master..sysprocesses (NOLOCK) where dbid=db_id() and open_tran>0";
constexpr char kTemporarySettlements[] = "SELECT COUNT(*) AS Antall FROM OPPGJOR WHERE OP_TYPE='MIDLERTIDIG'";

QString noCount(bool on) {
    return QString::fromUtf8(kNoCount).arg(on ? QStringLiteral("ON") : QStringLiteral("OFF"));
}

// Any other value than these leaves the session with the provider of the till before.
std::optional<db::ProviderKind> providerOf(const QString& ikkProvider) {
    if (ikkProvider.isEmpty() || ikkProvider == u"3") return db::ProviderKind::OleDb;
    if (ikkProvider == u"0") return db::ProviderKind::Auto;
    if (ikkProvider == u"1") return db::ProviderKind::Compact;
    if (ikkProvider == u"2") return db::ProviderKind::NativeClient;
    return std::nullopt;
}

TAuthMethod authMethodOf(const db::Query& till) {
    return till.FieldByName(QStringLiteral("Ikk_AutentiseringType")).AsInteger() == 1 ? amTrusted : amSQL;
}

}  // namespace

TillConnection::TillConnection(const EngineContext& context, const TAvdeling& roster, OperatorLog& log)
    : context_(context), roster_(roster), log_(log) {}

db::Session& TillConnection::Session() const {
    if (!SourceConnection) throw EngineError(QStringLiteral("SourceConnection er ikke satt"));
    return *SourceConnection;
}

db::ConnectSettings TillConnection::SettingsOfTill() const {
    const db::Query& till = roster_.Qry();
    const auto text = [&](const char16_t* column) {
        return till.FieldByName(QString::fromUtf16(column)).AsString().trimmed();
    };
    db::ConnectSettings settings = Session().Settings();
    settings.Server = text(u"Ikk_Server");
    settings.Database = text(u"Ikk_Database");
    if (const auto provider = providerOf(text(u"Ikk_Provider"))) settings.Provider = *provider;
    const bool bySql = authMethodOf(till) == amSQL;
    settings.Authentication = bySql ? db::Auth::Server : db::Auth::Windows;
    settings.Username = bySql ? text(u"Ikk_Brukernavn") : QString();
    settings.Password = bySql ? text(u"Ikk_Passord") : QString();
    return settings;
}

void TillConnection::ApplySourceConnectionSettings() {
    SourceAuthMethod = authMethodOf(roster_.Qry());
    db::Session& session = Session();
    versionIsCurrent_ = false;
    session.Close();
    session.SetLoginPrompt(false);
    session.SetSettings(SettingsOfTill());
}

// What the background has come to with a till: a connection, or so many attempts that failed.
struct TillConnection::Begun {
    std::unique_ptr<db::Connection> made;
    int failures = 0;
    std::exception_ptr lastFailure;
    qint64 waitLeft = 0;
};

TillConnection::Begun TillConnection::takeBegun() {
    if (!Ahead) return {};
    QString till;
    db::ConnectSettings settings;
    try {
        till = LoginsAhead::TillOf(roster_.Qry());
        settings = SettingsOfTill();
    } catch (const std::exception&) {
        return {};  // the attempt that follows finds the same, and fails by it
    }
    std::optional<db::LoginAhead::Outcome> begun = Ahead->take(till, settings);
    if (!begun) return {};
    return {std::move(begun->Made), begun->Failures, begun->LastFailure, begun->WaitLeft.count()};
}

bool TillConnection::ConnectSource(const std::function<void(qint64 left)>& wait) {
    lastFailure_ = nullptr;
    const int attempts = context_.Options.RetryCount;
    Begun begun = attempts > 0 ? takeBegun() : Begun();
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        // Each wait has its line in the log, also one that is over already.
        const bool waitedFor = attempt <= begun.failures;
        const bool waiting = begun.failures > 0 && attempt == begun.failures + 1;
        const qint64 left = waiting ? begun.waitLeft : qint64{context_.Options.RetryWaitTime} * 1000;
        if (attempt > 1) wait(waitedFor ? 0 : left);
        try {
            if (waitedFor) std::rethrow_exception(begun.lastFailure);
            connectBy(std::move(begun.made));
            lastFailure_ = nullptr;
            return true;
        } catch (const EAbort&) {
            throw;  // a cancel says nothing of the till
        } catch (const std::exception&) {
            lastFailure_ = std::current_exception();  // the caller tells of it in its own words
        }
    }
    return false;
}

void TillConnection::ConnectOnce() {
    Begun begun = takeBegun();
    if (begun.failures > 0) {
        ApplySourceConnectionSettings();
        std::rethrow_exception(begun.lastFailure);
    }
    if (!open(std::move(begun.made))) return;
    // Whether a session has died while it waited only a question shows.
    try {
        db::Query question;
        openFor(question);
        question.SQL = {QStringLiteral("SELECT @@SPID")};
        question.Open();
    } catch (const db::Error&) {
        static_cast<void>(open(nullptr));
    }
}

bool TillConnection::open(std::unique_ptr<db::Connection> made) {
    ApplySourceConnectionSettings();
    if (made && Session().OpenBy(std::move(made))) return true;
    Session().Open();
    return false;
}

void TillConnection::connectBy(std::unique_ptr<db::Connection> made) {
    const bool byMade = open(std::move(made));
    if (!readVersionAtLogin()) {
        // The session had died while it waited, which only a question shows: it is opened as if there had been none.
        if (byMade && !Session().Connected()) return connectBy(nullptr);
        SetNoCount(false);
    }
    log_.AddLog(QStringLiteral("Database versjon %1").arg(fDbVersion));
}

// A till whose settings cannot be read counts as connected, with the version of the till before. True: SET NOCOUNT OFF
// went with the question. One that has not answered is not asked twice.
bool TillConnection::readVersionAtLogin() {
    try {
        if (context_.Options.ReadsTogether) {
            readVersionWithNoCount();
            return true;
        }
    } catch (const db::Error& e) {
        if (!db::isRefusal(e)) return false;
    } catch (const EAbort&) {
        throw;
    } catch (const std::exception&) {
        return false;
    }
    try {
        ReadDbVersion();
    } catch (const EAbort&) {
        throw;
    } catch (const std::exception&) {
    }
    return false;
}

void TillConnection::readVersionWithNoCount() {
    const QString version = QString::fromUtf8(kDbVersion);
    db::BatchedReads reads(Session());
    reads.CommandTimeout = Session().ConnectionTimeout();
    reads.AddRead(version);
    reads.AddStatement(noCount(false));
    reads.Send();
    reads.OpenNext(version);
    takeVersion(reads);
}

void TillConnection::takeVersion(const db::DataSet& rows) {
    fDbVersion = rows.Fields(0).AsString().trimmed();
    versionIsCurrent_ = true;
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
    query.SQL = {QString::fromUtf8(kDbVersion)};
    query.Open();
    takeVersion(query);
}

void TillConnection::SetNoCount(bool on) {
    db::Query query;
    openFor(query);
    query.SQL = {noCount(on)};
    query.ExecSQL();
}

bool TillConnection::countIsPositive(const char* sql) {
    db::PlannedReads alone(Session());
    return countIsPositive(alone, sql);
}

bool TillConnection::countIsPositive(db::PlannedReads& reads, const char* sql) {
    db::Query query(&Session());
    query.SQL = {QString::fromUtf8(sql)};
    return reads.Open(query).Fields(0).AsInteger() > 0;
}

bool TillConnection::SourceHasOpenTransactions() {
    return countIsPositive(kOpenTransactions);
}

bool TillConnection::SourceHasTemporarySettlements() {
    return countIsPositive(kTemporarySettlements);
}

TillConnection::Busy TillConnection::SourceBusy() {
    db::PlannedReads reads(Session());
    if (context_.Options.ReadsTogether)
        for (const char* question : {kOpenTransactions, kTemporarySettlements})
            reads.Plan({QString::fromUtf8(question)});
    if (countIsPositive(reads, kOpenTransactions)) return Busy::OpenTransactions;
    if (countIsPositive(reads, kTemporarySettlements)) return Busy::TemporarySettlements;
    return Busy::No;
}

}  // namespace torvik
