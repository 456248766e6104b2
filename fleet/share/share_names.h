// Names on a till's share, as they are told and as they are reached. Used by the file copy.
#pragma once

#include <string>

namespace torvik {

// "\\server\share" of a till's Ikk_Server and a share, as the operator is told it.
[[nodiscard]] std::string shareResource(const std::string& server, const std::string& share);

// The machine alone: Ikk_Server may name the database's port ("host,1433", "tcp:host,1433") or instance
// ("host\KASSE") behind it, which mean nothing to a file share.
[[nodiscard]] std::string hostOf(const std::string& server);

// The resource with its server's machine alone. The share is what follows the last "\".
[[nodiscard]] std::string reachedResource(const std::string& resource);

// The full name of a file of that bare name in a folder of the resource; folder "" or "\" is its root.
[[nodiscard]] std::string targetName(const std::string& resource, const std::string& folder,
                                     const std::string& fileName);

}  // namespace torvik
