// A connection's life: login, requests one by one, end.
#include "sandbox/server/connection.h"

#include <array>
#include <thread>

#include "sandbox/server/login_handler.h"
#include "sandbox/store/databases/locks.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox::server {
namespace {

constexpr std::chrono::seconds kLoginTime{30};
constexpr std::chrono::milliseconds kCancelInterval{20};
constexpr std::size_t kReceiveSize = 65536;

}  // namespace

Connection::Connection(const ServerContext& server, Socket socket, std::uint64_t id, bool hangs)
    : server_(server),
      id_(id),
      hangs_(hangs),
      channel_(std::move(socket), server.faults),
      reply_(channel_, server.engine.serverName()) {
    reply_.onStatement = [this] { return statementEnded(); };
    reply_.interrupted = [this] { return inbox_.interrupted(); };
}

void Connection::run() {
    try {
        channel_.socket().setReceiveTimeout(kLoginTime);
        if (hangs_) {
            channel_.socket().setReceiveTimeout(std::chrono::milliseconds(0));
            while (!channel_.receive(kReceiveSize).empty()) continue;
        } else {
            LoginHandler login(channel_, reply_, server_.engine, server_.faults, server_.logins, server_.tls,
                               server_.options.tls);
            session_ = login.run();
            if (session_) {
                letIn(login.login());
                login.welcome(*session_);
                largestPacket_ = std::max(tds::kDefaultPacket, reply_.packets().size());
                serve();
            }
        }
    } catch (const std::exception&) {
        // A client that sends nonsense, or fails its TLS handshake, loses its connection and nothing else.
    }
    channel_.cut();
    calls_.reset();
    bulk_.reset();
    session_.reset();
}

// Before the client learns of it, so that whoever waits for the login finds it counted.
void Connection::letIn(const tds::Login& login) {
    channel_.setProgram(login.program);
    language_ = login.language;
    channel_.socket().setReceiveTimeout(std::chrono::milliseconds(0));
    server_.faults.loggedIn();
    const std::lock_guard lock(infoMutex_);
    info_ = {id_, session_->spid(), login.user, login.host, login.program, session_->database(), 0, 0};
}

std::optional<ConnectionInfo> Connection::info() const {
    const std::lock_guard lock(infoMutex_);
    return info_;
}

void Connection::cut() {
    channel_.cut();
    inbox_.close();
}

void Connection::serve() {
    calls_ = std::make_unique<CallHandler>(*session_);
    bulk_ = std::make_unique<BulkLoad>(*session_, inbox_, server_.options.maxMessageBytes);
    session_->watch(this);
    std::thread reader([this] { read(); });
    try {
        while (std::optional<tds::Packet> packet = inbox_.take()) {
            if (!handle(std::move(*packet))) break;
        }
    } catch (const tds::StreamError&) {
        // As above; the reader still has to be waited for.
    } catch (const std::exception& e) {
        failInside(e);
    }
    (void)inbox_.endRequest();
    // The reader may be waiting for the client, or for room in an inbox that nobody empties any more.
    cut();
    reader.join();
}

void Connection::read() {
    tds::PacketReader packets;
    packets.setLargest(largestPacket_);
    try {
        while (true) {
            if (inbox_.wantsCancel() && !channel_.socket().readable(kCancelInterval)) {
                inbox_.cancelAgain();
                continue;
            }
            const std::vector<std::uint8_t> bytes = channel_.receive(kReceiveSize);
            if (bytes.empty()) break;
            packets.feed(bytes);
            while (auto packet = packets.next()) inbox_.put(std::move(*packet));
        }
    } catch (const std::exception&) {
        channel_.cut();
    }
    inbox_.close();
    inbox_.awaitIdle();
}

// False: the connection ends.
bool Connection::handle(tds::Packet packet) {
    const tds::PacketType type = packet.type;
    if (type == tds::PacketType::Attention) {
        reply_.acknowledgeAttention();  // what it was to cancel has already been answered
        return true;
    }
    reset(packet.status);
    if (type == tds::PacketType::BulkLoad) {
        return answer(
            request(RequestKind::Bulk, bulk_->announced()),
            [&] {
                const BulkLoad::End end = bulk_->receive(std::move(packet), reply_);
                attentionTaken_ = end == BulkLoad::End::Attention;
                cutShort_ = attentionTaken_ || end == BulkLoad::End::Cancelled;
            },
            [&] { attentionTaken_ = bulk_->readOver(std::move(packet)) == BulkLoad::End::Attention; });
    }
    bulk_->forget();
    std::optional<std::vector<std::uint8_t>> message = collect(std::move(packet));
    if (!message) return true;
    switch (type) {
        case tds::PacketType::SqlBatch: {
            const std::string text = tds::readBatch(*message, reply_.version());
            return answer(request(RequestKind::Batch, text), [&] { batch(text); });
        }
        case tds::PacketType::Rpc: {
            std::vector<tds::Call> list;
            try {
                list = tds::readCalls(*message, reply_.version());
            } catch (const tds::RefusedParameter& e) {
                return answer(request(RequestKind::Call, {}), [&] {
                    reply_.error(e.message);
                    reply_.procedureDone();
                });
            }
            message.reset();  // a large one need not lie twice in memory while it runs
            std::string text;
            for (const tds::Call& call : list) text += (text.empty() ? "" : "\n") + CallHandler::describe(call);
            return answer(request(RequestKind::Call, text), [&] { calls(list); });
        }
        case tds::PacketType::TransactionManager: {
            const tds::TransactionRequest step = tds::readTransaction(*message);
            return answer(request(RequestKind::Transaction, tds::textOf(step)), [&] { transaction(step); });
        }
        default: throw tds::StreamError("a message that has no place after the login");
    }
}

// The whole of a message; none where the client took it back before its end, which is then answered. Its packets are
// joined when all have come.
std::optional<std::vector<std::uint8_t>> Connection::collect(tds::Packet packet) {
    std::size_t size = packet.body.size();
    std::vector<tds::Packet> packets;
    packets.push_back(std::move(packet));
    while (!packets.back().last()) {
        std::optional<tds::Packet> next = inbox_.take();
        if (!next) return std::nullopt;
        if (next->type == tds::PacketType::Attention) {
            reply_.acknowledgeAttention();
            return std::nullopt;
        }
        if (next->type != packets.back().type) throw tds::StreamError("a message within another");
        size += next->body.size();
        if (size > server_.options.maxMessageBytes) throw tds::StreamError("a message that is too long");
        packets.push_back(*std::move(next));
    }
    if ((packets.back().status & tds::kIgnoreMessage) != 0) {
        reply_.finish();
        return std::nullopt;
    }
    std::vector<std::uint8_t> message = std::move(packets.front().body);
    message.reserve(size);
    for (auto each = packets.begin() + 1; each != packets.end(); ++each)
        message.insert(message.end(), each->body.begin(), each->body.end());
    return message;
}

bool Connection::answer(RequestInfo request, const std::function<void()>& execute,
                        const std::function<void()>& passOver) {
    attentionTaken_ = cutShort_ = logged_ = false;
    const Faults::Verdict verdict = server_.faults.meet(request);
    const RequestKind kind = request.kind;
    running_ = {std::move(request), {}, false, false};
    errorsBefore_ = reply_.errors();
    inbox_.beginRequest();
    if (verdict.delay.count() > 0) inbox_.pause(verdict.delay, false);
    bool goesOn = true;
    if (verdict.action) {
        goesOn = showFault(verdict, execute, passOver);
    } else if (inbox_.interrupted() && kind != RequestKind::Bulk) {
        cutShort_ = true;
    } else {
        try {
            execute();
            cutShort_ = cutShort_ || session_->cancelled();
        } catch (const StatementCancelled&) {
            cutShort_ = true;
        } catch (const SqlError&) {
            goesOn = false;  // of a severity that ends the connection; the reply has it already
        }
    }
    const bool attention = inbox_.endRequest() || attentionTaken_;
    const bool lost = channel_.isCut() || inbox_.closed();
    tellLog(lost);
    if (lost) return false;
    {
        const std::lock_guard lock(infoMutex_);
        info_->database = session_->database();
    }
    reply_.finish(attention && cutShort_);
    if (attention) reply_.acknowledgeAttention();
    if (!goesOn) channel_.closeGently();
    return goesOn;
}

// False: the connection ends.
bool Connection::showFault(const Faults::Verdict& verdict, const std::function<void()>& execute,
                           const std::function<void()>& passOver) {
    constexpr int kEndsConnection = 20;
    switch (*verdict.action) {
        case FaultAction::Fail: {
            if (passOver) passOver();
            if (verdict.rollBack) {
                unwatched([&] { session_->batch("IF @@TRANCOUNT > 0 ROLLBACK TRANSACTION", reply_); });
            }
            Message message = verdict.message;
            if (message.line == 0) message.line = 1;
            reply_.error(message);
            return message.severity < kEndsConnection;
        }
        case FaultAction::DropAfter:
            reply_.discardRest();
            execute();
            cutByFault();
            return false;
        case FaultAction::Hang:
            (void)inbox_.endRequest();
            inbox_.pause(std::nullopt, true);
            return false;
        case FaultAction::DropBefore:
        case FaultAction::Delay: break;
    }
    cutByFault();
    return false;
}

void Connection::begins(std::string_view text) {
    constexpr int kEndsConnection = 20;
    ++statements_;
    ++depth_;
    if (!server_.faults.watchesStatements()) return;
    RequestInfo statement = running_.request;
    statement.number = statements_;
    if (!text.empty()) statement.text = text;
    running_.statements.push_back(statement.text);
    const Faults::Verdict verdict = server_.faults.meetStatement(statement);
    if (verdict.delay.count() > 0) inbox_.pause(verdict.delay, false);
    if (!verdict.action) return;
    if (*verdict.action == FaultAction::DropAfter) {
        if (cutBelow_ == 0) cutBelow_ = depth_;
        return;
    }
    --depth_;
    if (*verdict.action == FaultAction::Fail) {
        const Message& m = verdict.message;
        throw SqlError(m, m.severity >= kEndsConnection ? Effect::Connection
                          : verdict.rollBack            ? Effect::Batch
                                                        : Effect::Statement);
    }
    if (*verdict.action == FaultAction::Hang) inbox_.pause(std::nullopt, true);
    cutByFault();
    throw StatementCancelled();
}

void Connection::ended() noexcept {
    if (depth_-- != cutBelow_) return;
    cutByFault();
    if (session_) session_->cancel();
}

void Connection::unwatched(const std::function<void()>& action) {
    session_->watch(nullptr);
    action();
    session_->watch(this);
}

void Connection::cutByFault() {
    tellLog(true);
    channel_.cut();
}

// Before the client hears of it, so that a test that has its reply finds the request logged.
void Connection::tellLog(bool cut) {
    if (std::exchange(logged_, true)) return;
    running_.failed = reply_.errors() != errorsBefore_;
    running_.cut = cut;
    server_.faults.ended(std::move(running_));
}

void Connection::batch(const std::string& text) {
    if (BulkLoad::announces(text)) {
        cutShort_ = !bulk_->begin(text, reply_);
    } else {
        session_->batch(text, reply_);
    }
}

void Connection::calls(const std::vector<tds::Call>& calls) {
    for (const tds::Call& call : calls) {
        if (inbox_.interrupted()) return;
        calls_->run(call, reply_);
    }
}

void Connection::transaction(const tds::TransactionRequest& request) {
    static constexpr std::array<const char*, 6> kLevels = {
        "", "READ UNCOMMITTED", "READ COMMITTED", "REPEATABLE READ", "SERIALIZABLE", "SNAPSHOT"};
    if (request.isolation != 0) {
        unwatched([&] {
            session_->batch(std::string("SET TRANSACTION ISOLATION LEVEL ") + kLevels[request.isolation], reply_);
        });
    }
    switch (request.step) {
        case tds::TransactionStep::Begin: return session_->beginTransaction(request.name, reply_);
        case tds::TransactionStep::Commit: return session_->commitTransaction(request.beginAnother, reply_);
        case tds::TransactionStep::Rollback:
            return session_->rollbackTransaction(request.name, request.beginAnother, reply_);
        case tds::TransactionStep::Save: return session_->saveTransaction(request.name, reply_);
        case tds::TransactionStep::GetDtcAddress:
        case tds::TransactionStep::Propagate:
        case tds::TransactionStep::Promote: break;
    }
    reply_.error(errorMessage<8501>(server_.engine.serverName()).atLine(1));
}

void Connection::reset(std::uint8_t status) {
    if ((status & (tds::kResetConnection | tds::kResetKeepingTransaction)) == 0) return;
    const std::string before = session_->database();
    bulk_->forget();
    calls_->reset();
    session_->reset((status & tds::kResetKeepingTransaction) != 0);
    unwatched([&] { (void)applyLanguage(*session_, language_); });
    if (session_->database() != before) reply_.databaseChanged(before, session_->database());
    reply_.tokens().connectionReset();
}

// False: the client is to hear no more of this request.
bool Connection::statementEnded() {
    {
        const std::lock_guard lock(infoMutex_);
        ++info_->statements;
    }
    const Faults::StatementVerdict verdict = server_.faults.statementEnded(info_->program);
    if (!verdict.drop) return true;
    if (verdict.message) {
        Message message = *verdict.message;
        if (message.line == 0) message.line = 1;
        reply_.error(message);
    } else {
        cutByFault();
    }
    session_->cancel();
    return false;
}

// A fault of this program and not of the client: told like a server's own fatal error, and the connection ends.
void Connection::failInside(const std::exception& e) {
    reply_.error(errorMessage<596>(e.what()).atLine(1));
    (void)inbox_.endRequest();
    reply_.finish();
    channel_.closeGently();
}

RequestInfo Connection::request(RequestKind kind, std::string text) {
    const std::lock_guard lock(infoMutex_);
    RequestInfo r;
    r.connection = id_;
    r.user = info_->user;
    r.host = info_->host;
    r.program = info_->program;
    r.database = info_->database;
    r.kind = kind;
    r.text = std::move(text);
    r.number = ++info_->requests;
    return r;
}

}  // namespace sandbox::server
