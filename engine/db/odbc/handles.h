// The ODBC side of a Connection: the driver's calls, its environment and its connection handle. Used by Connection,
// Reply and BulkCopy.
#pragma once

#include "engine/db/connection.h"
#include "engine/db/odbc/api.h"

namespace torvik::db {

struct Connection::Handles {
    const odbc::Api& calls;
    odbc::Handle env;
    odbc::Handle dbc;

    // What the driver says, without asking the server.
    [[nodiscard]] bool dead() const;
    // The connection's own, where the driver shows it; else kNoSocket (line.h).
    [[nodiscard]] int socket() const;
};

}  // namespace torvik::db
