// A session's beginning and end, and what SQLite's functions learn from it.
#include "sandbox/tsql/run/session_state.h"

#include <sqlite3.h>

#include <chrono>
#include <ctime>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/store/views/system_views.h"
#include "sandbox/tsql/run/interpreter_cursor.h"
#include "sandbox/tsql/run/session_bulk.h"
#include "sandbox/tsql/system/application_locks.h"

namespace sandbox {

namespace {

constexpr std::int64_t kUnitsPerSecond = 10'000'000;
constexpr std::int64_t kDays1970 = 719162;  // of 1970-01-01 since 0001-01-01

struct Moment {
    std::int64_t local;
    std::int64_t utc;
};

// Now in units of 100 ns since 0001-01-01.
Moment moment() {
    using namespace std::chrono;
    const auto units =
        duration_cast<duration<std::int64_t, std::ratio<1, kUnitsPerSecond>>>(system_clock::now().time_since_epoch())
            .count();
    const auto seconds = static_cast<std::time_t>(units / kUnitsPerSecond);
    std::tm local{};
    localtime_r(&seconds, &local);
    const std::int64_t utc = units + kDays1970 * 86400 * kUnitsPerSecond;
    return {utc + local.tm_gmtoff * kUnitsPerSecond, utc};
}

std::int64_t datetimeTicks() {
    constexpr std::int64_t kDays1900 = 693595;
    const std::int64_t sinceThen = moment().local - kDays1900 * 86400 * kUnitsPerSecond;
    return sinceThen / 100 * 3 / 1000;
}

void setVariable(sqlite3_context* context, int, sqlite3_value** arguments) {
    auto& session = *static_cast<SessionState*>(sqlite3_user_data(context));
    const auto slot = static_cast<std::size_t>(sqlite3_value_int(arguments[0]));
    const Type& type = session.frame->unit->variables.at(slot).type;
    session.frame->variables.at(slot) = readArgument(arguments[1], type);
    sqlite3_result_value(context, arguments[1]);
}

std::optional<Decimal> asDecimal(std::optional<std::int64_t> n) {
    if (!n) return std::nullopt;
    return Decimal{.unscaled = *n, .scale = 0};
}

}  // namespace

std::shared_ptr<Unit> UnitCache::find(const std::string& key) {
    const auto found = units_.find(key);
    if (found == units_.end()) return nullptr;
    order_.splice(order_.begin(), order_, found->second.second);
    return found->second.first;
}

void UnitCache::put(const std::string& key, std::shared_ptr<Unit> unit) {
    constexpr std::size_t kLongestText = 100'000;
    if (key.size() > kLongestText) return;
    order_.push_front(key);
    units_[key] = {std::move(unit), order_.begin()};
    // The tree of a text takes many times its room, so that long texts push out more than one short one.
    constexpr std::size_t kMostCharacters = 1'000'000;
    std::size_t characters = 0;
    for (const std::string& text : order_) characters += text.size();
    while (units_.size() > kMost || characters > kMostCharacters) {
        characters -= order_.back().size();
        units_.erase(order_.back());
        order_.pop_back();
    }
}

void UnitCache::clear() {
    units_.clear();
    order_.clear();
}

SessionState::SessionState(Engine& theEngine, const LoginInfo& info)
    : engine(theEngine), shared(theEngine.shared()), login(info), settings(Settings::ofLogin(info.odbc)) {
    const std::string wanted = info.database.empty() ? "master" : info.database;
    const auto home = shared.databases.find(wanted);
    if (!home) {
        throw SqlError(errorMessage<4060>(wanted).atLine(1), Effect::Connection);
    }
    Process process;
    process.databaseId = home->id();
    process.login = info.user;
    process.host = info.host;
    process.program = info.program;
    process.loginTime = process.lastBatch = datetimeTicks();
    spid = shared.databases.processes().add(std::move(process));
    try {
        connection = std::make_unique<Connection>(shared.databases, spid);
        connectCatalogue(*connection);
        connectApplicationLockFunctions(*connection);
        connection->use(home);
        connectFunctions();
    } catch (...) {
        shared.databases.processes().remove(spid);
        throw;
    }
}

SessionState::~SessionState() {
    bulk.reset();
    connection.reset();
    shared.databases.processes().remove(spid);
}

// As CURSOR_STATUS tells it: open with rows, open without, closed, not there.
std::int32_t SessionState::statusOf(bool global, std::string_view cursor) const {
    if (!global && !frame) return -3;
    const auto& known = global ? cursors : frame->cursors;
    const auto found = known.find(foldName(cursor));
    if (found == known.end()) return -3;
    if (!found->second->open) return -1;
    return found->second->rows.empty() ? 0 : 1;
}

void SessionState::connectFunctions() {
    FunctionContext& f = connection->functions();
    f.login = login.user;
    f.host = login.host;
    f.program = login.program;
    f.spid = spid;
    f.serverName = shared.options.serverName;
    f.variable = [this](std::int64_t slot) {
        const auto at = static_cast<std::size_t>(slot);
        return Typed{frame->unit->variables.at(at).type, frame->variables.at(at)};
    };
    f.scopeIdentity = [this] { return frame ? asDecimal(frame->scopeIdentity) : std::nullopt; };
    f.lastIdentity = [this] { return asDecimal(identity); };
    f.caughtError = [this]() -> const Message* { return caught.empty() ? nullptr : &caught.back().message; };
    f.transactionState = [this] { return transaction.xactState(); };
    f.cursorStatus = [this](bool global, std::string_view name) { return statusOf(global, name); };
    sqlite3_create_function_v2(connection->handle(), "t_set_var", 2, SQLITE_UTF8, this, &setVariable, nullptr, nullptr,
                               nullptr);
}

std::uint64_t SessionState::stamp() {
    auto catalog = connection->catalog(*connection->current());
    if (catalog != seen_) {
        seen_ = std::move(catalog);
        ++stamp_;
    }
    return stamp_;
}

void SessionState::useDatabase(const std::string& name) {
    auto wanted = shared.databases.find(name);
    if (!wanted) {
        throw SqlError(errorMessage<911>(name));
    }
    connection->use(std::move(wanted));
    tellProcess();
}

void SessionState::tellProcess() {
    shared.databases.processes().update(spid, [this](Process& p) { describe(p); });
}

void SessionState::describe(Process& process) const {
    process.databaseId = connection->current()->id();
    process.openTransactions = transaction.count();
    process.isolation = static_cast<int>(settings.isolation) + 1;
    process.lockTimeout = settings.lockTimeout;
    process.language = settings.language;
}

void SessionState::startStatement() {
    FunctionContext& f = connection->functions();
    const Moment now = moment();
    f.now = now.local;
    f.nowUtc = now.utc;
    f.nullEliminated = false;
    f.rand.reset();
}

void SessionState::startRequest(const std::string& command) {
    shared.databases.processes().update(spid, [&](Process& p) {
        p.running = true;
        p.command = command;
        p.lastBatch = datetimeTicks();
    });
}

void SessionState::endRequest() {
    shared.databases.processes().update(spid, [this](Process& p) {
        p.running = false;
        p.command = "AWAITING COMMAND";
        describe(p);
    });
}

void SessionState::reset(bool keepTransaction) {
    if (!keepTransaction && transaction.open()) {
        transaction.ended();
        connection->rollback();
    }
    bulk.reset();
    connection->releaseSessionLocks();
    cursors.clear();
    settings = Settings::ofLogin(login.odbc);
    identityInsert.clear();
    identity.reset();
    batchIdentity.reset();
    error = 0;
    rowCount = 0;
    connection->dropAllTemporaryTables();
    definitionsChanged();
    if (auto home = shared.databases.find(login.database.empty() ? "master" : login.database)) {
        connection->use(std::move(home));
    }
    applySettings();
    tellProcess();
}

void SessionState::applySettings() {
    FunctionContext& f = connection->functions();
    f.convert.dateOrder = settings.dateOrder;
    f.convert.norwegian = settings.language != "us_english";
    f.dateFirst = settings.dateFirst;
    if (settings.lockTimeout < 0)
        connection->setLockTimeout(std::nullopt);
    else
        connection->setLockTimeout(std::chrono::milliseconds(settings.lockTimeout));
}

}  // namespace sandbox
