// PRELOGIN ([MS-TDS] 2.2.6.5): what client and server settle before the login, above all encryption.
#pragma once

#include <cstdint>
#include <vector>

#include "sandbox/tds/bytes.h"

namespace sandbox::tds {

enum class Encryption : std::uint8_t { Off = 0, On = 1, NotSupported = 2, Required = 3 };

struct Prelogin {
    Encryption encryption = Encryption::NotSupported;  // a client that names none cannot encrypt
    bool fedAuth = false;                              // the client told whether it wants federated authentication
};

// Options that are not known are passed over. Raises StreamError or Truncated.
[[nodiscard]] Prelogin readPrelogin(ByteSpan message);

// The server's answer. fedAuth: the client asked about it, and is told that it is not required.
[[nodiscard]] std::vector<std::uint8_t> writePrelogin(Encryption encryption, bool fedAuth);

}  // namespace sandbox::tds
