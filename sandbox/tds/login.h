// LOGIN7 ([MS-TDS] 2.2.6.4): who wants in, from where, to which database, and in which version of the protocol.
#pragma once

#include <cstdint>
#include <string>

#include "sandbox/tds/bytes.h"
#include "sandbox/tds/protocol.h"

namespace sandbox::tds {

struct Login {
    std::uint32_t versionWord = 0;  // as the client gave it
    Version version = Version::V74;
    std::uint32_t packetSize = 0;  // 0: the server's choice
    std::string host, user, password, program, server, library, language, database;
    bool odbc = false;        // an ODBC driver, or one that settles its session as one does
    bool integrated = false;  // by a security token instead of a password
    bool fedAuth = false;     // by a token of a directory in the cloud
    bool changesPassword = false;
    bool readOnlyIntent = false;
};

// Raises StreamError for a message that is no LOGIN7 and for versions before 7.1, Truncated for one that lies about its
// lengths. Feature extensions are read over: none of them is acknowledged.
[[nodiscard]] Login readLogin(ByteSpan message);

// The version as LOGINACK tells it, high byte first.
[[nodiscard]] std::uint32_t acknowledgedVersion(Version version);

}  // namespace sandbox::tds
