// See session.h.
#include "engine/db/session.h"

#include <utility>

#include "engine/db/connection.h"
#include "engine/db/errors.h"
#include "engine/db/login_ahead.h"
#include "engine/db/meanwhile.h"

namespace torvik::db {

namespace {

// A commit that takes longer than this has no answer.
constexpr int kCommitTimeout = 600;

// The driver cannot end a login. Where the thread has something to do meanwhile, which may be to want it no more, the
// login is left to a thread of its own, so that nobody has to wait for its time-out.
std::unique_ptr<Connection> logIn(const ConnectSettings& settings) {
    if (!Meanwhile::stands()) return std::make_unique<Connection>(settings);
    LoginAhead::Outcome outcome = LoginAhead(settings, {}).take();
    if (!outcome.Made) std::rethrow_exception(outcome.LastFailure);
    return std::move(outcome.Made);
}

}  // namespace

QString beginTransactionText() {
    return QStringLiteral("SELECT @@TRANCOUNT IF @@TRANCOUNT = 0 BEGIN TRANSACTION");
}

Session::Session(QObject* parent) : QObject(parent) {}

Session::~Session() {
    for (Unfinished* work : std::exchange(unfinished_, {})) work->connectionGone();
}

void Session::requireClosed(const char* setting) const {
    if (Connected())
        throw UsageError(QStringLiteral("%1 cannot be changed while the session is open").arg(QLatin1String(setting)));
}

template <typename T>
void Session::set(T& member, const T& value, const char* name) {
    requireClosed(name);
    member = value;
    connectString_.clear();
}

void Session::SetServer(const QString& server) {
    set(settings_.Server, server, "Server");
}
void Session::SetDatabase(const QString& database) {
    set(settings_.Database, database, "Database");
}
void Session::SetUsername(const QString& username) {
    set(settings_.Username, username, "Username");
}
void Session::SetPassword(const QString& password) {
    set(settings_.Password, password, "Password");
}
void Session::SetAuthentication(Auth auth) {
    set(settings_.Authentication, auth, "Authentication");
}
void Session::SetProvider(ProviderKind provider) {
    set(settings_.Provider, provider, "Provider");
}
void Session::SetApplicationName(const QString& name) {
    set(settings_.ApplicationName, name, "ApplicationName");
}

void Session::SetConnectionTimeout(int seconds) {
    set(settings_.ConnectionTimeout, seconds, "ConnectionTimeout");
}

void Session::SetTrustServerCertificate(bool trust) {
    set(settings_.TrustServerCertificate, trust, "TrustServerCertificate");
}

void Session::SetSettings(const ConnectSettings& settings) {
    requireClosed("Settings");
    settings_ = settings;
    connectString_.clear();
}

void Session::SetMultipleActiveResultSets(bool on) {
    requireClosed("MultipleActiveResultSets");
    mars_ = on;
}

void Session::SetLoginPrompt(bool on) {
    if (on) throw UsageError(QStringLiteral("A login prompt is never shown"));
}

QString Session::ConnectString() const {
    return connectString_.isEmpty() ? oleDbFromSettings(settings_) : connectString_;
}

void Session::SetConnectString(const QString& text) {
    requireClosed("ConnectString");
    settings_ = settingsFromOleDb(text);
    connectString_ = text;
}

bool Session::Connected() const {
    return connection_ && connection_->alive();
}

void Session::Open() {
    if (Connected()) return;
    connection_.reset();
    connection_ = logIn(settings_);
    remember(false);
}

bool Session::OpenBy(std::unique_ptr<Connection> made) {
    requireClosed("Connection");
    connection_.reset();
    if (!made || !made->stillStands()) return false;
    connection_ = std::move(made);
    remember(false);
    return true;
}

void Session::Close() {
    if (!connection_) return;
    // Closed in any case; what the server objects to on the way is raised afterwards.
    std::exception_ptr failure;
    if (Connected()) {
        for (Unfinished* work : std::as_const(unfinished_)) work->dropUnread();
        try {
            static_cast<void>(use());
        } catch (const Error&) {
            failure = std::current_exception();
        }
    }
    for (Unfinished* work : std::exchange(unfinished_, {})) work->connectionGone();
    connection_.reset();
    if (failure) std::rethrow_exception(failure);
}

Connection& Session::connection() const {
    if (!connection_) throw UsageError(QStringLiteral("Cannot perform this operation on a closed session"));
    if (!connection_->alive())
        throw ConnectionError(ConnectionError::Reason::Lost,
                              QStringLiteral("The connection to server \"%1\" is lost").arg(settings_.Server));
    return *connection_;
}

Connection& Session::use(const Unfinished* by) {
    Connection& open = connection();
    const QList<Unfinished*> others = unfinished_;
    for (Unfinished* work : others)
        if (work != by && unfinished_.contains(work)) work->finishWork();
    return open;
}

void Session::add(Unfinished* work) {
    if (!unfinished_.contains(work)) unfinished_.append(work);
}

void Session::remove(Unfinished* work) {
    unfinished_.removeAll(work);
}

void Session::remember(bool inTransaction) {
    inTransaction_ = inTransaction;
    knownAtStatement_ = connection_->statements();
}

void Session::transactionUnchanged() {
    if (connection_) remember(inTransaction_);
}

void Session::transactionIs(bool open) {
    if (connection_) remember(open);
}

// Whether there is one already is asked in the same round trip, and nothing is begun then.
void Session::StartTransaction() {
    Connection& open = use();
    const bool knownToBeOpen = inTransaction_ && open.statements() == knownAtStatement_;
    const bool wasOpen = knownToBeOpen || open.scalar(beginTransactionText(), settings_.ConnectionTimeout).toInt() > 0;
    remember(true);
    if (wasOpen) throw UsageError(QStringLiteral("The session already has a transaction"));
}

void Session::Commit() {
    Connection& open = use();
    const auto inDoubt = [&](const Error& cause) {
        return CommitInDoubt(QStringLiteral("Whether the transaction on server \"%1\" is committed is not known: %2")
                                 .arg(settings_.Server, cause.text()),
                             cause, Connected());
    };
    try {
        open.run({QStringLiteral("COMMIT TRANSACTION"), {}, kCommitTimeout});
    } catch (const ConnectionError& e) {
        throw inDoubt(e);
    } catch (const TimeoutError& e) {
        if (!InTransaction()) throw inDoubt(e);
        throw;
    }
    remember(false);
}

void Session::Rollback() {
    const QList<Unfinished*> works = unfinished_;
    for (Unfinished* work : works)
        if (unfinished_.contains(work)) work->rolledBack();
    if (!Connected()) return;
    // The server rolls back what a lost connection leaves.
    try {
        connection().run({QStringLiteral("IF @@TRANCOUNT > 0 ROLLBACK TRANSACTION"), {}, settings_.ConnectionTimeout});
    } catch (const ConnectionError&) {
        return;
    } catch (const TimeoutError&) {
        connection_->abandon();
        return;
    }
    remember(false);
}

bool Session::InTransaction() {
    if (Connected() && connection_->statements() == knownAtStatement_) return inTransaction_;
    return StillInTransaction();
}

bool Session::StillInTransaction() {
    if (!Connected()) return false;
    const QList<Unfinished*> works = unfinished_;
    for (Unfinished* work : works) work->releaseConnection();
    try {
        remember(connection_->scalar(QStringLiteral("SELECT @@TRANCOUNT"), settings_.ConnectionTimeout).toInt() > 0);
    } catch (const ConnectionError&) {
        return false;
    } catch (const TimeoutError&) {
        connection_->abandon();
        return false;
    }
    return inTransaction_;
}

}  // namespace torvik::db
