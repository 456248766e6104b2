// How much memory a program holds that serves a demo chain of five tills with 20,000 items each, and how long such a
// chain takes to come up. What is in memory includes the databases: without a data folder they lie in shared memory.
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "bench/figure.h"
#include "sandbox/chain/demo_chain.h"

namespace {

// A figure of /proc/self/status, in megabytes.
double statusMegabytes(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(name + ":")) return std::stod(line.substr(name.size() + 1)) / 1024;
    return 0;
}

// The files of databases in memory that this process has open: they are its own, whether mapped or not.
double sharedMemoryMegabytes() {
    double bytes = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const auto target = std::filesystem::read_symlink(entry.path(), gone);
        if (gone || !target.string().starts_with("/dev/shm/")) continue;
        const auto size = std::filesystem::file_size(target, gone);
        if (!gone) bytes += static_cast<double>(size);
    }
    return bytes / 1024 / 1024;
}

}  // namespace

int main() {
    constexpr double kMost = 300;
    std::unique_ptr<sandbox::chain::DemoChain> chain;
    const double start = torvik::bench::seconds([&] {
        chain = std::make_unique<sandbox::chain::DemoChain>(sandbox::chain::DemoChainOptions{
            .chain = {.departments = 3, .tills = 5, .days = 2, .items = 20'000, .everyKind = true}});
    });
    const double resident = statusMegabytes("RssAnon") + statusMegabytes("RssFile");
    const double databases = sharedMemoryMegabytes();
    torvik::bench::tell({"demo chain of 5 tills and 20,000 items, start", start, "s", {}, {}});
    torvik::bench::tell("demo chain of 5 tills and 20,000 items, memory of the program", resident, "MB",
                        "300 MB at most", kMost);
    torvik::bench::tell(
        {"demo chain of 5 tills and 20,000 items, databases in shared memory", databases, "MB", {}, {}});
    torvik::bench::tell("demo chain of 5 tills and 20,000 items, both together", resident + databases, "MB",
                        "300 MB at most", kMost);
}
