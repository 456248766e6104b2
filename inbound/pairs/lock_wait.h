// How long a session waits for a lock that somebody else holds. Used where what another transaction holds is itself the
// answer: not known yet.
#pragma once

namespace torvik {

namespace db {
class Session;
}

// A short wait while this stands; what was held longer is the server's error 1222.
class LockWait {
public:
    explicit LockWait(db::Session& session);
    ~LockWait();  // waits without end again; a lost session has nothing to reset
    LockWait(const LockWait&) = delete;
    LockWait& operator=(const LockWait&) = delete;

private:
    db::Session& session_;
};

}  // namespace torvik
