// Asks the program to close when the operating system does (SIGTERM, SIGINT, SIGHUP), through the message loop, so that
// a run under way ends cleanly.
#pragma once

#include <functional>

namespace torvik {

// `onTerminate` is called on the main thread, once for each signal. May be called once in a process.
void onTerminationSignal(std::function<void()> onTerminate);

}  // namespace torvik
