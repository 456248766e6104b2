// The tills that a walk is about to come to, logged in to in the background, so that a slow line costs no time and a
// till that cannot be reached holds nobody up. The login only: whatever is asked of a till, and each line of log, comes
// at the till's turn. Owned by the walk over tills; the connection to the till takes from it.
#pragma once

#include <QString>
#include <deque>
#include <optional>
#include <vector>

#include "engine/db/login_ahead.h"

namespace torvik {

namespace db {
class Query;
}

class LoginsAhead {
public:
    // As many tills as the walk comes to within this time, by the middle one of its last visits,
    static constexpr qint64 kReachMs = 40'000;
    // and never more.
    static constexpr int kMost = 80;
    // Before anything was visited: 40 seconds of tills at two seconds each.
    static constexpr int kAtTheBeginning = 20;
    // A session that no till has used by then is closed, and opened anew at its turn.
    static constexpr std::chrono::milliseconds kLimit{120'000};

    // A till that will come: which one, and how its session will be opened.
    struct Next {
        QString Till;
        db::ConnectSettings Settings;
    };
    // Which till the roster's current row is.
    [[nodiscard]] static QString TillOf(const db::Query& roster);

    explicit LoginsAhead(const db::LoginAhead::Terms& terms) : terms_(terms) { terms_.Limit = kLimit; }

    // A visit begins, at this tick count.
    void visitBegins(qint64 tick);
    // No visit was made at this till, since another copy of the program has: it tells nothing of how long one takes.
    void passedOver();
    // How many of the tills behind the one of this visit are logged in to.
    [[nodiscard]] int reach() const;
    // The till of this visit and those that follow, in their order, so many as there may be: logs in to those within
    // reach, and lets go of all that are not among them.
    void fill(const QString& visited, const std::vector<Next>& following);

    // Of all of them, whatever they have come to; the next fill begins anew.
    void letGo() { logins_.clear(); }

    // What the login to this till has come to (LoginAhead::take); none was begun, or with other settings: nothing.
    [[nodiscard]] std::optional<db::LoginAhead::Outcome> take(const QString& till, const db::ConnectSettings& settings);

    [[nodiscard]] int size() const { return static_cast<int>(logins_.size()); }

private:
    struct Login {
        QString till;
        std::unique_ptr<db::LoginAhead> login;
    };
    [[nodiscard]] bool holds(const QString& till) const;

    db::LoginAhead::Terms terms_;
    std::vector<Login> logins_;
    std::deque<qint64> visits_;  // how long the last ones took, ms
    std::optional<qint64> begun_;
};

}  // namespace torvik
