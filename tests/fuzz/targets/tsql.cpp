// The parser alone, and whole batches in an engine.
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "sandbox/store/values/error.h"
#include "sandbox/tsql/parse/parser.h"
#include "sandbox/tsql/run/engine.h"
#include "sandbox/tsql/run/reply.h"
#include "sandbox/tsql/run/session.h"
#include "sandbox/tsql/syntax/ast.h"
#include "tests/fuzz/targets/targets.h"

namespace sandbox::fuzz {

namespace {

std::string_view textOf(Bytes input) {
    return {reinterpret_cast<const char*>(input.data()), input.size()};
}

// Cancels a session that runs for longer than an input may: endless loops and waits are what T-SQL is for.
class Alarm {
public:
    explicit Alarm(Session& session) : session_(session), thread_([this] { watch(); }) {}
    ~Alarm() {
        {
            const std::lock_guard lock(mutex_);
            over_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

private:
    void watch() {
        constexpr std::chrono::milliseconds kTime{100};
        std::unique_lock lock(mutex_);
        while (!changed_.wait_for(lock, kTime, [this] { return over_; })) session_.cancel();
    }

    Session& session_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool over_ = false;
    std::thread thread_;
};

// Ends a batch that would fill memory with statements.
class Limit : public StatementWatch {
public:
    void begins(std::string_view) override {
        constexpr int kMost = 200;
        if (++count_ > kMost)
            throw SqlError(Message{.number = 596, .severity = 21, .text = "enough"}, Effect::Connection);
    }
    void ended() noexcept override {}

private:
    int count_ = 0;
};

// An engine with something to find in it; a new one now and then, for inputs leave tables behind.
Engine& engine() {
    constexpr int kInputs = 500;
    static std::unique_ptr<Engine> current;
    static int left = 0;
    if (left-- > 0) return *current;
    left = kInputs;
    current.reset();
    current = std::make_unique<Engine>(EngineOptions{});
    SilentReply silent;
    Session session(*current, {"sa", "", "", "", ""});
    session.batch("CREATE DATABASE shop", silent);
    session.batch(
        "USE shop CREATE TABLE goods (id int IDENTITY NOT NULL PRIMARY KEY, name varchar(30) NULL, price money NULL, "
        "weight decimal(10,3) NULL, sold datetime NULL, note nvarchar(max) NULL, code uniqueidentifier NULL, b bit NULL)",
        silent);
    session.batch("USE shop CREATE TABLE lines (id int NOT NULL, goods int NULL REFERENCES goods (id), n float NULL)",
                  silent);
    session.batch(
        "USE shop INSERT goods (name, price, weight, sold) VALUES ('a', 1.5, 2.125, '20240229') INSERT goods (name) "
        "VALUES (NULL) INSERT lines VALUES (1, 1, 0.5)",
        silent);
    return *current;
}

}  // namespace

void parser(Bytes input) {
    try {
        (void)parseBatch(textOf(input));
    } catch (const SqlError&) {
    }
}

void batch(Bytes input) {
    Session session(engine(), {"sa", "shop", "", "", ""});
    SilentReply silent;
    Limit limit;
    session.watch(&limit);
    const Alarm alarm(session);
    try {
        (void)session.describe(textOf(input), {});
    } catch (const SqlError&) {
    }
    try {
        session.batch(textOf(input), silent);
    } catch (const SqlError&) {
    }
}

}  // namespace sandbox::fuzz
