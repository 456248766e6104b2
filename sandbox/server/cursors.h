// The API cursors of one session: sp_cursoropen, sp_cursorfetch, sp_cursorclose and their prepared forms. Every cursor
// is static and read only, whatever was asked for; the call's output parameters say so, as a real server's do where it
// gives another cursor than the one asked for.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "sandbox/server/call_arguments.h"
#include "sandbox/server/reply_writer.h"
#include "sandbox/tsql/run/session.h"

namespace sandbox::server {

class Cursors {
public:
    explicit Cursors(Session& session) : session_(session) {}

    // Each ends the call's part of the reply. Errors in the call itself are thrown as SqlError.
    void open(const CallArguments& arguments, ReplyWriter& reply);
    void prepare(const CallArguments& arguments, ReplyWriter& reply);
    void execute(const CallArguments& arguments, ReplyWriter& reply);
    void prepareAndExecute(const CallArguments& arguments, ReplyWriter& reply);
    void unprepare(const CallArguments& arguments, ReplyWriter& reply);
    void fetch(const CallArguments& arguments, ReplyWriter& reply);
    void option(const CallArguments& arguments, ReplyWriter& reply);
    void close(const CallArguments& arguments, ReplyWriter& reply);
    [[noreturn]] void position(const CallArguments& arguments);  // sp_cursor: 16929

    void clear();
    [[nodiscard]] std::size_t size() const { return cursors_.size(); }

private:
    struct Cursor {
        std::vector<ResultColumn> columns;
        std::vector<std::vector<Value>> rows;
        std::int64_t first = 0;  // the place of the last fetch: its first row, 1-based; 0: before all
        std::int64_t count = 0;  // and how many rows it gave
        std::string name;
    };
    struct Statement {
        std::string declarations;
        std::string text;
    };
    struct Outputs;

    // Runs the statement, keeps its rows under a new handle, describes them, and ends the call. A statement without
    // rows gives the handle 0. Where the client allows that rows come without a cursor, so does one with several row
    // sets (else 16937), and one whose client takes no cursor that is static and read only (else 16955).
    void run(const Statement& statement, const std::vector<Argument>& values, const Outputs& outputs,
             std::int32_t scrollOption, std::int64_t fetchSize, ReplyWriter& reply);
    Cursor& find(std::int32_t handle);
    void describe(const Cursor& cursor, ReplyWriter& reply);
    void sendRows(const Cursor& cursor, ReplyWriter& reply);

    Session& session_;
    std::map<std::int32_t, Cursor> cursors_;
    std::map<std::int32_t, Statement> statements_;
    std::int32_t nextCursor_ = 180150003;  // far from any statement's handle, as on a real server
    std::int32_t nextStatement_ = 1073741825;
};

}  // namespace sandbox::server
