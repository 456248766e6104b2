// A line between clients and one server, for tests and measurements: it delays what it carries, carries only so much a
// second, loses connections, falls silent or refuses new ones. A relay on real sockets, with a thread of its own; the
// client connects to port().
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "sandbox/server/socket.h"

namespace torvik::test {

// A client's socket to a server of this machine, which sends what it is given at once. Empty: nobody listens there.
[[nodiscard]] sandbox::server::Socket connectTo(std::uint16_t port);

class LineRelay {
public:
    enum class Way { ToServer, ToClient };

    struct Terms {
        std::chrono::microseconds delay{0};  // each way
        std::uint64_t bytesPerSecond = 0;    // each way of a connection; 0: as much as comes
    };

    // To a server of this machine, which need not stand yet. A connection costs a delay each way before its first byte
    // travels, as TCP's greeting does.
    explicit LineRelay(std::uint16_t server);
    LineRelay(std::uint16_t server, const Terms& terms);
    ~LineRelay();  // cuts what stands
    LineRelay(const LineRelay&) = delete;
    LineRelay& operator=(const LineRelay&) = delete;

    [[nodiscard]] std::uint16_t port() const;

    // For what comes from now on; what is on its way keeps its time.
    void setTerms(const Terms& terms);
    // All connections that stand are lost now, at both ends.
    void cut();
    // The connection that carries so many more bytes that way, counted over all of them, is lost behind exactly that
    // byte, once.
    void cutAfter(Way way, std::uint64_t bytes);
    // Takes bytes and new connections, and passes nothing on, no end of a connection either, until it speaks again:
    // then comes what it has kept.
    void fallSilent();
    void speak();
    // New connections are refused by the operating system until it accepts them again, on the same port; those that
    // stand go on.
    void refuse();
    void accept();

    [[nodiscard]] std::size_t connections() const;       // that stand
    [[nodiscard]] std::uint64_t accepted() const;        // so far
    [[nodiscard]] std::uint64_t carried(Way way) const;  // bytes handed on so far

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace torvik::test
