// One context of libsmbclient a connection: it holds the login, and freeing it ends the connection whatever is open.
#ifndef _WIN32

#include "fleet/share/smb_share.h"

#include <fcntl.h>
#include <libsmbclient.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "fleet/share/piece_size.h"

namespace torvik {

namespace {

constexpr mode_t kNewFile = 0666;

[[noreturn]] void fail(int code) {
    throw ShareError(code, systemErrorText(code));
}

// The last call's error; some calls of the library fail without one.
[[noreturn]] void fail() {
    fail(errno != 0 ? errno : EIO);
}

class LocalFile {
public:
    explicit LocalFile(const std::string& name) : file_(::open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (file_ < 0) fail();
    }
    ~LocalFile() { ::close(file_); }
    LocalFile(const LocalFile&) = delete;
    LocalFile& operator=(const LocalFile&) = delete;

    [[nodiscard]] std::uint64_t size() const {
        struct stat facts {};
        if (::fstat(file_, &facts) != 0) fail();
        return static_cast<std::uint64_t>(facts.st_size);
    }
    // So many bytes or fewer; 0 at the end.
    [[nodiscard]] std::size_t read(std::vector<char>& piece, std::size_t bytes) const {
        if (piece.size() < bytes) piece.resize(bytes);
        const ssize_t got = ::read(file_, piece.data(), bytes);
        if (got < 0) fail();
        return static_cast<std::size_t>(got);
    }

private:
    int file_;
};

// "\\server\share\folder\file" as "smb://server/share/folder/file", with what a URL cannot hold encoded.
std::string urlOf(const std::string& name) {
    std::string url = "smb:/";
    std::string::size_type at = name.find_first_not_of('\\');
    while (at != std::string::npos && at < name.size()) {
        const std::string::size_type end = std::min(name.find('\\', at), name.size());
        std::string part = name.substr(at, end - at);
        std::vector<char> encoded(part.size() * 3 + 1);
        ::smbc_urlencode(encoded.data(), part.data(), static_cast<int>(encoded.size()));
        if (!part.empty()) url += std::string("/") + encoded.data();
        at = end + 1;
    }
    return url;
}

void put(char* place, int room, const std::string& text) {
    if (room <= 0) return;
    std::strncpy(place, text.c_str(), static_cast<std::size_t>(room) - 1);
    place[room - 1] = '\0';
}

void giveLogin(SMBCCTX* context, const char*, const char*, char* domain, int domainRoom, char* user, int userRoom,
               char* password, int passwordRoom) {
    const auto& login = *static_cast<const ShareLogin*>(::smbc_getOptionUserData(context));
    const std::string::size_type slash = login.user.find('\\');
    const bool hasDomain = slash != std::string::npos;
    if (hasDomain) put(domain, domainRoom, login.user.substr(0, slash));
    put(user, userRoom, hasDomain ? login.user.substr(slash + 1) : login.user);
    put(password, passwordRoom, login.password);
}

class SmbShare : public FileShare {
public:
    explicit SmbShare(const SmbOptions& options) : options_(options) {}
    ~SmbShare() override { free(); }
    SmbShare(const SmbShare&) = delete;
    SmbShare& operator=(const SmbShare&) = delete;

    void connect(const std::string& resource, const ShareLogin& login) override;
    void copy(const std::string& localFile, const std::string& target, const ShareProgress& progress,
              const int& cancel) override;
    void remove(const std::string& target) override;
    void disconnect(const std::string& resource) override;

private:
    int free();
    [[nodiscard]] SMBCCTX* context() const {
        if (!context_) fail(ENOTCONN);
        return context_;
    }
    void writeAll(const LocalFile& from, SMBCFILE* to, const ShareProgress& progress, const int& cancel) const;

    SmbOptions options_;
    ShareLogin login_;
    SMBCCTX* context_ = nullptr;
};

int SmbShare::free() {
    if (!context_) return 0;
    errno = 0;
    const int failed = ::smbc_free_context(context_, 1);
    context_ = nullptr;
    return failed;
}

// Asking for the share's root is what makes the library connect. No guest in the place of a user that is refused.
void SmbShare::connect(const std::string& resource, const ShareLogin& login) {
    free();
    login_ = login;
    SMBCCTX* made = ::smbc_new_context();
    if (!made) fail(ENOMEM);
    ::smbc_setDebug(made, 0);
    ::smbc_setOptionDebugToStderr(made, 1);
    ::smbc_setTimeout(made, options_.timeoutMs);
    if (options_.port != 0) ::smbc_setPort(made, options_.port);
    ::smbc_setOptionUserData(made, &login_);
    ::smbc_setFunctionAuthDataWithContext(made, giveLogin);
    ::smbc_setOptionNoAutoAnonymousLogin(made, 1);
    if (!::smbc_init_context(made)) {
        const int code = errno;
        ::smbc_free_context(made, 0);
        fail(code);
    }
    context_ = made;
    struct stat root {};
    errno = 0;
    if (::smbc_getFunctionStat(context_)(context_, urlOf(resource).c_str(), &root) == 0) return;
    const int code = errno != 0 ? errno : EIO;
    free();
    fail(code);
}

// The share is asked for the size of what was written: a copy that is not whole is none.
void SmbShare::copy(const std::string& localFile, const std::string& target, const ShareProgress& progress,
                    const int& cancel) {
    const LocalFile from(localFile);
    const std::string url = urlOf(target);
    errno = 0;
    SMBCFILE* to = ::smbc_getFunctionOpen(context())(context(), url.c_str(), O_WRONLY | O_CREAT | O_TRUNC, kNewFile);
    if (!to) fail();
    try {
        writeAll(from, to, progress, cancel);
        errno = 0;
        SMBCFILE* written = to;
        to = nullptr;
        if (::smbc_getFunctionClose(context())(context(), written) != 0) fail();
        struct stat there {};
        if (::smbc_getFunctionStat(context())(context(), url.c_str(), &there) != 0) fail();
        if (static_cast<std::uint64_t>(there.st_size) != from.size()) fail(EIO);
    } catch (...) {
        if (to) ::smbc_getFunctionClose(context())(context(), to);
        ::smbc_getFunctionUnlink(context())(context(), url.c_str());
        throw;
    }
}

void SmbShare::writeAll(const LocalFile& from, SMBCFILE* to, const ShareProgress& progress, const int& cancel) const {
    const auto write = ::smbc_getFunctionWrite(context());
    const std::uint64_t total = from.size();
    std::uint64_t transferred = 0;
    PieceSize size;
    std::vector<char> piece;
    while (const std::size_t got = from.read(piece, size.bytes())) {
        if (cancel != 0) fail(ECANCELED);
        const auto start = std::chrono::steady_clock::now();
        errno = 0;
        if (write(context(), to, piece.data(), got) != static_cast<ssize_t>(got)) fail();
        size.took(std::chrono::steady_clock::now() - start);
        transferred += got;
        progress(transferred, total);
    }
    if (cancel != 0) fail(ECANCELED);
    if (transferred != total) fail(EIO);
}

void SmbShare::remove(const std::string& target) {
    errno = 0;
    if (::smbc_getFunctionUnlink(context())(context(), urlOf(target).c_str()) != 0) fail();
}

void SmbShare::disconnect(const std::string&) {
    (void)context();
    if (free() != 0) fail();
}

}  // namespace

std::string systemErrorText(int code) {
    return std::strerror(code);
}

std::unique_ptr<FileShare> smbFileShare(const SmbOptions& options) {
    return std::make_unique<SmbShare>(options);
}

std::unique_ptr<FileShare> systemFileShare() {
    return smbFileShare({});
}

}  // namespace torvik

#endif
