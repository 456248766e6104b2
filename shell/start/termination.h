// Asks the program to end when the operating system does (SIGTERM, SIGINT, SIGHUP), through the message loop, so that a
// run under way ends cleanly; and sees to it that the program ends, whatever it is held up by.
#pragma once

#include <chrono>
#include <functional>

namespace torvik {

// What the program has from a signal, or from a log-off, to its end.
inline constexpr std::chrono::milliseconds kTimeToEnd{1800};

// `onTerminate` is called on the main thread, once for each signal. May be called once in a process. From the first
// signal on the process has kTimeToEnd: what has not ended by then, a start or a till's statement without an answer, is
// ended where it stands, with exit code 1. Nothing is lost by that: the servers roll back, and a pair of transactions
// that it breaks off is resolved by the next run.
void onTerminationSignal(std::function<void()> onTerminate);
// The same time from now on, for an end that the operating system asks for in another way.
void beginTermination();

}  // namespace torvik
