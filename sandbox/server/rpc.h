// Procedure calls as clients send them: the server's own procedures for prepared statements and cursors, by number or
// by name, are done here; all others are the session's.
#pragma once

#include "sandbox/server/cursors.h"
#include "sandbox/server/prepared.h"
#include "sandbox/server/reply_writer.h"
#include "sandbox/tds/requests.h"

namespace sandbox::server {

class CallHandler {
public:
    explicit CallHandler(Session& session) : session_(session), prepared_(session), cursors_(session) {}

    // Runs one call and writes its part of the reply, up to its DONEPROC. Errors go to the reply; only those that end
    // the connection are thrown.
    void run(const tds::Call& call, ReplyWriter& reply);
    void reset();

    // What observers see of a call: its procedure and the text that it prepares or executes.
    [[nodiscard]] static std::string describe(const tds::Call& call);

private:
    void dispatch(tds::ProcId id, const tds::Call& call, ReplyWriter& reply);

    Session& session_;
    PreparedStatements prepared_;
    Cursors cursors_;
};

}  // namespace sandbox::server
