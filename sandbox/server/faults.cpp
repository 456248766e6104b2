// Counting requests and deciding which of them a fault meets.
#include "sandbox/server/faults.h"

#include <algorithm>

#include "sandbox/server/logins.h"
#include "sandbox/server/names.h"

namespace sandbox {

using server::loginFailed;
using server::lowerName;
using server::sameName;

namespace {

// An empty name aims at all.
bool aims(const std::string& wanted, const std::string& have) {
    return wanted.empty() || sameName(wanted, have);
}

bool matches(const RequestMatch& m, const RequestInfo& r) {
    return aims(m.user, r.user) && aims(m.program, r.program) && aims(m.database, r.database) &&
           (m.number == 0 || m.number == r.number) && (m.connection == 0 || m.connection == r.connection) &&
           (!m.kind || *m.kind == r.kind) &&
           (m.textContains.empty() || lowerName(r.text).find(lowerName(m.textContains)) != std::string::npos);
}

}  // namespace

void Faults::refuseLogins(int count, Message error) {
    const std::lock_guard lock(mutex_);
    loginsToRefuse_ = count;
    loginError_ = std::move(error);
}

void Faults::refuseUser(const std::string& user) {
    const std::lock_guard lock(mutex_);
    refusedUsers_.insert(lowerName(user));
}

void Faults::allowUser(const std::string& user) {
    const std::lock_guard lock(mutex_);
    refusedUsers_.erase(lowerName(user));
}

void Faults::hangLogins(int count) {
    const std::lock_guard lock(mutex_);
    loginsToHang_ = count;
}

int Faults::add(FaultRule rule) {
    const std::lock_guard lock(mutex_);
    rules_.push_back({nextId_, std::move(rule)});
    tellWatches();
    return nextId_++;
}

void Faults::remove(int rule) {
    const std::lock_guard lock(mutex_);
    std::erase_if(rules_, [&](const Active& a) { return a.id == rule; });
    tellWatches();
}

void Faults::dropAfterBytes(std::uint64_t bytes, const std::string& program) {
    const std::lock_guard lock(mutex_);
    bytesLeft_ = bytes;
    bytesProgram_ = program;
}

void Faults::dropAfterStatements(std::uint64_t statements, std::optional<Message> message, const std::string& program) {
    const std::lock_guard lock(mutex_);
    statementsLeft_ = statements;
    statementMessage_ = std::move(message);
    statementProgram_ = program;
}

void Faults::delayRequests(std::chrono::milliseconds delay) {
    const std::lock_guard lock(mutex_);
    delay_ = delay;
}

void Faults::fillDisk(std::int64_t writes) {
    engine_.limitWrites(writes);
}

void Faults::freeDisk() {
    engine_.limitWrites(std::nullopt);
}

void Faults::clear() {
    const std::lock_guard lock(mutex_);
    loginsToRefuse_ = loginsToHang_ = 0;
    refusedUsers_.clear();
    rules_.clear();
    bytesLeft_.reset();
    statementsLeft_.reset();
    statementMessage_.reset();
    delay_ = {};
    freeDisk();
    tellWatches();
}

void Faults::keepLog() {
    const std::lock_guard lock(mutex_);
    if (!log_) log_.emplace();
    tellWatches();
}

std::vector<LoggedRequest> Faults::log() const {
    const std::lock_guard lock(mutex_);
    return log_.value_or(std::vector<LoggedRequest>());
}

void Faults::ended(LoggedRequest request) {
    const std::lock_guard lock(mutex_);
    if (log_) log_->push_back(std::move(request));
}

// So that statements cost nothing where nobody asks for them.
void Faults::tellWatches() {
    watchesStatements_ = log_ || std::any_of(rules_.begin(), rules_.end(),
                                             [](const Active& a) { return a.rule.level == FaultLevel::Statement; });
}

int Faults::observe(std::function<void(const RequestInfo&)> observer) {
    const std::scoped_lock lock(observerMutex_, mutex_);
    observers_.push_back({nextId_, std::move(observer)});
    return nextId_++;
}

void Faults::forget(int observer) {
    const std::lock_guard lock(observerMutex_);
    std::erase_if(observers_, [&](const Observer& o) { return o.id == observer; });
}

std::uint64_t Faults::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::uint64_t Faults::statements() const {
    const std::lock_guard lock(mutex_);
    return statements_;
}

std::uint64_t Faults::logins() const {
    const std::lock_guard lock(mutex_);
    return logins_;
}

bool Faults::takeHang() {
    const std::lock_guard lock(mutex_);
    if (loginsToHang_ == 0) return false;
    --loginsToHang_;
    return true;
}

std::optional<Message> Faults::takeLoginRefusal(const std::string& user) {
    const std::lock_guard lock(mutex_);
    if (loginsToRefuse_ > 0) {
        --loginsToRefuse_;
        return loginError_;
    }
    if (refusedUsers_.contains(lowerName(user))) return loginFailed(user);
    return std::nullopt;
}

void Faults::loggedIn() {
    const std::lock_guard lock(mutex_);
    ++logins_;
}

Faults::Verdict Faults::meet(RequestInfo& request) {
    Verdict verdict;
    {
        const std::lock_guard lock(mutex_);
        request.serverNumber = ++requests_;
        verdict = metRules(FaultLevel::Request, request);
        verdict.delay += delay_;
        if (statementsLeft_ && *statementsLeft_ == 0 && aims(statementProgram_, request.program)) {
            statementsLeft_.reset();
            verdict.action = statementMessage_ ? FaultAction::Fail : FaultAction::DropBefore;
            if (statementMessage_) verdict.message = *std::exchange(statementMessage_, std::nullopt);
        }
    }
    const std::lock_guard lock(observerMutex_);
    for (const Observer& o : observers_) o.call(request);
    return verdict;
}

Faults::Verdict Faults::meetStatement(const RequestInfo& statement) {
    const std::lock_guard lock(mutex_);
    return metRules(FaultLevel::Statement, statement);
}

Faults::Verdict Faults::metRules(FaultLevel level, const RequestInfo& met) {
    Verdict verdict;
    for (Active& a : rules_) {
        if (a.rule.level != level || !matches(a.rule.match, met)) continue;
        const std::uint64_t place = a.met++;
        if (place < a.rule.skip || (a.rule.times != 0 && place - a.rule.skip >= a.rule.times)) continue;
        if (a.rule.action == FaultAction::Delay) {
            verdict.delay += a.rule.delay;
        } else if (!verdict.action) {
            verdict.action = a.rule.action;
            verdict.message = a.rule.message;
            verdict.rollBack = a.rule.rollBack;
        }
    }
    return verdict;
}

Faults::StatementVerdict Faults::statementEnded(const std::string& program) {
    const std::lock_guard lock(mutex_);
    ++statements_;
    StatementVerdict verdict;
    if (!statementsLeft_ || !aims(statementProgram_, program)) return verdict;
    if (*statementsLeft_ > 0 && --*statementsLeft_ > 0) return verdict;
    statementsLeft_.reset();
    verdict.drop = true;
    verdict.message = std::exchange(statementMessage_, std::nullopt);
    return verdict;
}

std::optional<std::uint64_t> Faults::sending(std::uint64_t bytes, const std::string& program) {
    const std::lock_guard lock(mutex_);
    if (!bytesLeft_ || !aims(bytesProgram_, program)) return std::nullopt;
    if (bytes < *bytesLeft_) {
        *bytesLeft_ -= bytes;
        return std::nullopt;
    }
    return std::exchange(bytesLeft_, std::nullopt);
}

}  // namespace sandbox
