// Each system has its own call for it; the standard has none.
#include "engine/workers/low_priority.h"

#include <QtGlobal>

#ifdef Q_OS_WIN
#include <windows.h>
#elif defined(Q_OS_LINUX)
#include <sys/resource.h>
#endif

namespace torvik {

void lowerPriorityOfThisThread() {
#ifdef Q_OS_WIN
    ::SetThreadPriority(::GetCurrentThread(), THREAD_PRIORITY_BELOW_NORMAL);
#elif defined(Q_OS_LINUX)
    // Linux keeps a nice value for each thread, and takes the number 0 for the calling one.
    constexpr int kStep = 5;
    ::setpriority(PRIO_PROCESS, 0, ::getpriority(PRIO_PROCESS, 0) + kStep);
#endif
}

}  // namespace torvik
