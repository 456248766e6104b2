// See logins_ahead.h.
#include "engine/till/logins_ahead.h"

#include <algorithm>
#include <utility>

#include "engine/db/query.h"

namespace torvik {

namespace {

// Few enough that a change of pace is soon noticed, and enough that one till that is slow changes nothing.
constexpr std::size_t kVisitsRemembered = 9;

}  // namespace

QString LoginsAhead::TillOf(const db::Query& roster) {
    return QStringLiteral("%1/%2").arg(roster.integer("Ik_Ku_Id")).arg(roster.text("Ikk_Kassenummer"));
}

void LoginsAhead::visitBegins(qint64 tick) {
    if (begun_) visits_.push_back(tick - *begun_);
    begun_ = tick;
    if (visits_.size() > kVisitsRemembered) visits_.pop_front();
}

void LoginsAhead::passedOver() {
    begun_.reset();
}

int LoginsAhead::reach() const {
    if (visits_.empty()) return kAtTheBeginning;
    std::vector<qint64> sorted(visits_.begin(), visits_.end());
    std::ranges::sort(sorted);
    const qint64 middle = std::max<qint64>(1, sorted[sorted.size() / 2]);
    return static_cast<int>(std::clamp<qint64>((kReachMs + middle - 1) / middle, 1, kMost));
}

void LoginsAhead::fill(const QString& visited, const std::vector<Next>& following) {
    std::erase_if(logins_, [&](const Login& one) {
        return one.till != visited && std::ranges::find(following, one.till, &Next::Till) == following.end();
    });
    int within = reach();
    for (const Next& next : following) {
        if (within-- == 0 || size() >= kMost) return;
        if (!holds(next.Till)) logins_.push_back({next.Till, std::make_unique<db::LoginAhead>(next.Settings, terms_)});
    }
}

std::optional<db::LoginAhead::Outcome> LoginsAhead::take(const QString& till, const db::ConnectSettings& settings) {
    const auto found = std::ranges::find(logins_, till, &Login::till);
    if (found == logins_.end()) return {};
    // Gone from the list whatever comes of it: a till that is served again is connected to as ever.
    const std::unique_ptr<db::LoginAhead> login = std::move(found->login);
    logins_.erase(found);
    if (!(login->Settings() == settings)) return {};
    return login->take();
}

bool LoginsAhead::holds(const QString& till) const {
    return std::ranges::find(logins_, till, &Login::till) != logins_.end();
}

}  // namespace torvik
