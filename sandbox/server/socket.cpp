// POSIX sockets.
#include "sandbox/server/socket.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

namespace sandbox::server {
namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

void setOption(int descriptor, int level, int option, int value) {
    ::setsockopt(descriptor, level, option, &value, sizeof value);
}

}  // namespace

Socket& Socket::operator=(Socket&& other) noexcept {
    if (this != &other) {
        close();
        descriptor_ = other.release();
    }
    return *this;
}

int Socket::release() {
    return std::exchange(descriptor_, -1);
}

void Socket::close() {
    if (descriptor_ >= 0) ::close(release());
}

std::size_t Socket::receive(std::span<std::uint8_t> into) const {
    while (true) {
        const ssize_t count = ::recv(descriptor_, into.data(), into.size(), 0);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno != EINTR) return 0;
    }
}

bool Socket::send(std::span<const std::uint8_t> bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

void Socket::shutdown() const {
    if (descriptor_ >= 0) ::shutdown(descriptor_, SHUT_RDWR);
}

void Socket::shutdownSending() const {
    ::shutdown(descriptor_, SHUT_WR);
}

void Socket::setReceiveTimeout(std::chrono::milliseconds time) const {
    timeval t{};
    t.tv_sec = time.count() / 1000;
    t.tv_usec = time.count() % 1000 * 1000;
    ::setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &t, sizeof t);
}

bool Socket::readable(std::chrono::milliseconds time) const {
    pollfd p{descriptor_, POLLIN, 0};
    return ::poll(&p, 1, static_cast<int>(time.count())) != 0;
}

Socket listenOn(const std::string& host, std::uint16_t port) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE;
    addrinfo* found = nullptr;
    const int error = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (error != 0) {
        throw std::system_error(EADDRNOTAVAIL, std::generic_category(), host + ": " + ::gai_strerror(error));
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> address(found, ::freeaddrinfo);
    Socket listening(::socket(address->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (listening.get() < 0) fail("socket");
    setOption(listening.get(), SOL_SOCKET, SO_REUSEADDR, 1);
    const std::string where = host + ":" + std::to_string(port);
    if (::bind(listening.get(), address->ai_addr, address->ai_addrlen) != 0) fail("cannot have " + where);
    if (::listen(listening.get(), SOMAXCONN) != 0) fail("cannot listen on " + where);
    return listening;
}

std::uint16_t portOf(const Socket& listening) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (::getsockname(listening.get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) fail("getsockname");
    return ntohs(address.ss_family == AF_INET6 ? reinterpret_cast<const sockaddr_in6&>(address).sin6_port
                                               : reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

Socket acceptOn(const Socket& listening, const Socket& wake) {
    std::array<pollfd, 2> waited = {{{listening.get(), POLLIN, 0}, {wake.get(), POLLIN, 0}}};
    if (::poll(waited.data(), waited.size(), -1) < 0 || waited[1].revents != 0) return Socket();
    Socket client(::accept4(listening.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (client.get() >= 0) {
        setOption(client.get(), IPPROTO_TCP, TCP_NODELAY, 1);
    } else if (errno == EMFILE || errno == ENFILE) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));  // until a descriptor is free again
    }
    return client;
}

}  // namespace sandbox::server
