// Holds a measurement to one processor core, its server's threads too, and tells how much processor time passes, which
// is what an idle core would show as time.
#pragma once

#include <sched.h>
#include <sys/resource.h>

#include <cstddef>

namespace torvik::bench {

// Of the whole process: threads that start later stay on the core.
inline void holdToOneCore() {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(static_cast<std::size_t>(sched_getcpu()), &set);
    sched_setaffinity(0, sizeof set, &set);
}

// Seconds of processor time that were used: by the process (RUSAGE_SELF) or the calling thread (RUSAGE_THREAD).
inline double processorSeconds(int who) {
    rusage used{};
    getrusage(who, &used);
    const auto in = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    };
    return in(used.ru_utime) + in(used.ru_stime);
}

}  // namespace torvik::bench
