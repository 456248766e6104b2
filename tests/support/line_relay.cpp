// See line_relay.h.
#include "tests/support/line_relay.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <deque>
#include <mutex>
#include <optional>
#include <span>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace torvik::test {

namespace {

using sandbox::server::Socket;
using Clock = std::chrono::steady_clock;
using Bytes = std::vector<std::uint8_t>;

// So much is on its way in one direction at most; behind it the sender is let wait, as a full window does.
constexpr std::size_t kMostOnTheWay = 4U << 20;

void setAtOnce(int descriptor) {
    const int on = 1;
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

// The other end learns of a loss, and not of an orderly end.
void reset(Socket& socket) {
    if (socket.get() < 0) return;
    const linger atOnce{1, 0};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    socket.close();
}

// Accepting never waits: whoever was announced may have gone.
Socket listenHere(std::uint16_t port) {
    Socket listening = sandbox::server::listenOn("127.0.0.1", port);
    ::fcntl(listening.get(), F_SETFL, O_NONBLOCK);
    return listening;
}

// What travels one way of a connection.
struct Direction {
    struct Piece {
        Clock::time_point due;
        Bytes bytes;  // none: the sender has ended
        std::size_t handed = 0;
    };
    std::deque<Piece> onTheWay;
    std::size_t held = 0;
    Clock::time_point free;  // when the line has taken what it was given
    bool ended = false;      // the sender has
    bool endHanded = false;  // and the receiver knows
    bool stuck = false;      // the receiver takes nothing just now
};

struct Connection {
    Socket client;
    Socket server;  // from the first byte on
    Direction toServer;
    Direction toClient;
    bool lost = false;
};

}  // namespace

Socket connectTo(std::uint16_t port) {
    Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) socket.close();
    if (socket.get() >= 0) setAtOnce(socket.get());
    return socket;
}

struct LineRelay::State {
    std::uint16_t serverPort;
    Terms terms;
    std::uint16_t ownPort = 0;
    Socket listening;
    Socket wake{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    mutable std::mutex mutex;
    std::deque<Connection> connections;
    bool silent = false;
    bool stopping = false;
    std::uint64_t accepted = 0;
    std::array<std::uint64_t, 2> carried{};
    std::array<std::optional<std::uint64_t>, 2> left;  // until a cut
    Bytes room = Bytes(64U << 10);
    std::thread thread;

    void run();
    [[nodiscard]] std::optional<Clock::time_point> handOn();
    void handOn(Connection& connection, Way way, Clock::time_point now);
    [[nodiscard]] bool handBytes(Connection& connection, Way way, Direction::Piece& piece, const Socket& to);
    [[nodiscard]] std::vector<pollfd> waitedFor() const;
    void take(std::span<const pollfd> seen, std::size_t connectionsSeen);
    void takeFrom(Connection& connection, Way way, const Socket& from);
    void acceptOne();
    void tell() const {
        const std::uint64_t one = 1;
        static_cast<void>(::write(wake.get(), &one, sizeof one));
    }
    template <typename Change>
    void change(Change what) {
        {
            const std::scoped_lock lock(mutex);
            what();
        }
        tell();
    }
};

// Three places a connection: what is waited for of its client and of its server; behind them the two of the relay.
void LineRelay::State::run() {
    std::unique_lock lock(mutex);
    while (!stopping) {
        const std::optional<Clock::time_point> next = handOn();
        std::vector<pollfd> waited = waitedFor();
        const std::size_t seen = connections.size();
        timespec time{};
        if (next) {
            const auto untilNext = std::max(Clock::duration::zero(), *next - Clock::now());
            time.tv_sec = std::chrono::duration_cast<std::chrono::seconds>(untilNext).count();
            time.tv_nsec = std::chrono::nanoseconds(untilNext).count() % 1'000'000'000;
        }
        lock.unlock();
        ::ppoll(waited.data(), waited.size(), next ? &time : nullptr, nullptr);
        lock.lock();
        take(waited, seen);
    }
}

// What is due goes on; gives when the next will be.
std::optional<Clock::time_point> LineRelay::State::handOn() {
    const Clock::time_point now = Clock::now();
    std::optional<Clock::time_point> next;
    for (Connection& connection : connections) {
        if (!silent) {
            handOn(connection, Way::ToServer, now);
            handOn(connection, Way::ToClient, now);
        }
        for (const Direction* way : {&connection.toServer, &connection.toClient})
            if (!silent && !way->stuck && !way->onTheWay.empty() && (!next || way->onTheWay.front().due < *next))
                next = way->onTheWay.front().due;
        if (connection.lost) {
            reset(connection.client);
            reset(connection.server);
        }
    }
    std::erase_if(connections,
                  [](const Connection& one) { return one.lost || (one.toServer.endHanded && one.toClient.endHanded); });
    return next;
}

void LineRelay::State::handOn(Connection& connection, Way way, Clock::time_point now) {
    Direction& line = way == Way::ToServer ? connection.toServer : connection.toClient;
    line.stuck = false;
    while (!connection.lost && !line.stuck && !line.onTheWay.empty() && line.onTheWay.front().due <= now) {
        Direction::Piece& piece = line.onTheWay.front();
        if (connection.server.get() < 0) {
            connection.server = connectTo(serverPort);
            connection.lost = connection.server.get() < 0;
            if (connection.lost) return;
        }
        const Socket& to = way == Way::ToServer ? connection.server : connection.client;
        if (piece.bytes.empty()) {
            to.shutdownSending();
            line.endHanded = true;
        } else if (!handBytes(connection, way, piece, to)) {
            return;
        } else if (piece.handed < piece.bytes.size()) {
            line.stuck = true;
            return;
        }
        line.held -= piece.bytes.size();
        line.onTheWay.pop_front();
    }
}

// As many as the receiver takes and as may go before a cut. False: the connection is lost.
bool LineRelay::State::handBytes(Connection& connection, Way way, Direction::Piece& piece, const Socket& to) {
    std::optional<std::uint64_t>& untilCut = left[static_cast<std::size_t>(way)];
    std::size_t count = piece.bytes.size() - piece.handed;
    if (untilCut) count = std::min<std::size_t>(count, *untilCut);
    ssize_t sent = 0;
    if (count > 0) sent = ::send(to.get(), piece.bytes.data() + piece.handed, count, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && errno != EAGAIN && errno != EINTR) connection.lost = true;
    const std::size_t went = sent > 0 ? static_cast<std::size_t>(sent) : 0;
    piece.handed += went;
    carried[static_cast<std::size_t>(way)] += went;
    if (untilCut && (*untilCut -= went) == 0) {
        untilCut.reset();
        // Without a reset, which could overtake what was sent.
        connection.client.close();
        connection.server.close();
        connection.lost = true;
    }
    return !connection.lost;
}

std::vector<pollfd> LineRelay::State::waitedFor() const {
    std::vector<pollfd> waited;
    waited.reserve(2 * connections.size() + 2);
    const auto events = [this](const Direction& from, const Direction& to) {
        const bool takes = !from.ended && (silent || from.held < kMostOnTheWay);
        return static_cast<short>((takes ? POLLIN : 0) | (to.stuck && !silent ? POLLOUT : 0));
    };
    // A negative descriptor is passed over.
    const auto place = [](const Socket& socket, short wanted) {
        return pollfd{wanted != 0 ? socket.get() : -1, wanted, 0};
    };
    for (const Connection& one : connections) {
        waited.push_back(place(one.client, events(one.toServer, one.toClient)));
        waited.push_back(place(one.server, events(one.toClient, one.toServer)));
    }
    waited.push_back({listening.get(), POLLIN, 0});
    waited.push_back({wake.get(), POLLIN, 0});
    return waited;
}

void LineRelay::State::take(std::span<const pollfd> seen, std::size_t connectionsSeen) {
    std::uint64_t woken = 0;
    static_cast<void>(::read(wake.get(), &woken, sizeof woken));
    for (std::size_t i = 0; i < std::min(connectionsSeen, connections.size()); ++i) {
        Connection& one = connections[i];
        if (one.lost) continue;
        if (seen[2 * i].revents & (POLLIN | POLLHUP | POLLERR)) takeFrom(one, Way::ToServer, one.client);
        if (seen[2 * i + 1].revents & (POLLIN | POLLHUP | POLLERR)) takeFrom(one, Way::ToClient, one.server);
    }
    if (listening.get() >= 0 && seen[2 * connectionsSeen].revents != 0) acceptOne();
}

void LineRelay::State::takeFrom(Connection& connection, Way way, const Socket& from) {
    Direction& line = way == Way::ToServer ? connection.toServer : connection.toClient;
    if (line.ended || from.get() < 0) return;
    const ssize_t count = ::recv(from.get(), room.data(), room.size(), MSG_DONTWAIT);
    if (count < 0) {
        if (errno != EAGAIN && errno != EINTR) connection.lost = true;
        return;
    }
    Bytes bytes(room.begin(), room.begin() + count);
    line.ended = bytes.empty();
    line.free = std::max(line.free, Clock::now());
    if (terms.bytesPerSecond > 0)
        line.free += std::chrono::nanoseconds(bytes.size() * 1'000'000'000ULL / terms.bytesPerSecond);
    line.held += bytes.size();
    line.onTheWay.push_back({line.free + terms.delay, std::move(bytes)});
}

// The greeting's round trip is put before the first byte.
void LineRelay::State::acceptOne() {
    Socket client(::accept4(listening.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (client.get() < 0) return;
    setAtOnce(client.get());
    ++accepted;
    Connection& made = connections.emplace_back();
    made.client = std::move(client);
    made.toServer.free = Clock::now() + 2 * terms.delay;
}

LineRelay::LineRelay(std::uint16_t server) : LineRelay(server, Terms()) {}

LineRelay::LineRelay(std::uint16_t server, const Terms& terms) : state_(new State{server, terms}) {
    state_->listening = listenHere(0);
    state_->ownPort = sandbox::server::portOf(state_->listening);
    state_->thread = std::thread([this] { state_->run(); });
}

LineRelay::~LineRelay() {
    state_->change([this] { state_->stopping = true; });
    state_->thread.join();
}

std::uint16_t LineRelay::port() const {
    return state_->ownPort;
}

void LineRelay::setTerms(const Terms& terms) {
    state_->change([&] { state_->terms = terms; });
}

void LineRelay::cut() {
    state_->change([this] {
        for (Connection& one : state_->connections) one.lost = true;
    });
}

void LineRelay::cutAfter(Way way, std::uint64_t bytes) {
    state_->change([&] { state_->left[static_cast<std::size_t>(way)] = bytes; });
}

void LineRelay::fallSilent() {
    state_->change([this] { state_->silent = true; });
}

void LineRelay::speak() {
    state_->change([this] { state_->silent = false; });
}

void LineRelay::refuse() {
    state_->change([this] {
        state_->listening.shutdown();  // while it is waited on, closing it alone would let it listen on
        state_->listening.close();
    });
}

void LineRelay::accept() {
    state_->change([this] {
        if (state_->listening.get() < 0) state_->listening = listenHere(state_->ownPort);
    });
}

std::size_t LineRelay::connections() const {
    const std::scoped_lock lock(state_->mutex);
    return state_->connections.size();
}

std::uint64_t LineRelay::accepted() const {
    const std::scoped_lock lock(state_->mutex);
    return state_->accepted;
}

std::uint64_t LineRelay::carried(Way way) const {
    const std::scoped_lock lock(state_->mutex);
    return state_->carried[static_cast<std::size_t>(way)];
}

}  // namespace torvik::test
