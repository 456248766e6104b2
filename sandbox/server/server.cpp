// The listener and the threads of the connections.
#include "sandbox/server/server.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>

#include "sandbox/server/connection.h"
#include "sandbox/server/logins.h"
#include "sandbox/server/names.h"
#include "sandbox/server/tls.h"

namespace sandbox {
using server::Connection;
using server::Logins;
using server::ServerContext;
using server::Socket;
using server::TlsContext;

namespace {

// Whether this thread serves a connection, of whichever server.
thread_local bool servesConnection = false;

}  // namespace

struct Server::State {
    explicit State(Options given)
        : options(std::move(given)), engine(options.engine), logins(options.saPassword, options.logins) {
        if (options.tls != TlsMode::NotSupported) tls.emplace(options.certificateFile, options.keyFile);
    }

    void listen();
    void stopListening();
    void acceptClients();
    void start(Socket client);
    void run(const std::shared_ptr<Connection>& connection);
    void joinFinished();

    Options options;
    Engine engine;
    Faults faults{engine};
    Logins logins;
    std::optional<TlsContext> tls;

    Socket listening;
    Socket wake;
    std::atomic<bool> accepting = false;
    std::thread acceptor;
    std::uint16_t port = 0;

    mutable std::mutex mutex;
    std::condition_variable changed;
    struct Running {
        std::shared_ptr<Connection> connection;
        std::thread thread;
    };
    std::map<std::uint64_t, Running> running;
    std::vector<std::thread> finished;
    std::uint64_t nextId = 1;
};

Server::Server(Options options) : state_(std::make_unique<State>(std::move(options))) {
    state_->listen();
}

Server::~Server() {
    state_->stopListening();
    std::unique_lock lock(state_->mutex);
    for (auto& [id, r] : state_->running) r.connection->cut();
    state_->changed.wait(lock, [&] { return state_->running.empty(); });
    lock.unlock();
    state_->joinFinished();
}

std::uint16_t Server::port() const {
    return state_->port;
}

const std::string& Server::host() const {
    return state_->options.host;
}

Engine& Server::engine() {
    return state_->engine;
}

Faults& Server::faults() {
    return state_->faults;
}

std::size_t Server::connectionCount() const {
    const std::lock_guard lock(state_->mutex);
    return state_->running.size();
}

std::vector<ConnectionInfo> Server::connections() const {
    const std::lock_guard lock(state_->mutex);
    std::vector<ConnectionInfo> out;
    for (const auto& [id, r] : state_->running) {
        if (auto info = r.connection->info()) out.push_back(*info);
    }
    return out;
}

void Server::dropConnections(const std::string& program) {
    std::unique_lock lock(state_->mutex);
    std::vector<std::uint64_t> ids;
    for (auto& [id, r] : state_->running) {
        const auto info = r.connection->info();
        if (!program.empty() && (!info || !server::sameName(info->program, program))) continue;
        r.connection->cut();
        ids.push_back(id);
    }
    if (servesConnection) return;
    state_->changed.wait(lock, [&] {
        return std::none_of(ids.begin(), ids.end(), [&](std::uint64_t id) { return state_->running.contains(id); });
    });
}

void Server::stopListening() {
    state_->stopListening();
}

void Server::startListening() {
    if (!state_->accepting) state_->listen();
}

void Server::State::listen() {
    listening = server::listenOn(options.host, port != 0 ? port : options.port);
    port = server::portOf(listening);
    wake = Socket(::eventfd(0, EFD_CLOEXEC));
    if (wake.get() < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
    accepting = true;
    acceptor = std::thread([this] { acceptClients(); });
}

void Server::State::stopListening() {
    if (!accepting.exchange(false)) return;
    const std::uint64_t one = 1;
    if (::write(wake.get(), &one, sizeof one) < 0) return;
    acceptor.join();
    listening.close();
}

void Server::State::acceptClients() {
    while (accepting) {
        Socket client = server::acceptOn(listening, wake);
        joinFinished();
        if (client.get() >= 0) start(std::move(client));
    }
}

void Server::State::start(Socket client) {
    const std::lock_guard lock(mutex);
    if (running.size() >= options.maxConnections) return;  // the socket closes
    const std::uint64_t id = nextId++;
    auto connection =
        std::make_shared<Connection>(ServerContext{options, engine, faults, logins, tls ? &*tls : nullptr},
                                     std::move(client), id, faults.takeHang());
    try {
        running[id] = {connection, std::thread([this, connection] { run(connection); })};
    } catch (const std::system_error&) {
        running.erase(id);  // no thread is to be had: the client is turned away like one too many
    }
}

void Server::State::run(const std::shared_ptr<Connection>& connection) {
    servesConnection = true;
    connection->run();
    const std::lock_guard lock(mutex);
    const auto mine = running.find(connection->id());
    finished.push_back(std::move(mine->second.thread));
    running.erase(mine);
    changed.notify_all();
}

void Server::State::joinFinished() {
    std::vector<std::thread> ended;
    {
        const std::lock_guard lock(mutex);
        ended.swap(finished);
    }
    for (std::thread& t : ended) t.join();
}

}  // namespace sandbox
