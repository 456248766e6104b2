// The till's share over libsmbclient, on every platform but Windows.
#pragma once

#include "fleet/share/file_share.h"

namespace torvik {

struct SmbOptions {
    std::uint16_t port = 0;  // 0: the protocol's own
    int timeoutMs = 20000;   // for an answer
};

[[nodiscard]] std::unique_ptr<FileShare> smbFileShare(const SmbOptions& options);

}  // namespace torvik
