// An engine in memory with a database "d" and sessions on it: runs batches and gives their answers as lines of text.
#pragma once

#include <string>
#include <string_view>

#include "sandbox/tsql/run/engine.h"
#include "sandbox/tsql/run/session.h"
#include "tests/sandbox/support/reply_lines.h"

namespace sandbox::test {

inline std::string answer(Session& session, std::string_view batch) {
    ReplyLines reply;
    session.batch(batch, reply);
    return reply.text();
}

// The answer without "The statement has been terminated."
inline std::string answerOf(Session& session, std::string_view batch) {
    ReplyLines reply;
    session.batch(batch, reply);
    std::erase_if(reply.lines, [](const std::string& line) { return line.starts_with("info 3621"); });
    return reply.text();
}

class SessionRunner {
public:
    SessionRunner() { answer(session, "CREATE DATABASE d"); }

    // Runs a batch in database d.
    std::string run(std::string_view batch) {
        if (session.database() != "d") answer(session, "USE d");
        return answerOf(session, batch);
    }
    static LoginInfo login(const std::string& database) {
        return {.user = "sa", .database = database, .host = "test", .program = "test", .language = {}};
    }

    Engine engine{EngineOptions{}};
    Session session{engine, login("")};
};

}  // namespace sandbox::test
