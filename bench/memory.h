// What this process holds of the machine's memory, as Linux tells it in /proc/self.
#pragma once

#include <fstream>
#include <stdexcept>
#include <string>

namespace torvik::bench {

// A figure of /proc/self/status, in MB: "VmHWM" for the most that was resident, "VmRSS" for now.
[[nodiscard]] inline double processMegabytes(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(name + ":", 0) == 0) return std::stod(line.substr(name.size() + 1)) / 1024;
    throw std::runtime_error("/proc/self/status does not tell " + name);
}

// "VmHWM" counts from now on (clear_refs, 5).
inline void forgetPeakOfMemory() {
    std::ofstream refs("/proc/self/clear_refs");
    refs << 5 << std::flush;
    if (!refs) throw std::runtime_error("the kernel keeps the peak of the process's memory");
}

}  // namespace torvik::bench
