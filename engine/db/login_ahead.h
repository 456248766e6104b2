// A login to a server that is begun before anybody needs it, on a thread of its own: so many attempts, and the open
// connection kept until it is asked for. Used by the walk over tills (engine/till/logins_ahead.h). Threads here touch
// nothing but their own connection; see docs/sessions.md.
#pragma once

#include <chrono>
#include <exception>
#include <memory>

#include "engine/db/connection.h"

namespace torvik::db {

class LoginAhead {
public:
    struct Terms {
        int Attempts = 1;
        std::chrono::milliseconds Wait{0};         // between two attempts
        std::chrono::milliseconds Limit{120'000};  // an open connection that nobody has asked for by then is closed
    };

    // Begins at once.
    LoginAhead(const ConnectSettings& settings, const Terms& terms);
    // An open connection is closed and a wait ended at once. Nobody waits for an attempt that is under way: it ends
    // with its time-out at the latest, and what it opens is closed at once (EndOfLogins).
    ~LoginAhead();
    LoginAhead(const LoginAhead&) = delete;
    LoginAhead& operator=(const LoginAhead&) = delete;

    [[nodiscard]] const ConnectSettings& Settings() const;
    // An attempt, or the first one has not begun yet.
    [[nodiscard]] bool underWay() const;

    // A failure that took longer counts when all attempts are over. One that came at once, such as a refusal, does not:
    // the taker makes that attempt again, which costs it as little, and finds a till that has come up since.
    static constexpr std::chrono::milliseconds kAtOnce{500};

    struct Outcome {
        std::unique_ptr<Connection> Made;       // none: it has failed so far, or has been closed at its limit
        int Failures = 0;                       // attempts that failed,
        std::exception_ptr LastFailure;         // the last one's ConnectionError,
        std::chrono::milliseconds WaitLeft{0};  // and what is left of the wait behind it
    };
    // What it has come to, once; no attempt is begun any more. One that is under way is waited for, as any call to a
    // server is (meanwhile.h): a cancel of the thread's statements ends that wait with its error.
    [[nodiscard]] Outcome take();

private:
    struct State;

    void end();

    std::shared_ptr<State> state_;
};

// Waits for the attempts that nobody wanted any more. Called at the end of the program, by itself where there is a
// QCoreApplication.
void EndOfLogins();

}  // namespace torvik::db
