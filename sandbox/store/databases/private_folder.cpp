// See private_folder.h.
#include "sandbox/store/databases/private_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <stdexcept>

namespace sandbox {

namespace fs = std::filesystem;

namespace {

constexpr const char* kLockFile = "in-use";
constexpr std::string_view kAnyName = "XXXXXX";
// A folder without a lock file is one that is just being made, or that of a program which knew no such file.
constexpr std::time_t kSecondsWithoutLock = 24 * 60 * 60;
constexpr int kAttempts = 10;

// The folder's lock file, locked until it is closed; -1 where there is none or another has it. The system closes it
// with the process, and no program that the process starts inherits it. A file that was removed before its lock came
// locks nothing.
int lockIn(const fs::path& folder, int flags) {
    const int file = ::open((folder / kLockFile).c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | flags, 0600);
    struct stat facts {};
    if (file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) == 0 && ::fstat(file, &facts) == 0 && facts.st_nlink > 0)
        return file;
    if (file >= 0) ::close(file);
    return -1;
}

// The lock is held while the folder goes, so that only one process removes it.
void removeIfDeserted(const fs::path& folder) {
    struct stat facts {};
    if (::lstat(folder.c_str(), &facts) != 0 || !S_ISDIR(facts.st_mode) || facts.st_uid != ::geteuid()) return;
    std::error_code ignored;
    const bool hasLock = fs::exists(folder / kLockFile, ignored);
    if (!hasLock && std::time(nullptr) - facts.st_mtime < kSecondsWithoutLock) return;
    const int lock = hasLock ? lockIn(folder, 0) : -1;
    if (hasLock && lock < 0) return;
    fs::remove_all(folder, ignored);
    if (lock >= 0) ::close(lock);
}

void removeDeserted(const fs::path& parent, const std::string& prefix) {
    std::error_code error;
    for (fs::directory_iterator each(parent, error), end; !error && each != end; each.increment(error)) {
        const std::string name = each->path().filename().string();
        if (name.starts_with(prefix) && name.size() == prefix.size() + kAnyName.size()) removeIfDeserted(each->path());
    }
}

}  // namespace

fs::path PrivateFolder::parent() {
    const fs::path shared = "/dev/shm";
    std::error_code error;
    return fs::is_directory(shared, error) ? shared : fs::temp_directory_path();
}

// Between its making and its lock another process may take the folder for deserted: then the next one is made.
PrivateFolder::PrivateFolder(const std::string& prefix) {
    const fs::path under = parent();
    removeDeserted(under, prefix);
    for (int attempt = 0; attempt < kAttempts && lock_ < 0; ++attempt) {
        std::string made = (under / prefix).string().append(kAnyName);
        if (::mkdtemp(made.data()) == nullptr) break;
        path_ = made;
        lock_ = lockIn(path_, O_CREAT);
    }
    if (lock_ < 0) throw std::runtime_error("no folder of this process' own under " + under.string());
}

PrivateFolder::~PrivateFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
    ::close(lock_);
}

}  // namespace sandbox
