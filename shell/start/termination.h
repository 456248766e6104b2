// Asks the program to end when the operating system does (SIGTERM, SIGINT, SIGHUP), through the message loop, so that a
// run under way ends cleanly.
#pragma once

#include <functional>

namespace torvik {

// `onTerminate` is called on the main thread, once for each signal. May be called once in a process. Until
// terminationStartDone a signal that the message loop has not served within two seconds ends the process at once: a
// start may be held up by a connection, and has nothing to lose.
void onTerminationSignal(std::function<void()> onTerminate);
void terminationStartDone();

}  // namespace torvik
