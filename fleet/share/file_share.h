// A till's file share: an authenticated connection to it, a copy with progress and cancel, deletion, a forced
// disconnect, and the system's text for an error. Free of Qt; texts are UTF-8. Names on the share are whole:
// "\\server\share\folder\file". Used by the file copy; docs/fleet.md.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace torvik {

// What the system objected to; what() is its own text, and never holds a password.
class ShareError : public std::runtime_error {
public:
    ShareError(int code, const std::string& text) : std::runtime_error(text), code_(code) {}
    [[nodiscard]] int code() const { return code_; }

private:
    int code_;
};

struct ShareLogin {
    std::string user;  // also "domain\user"
    std::string password;
};

// After each piece: bytes copied so far and in all. What it raises ends the copy.
using ShareProgress = std::function<void(std::uint64_t transferred, std::uint64_t total)>;

class FileShare {
public:
    virtual ~FileShare() = default;

    // Every operation raises ShareError. resource: "\\server\share". A connection that stands is replaced.
    virtual void connect(const std::string& resource, const ShareLogin& login) = 0;
    // Overwrites the target. Once cancel, which is read between pieces, is not 0, the copy ends with an error. A copy
    // that does not end well leaves no target.
    virtual void copy(const std::string& localFile, const std::string& target, const ShareProgress& progress,
                      const int& cancel) = 0;
    virtual void remove(const std::string& target) = 0;
    // Also with files open.
    virtual void disconnect(const std::string& resource) = 0;
};

// The system's text for an error code of its own.
[[nodiscard]] std::string systemErrorText(int code);

// That of the platform.
[[nodiscard]] std::unique_ptr<FileShare> systemFileShare();

}  // namespace torvik
