// INSERT BULK and the rows that follow it, from a client's packets into a session.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "sandbox/server/inbox.h"
#include "sandbox/server/reply_writer.h"
#include "sandbox/tds/bulk.h"
#include "sandbox/tsql/run/session.h"

namespace sandbox::server {

class BulkLoad {
public:
    BulkLoad(Session& session, Inbox& inbox, std::size_t maxRow) : session_(session), inbox_(inbox), maxRow_(maxRow) {}

    // Whether a batch announces a bulk load: INSERT BULK is a request of the protocol and no statement among others.
    [[nodiscard]] static bool announces(std::string_view batch);

    // Errors go to the reply. False: it was cancelled.
    [[nodiscard]] bool begin(std::string_view statement, ReplyWriter& reply);
    // The statement that announced the rows to come, or empty.
    [[nodiscard]] const std::string& announced() const { return statement_; }
    void forget();  // another request came instead of the rows

    enum class End { Done, Cancelled, Attention, Lost };
    // Reads the message that begins with `first` to its end and stores its rows. Cancelled: nothing was stored, and the
    // attention is still to be read. Attention: it came within the message and has been read. Lost: the connection is
    // gone. Raises StreamError, after which the load is undone.
    [[nodiscard]] End receive(tds::Packet first, ReplyWriter& reply);
    // Reads the message to its end and stores nothing.
    [[nodiscard]] End readOver(tds::Packet first);

private:
    void check(const std::vector<tds::BulkColumn>& columns) const;
    void store(tds::BulkReader& rows);
    void tell(const SqlError& error, ReplyWriter& reply);

    Session& session_;
    Inbox& inbox_;
    std::size_t maxRow_;
    std::optional<BulkTarget> target_;
    std::string statement_;
    bool ended_ = false;
};

}  // namespace sandbox::server
