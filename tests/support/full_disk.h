// A full disk, as the process sees one.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace torvik::test {

// No file of this process can grow beyond `bytes` while this stands, as on a disk that is full.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limited{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before_{};
    void (*handler_)(int);
};

}  // namespace torvik::test
