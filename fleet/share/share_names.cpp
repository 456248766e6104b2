#include "fleet/share/share_names.h"

namespace torvik {

std::string shareResource(const std::string& server, const std::string& share) {
    return "\\\\" + server + "\\" + share;
}

std::string hostOf(const std::string& server) {
    const bool hasProtocol = server.rfind("tcp:", 0) == 0;
    const std::string address = hasProtocol ? server.substr(4) : server;
    std::string host = address.substr(0, address.find_first_of(",\\"));
    while (!host.empty() && host.back() == ' ') host.pop_back();
    return host;
}

std::string reachedResource(const std::string& resource) {
    const std::string::size_type end = resource.find_last_not_of('\\');
    const std::string::size_type share = resource.rfind('\\', end);
    if (end == std::string::npos || share == std::string::npos || share < 3) return resource;
    return shareResource(hostOf(resource.substr(2, share - 2)), resource.substr(share + 1, end - share));
}

std::string targetName(const std::string& resource, const std::string& folder, const std::string& fileName) {
    std::string name = resource;
    if (name.empty() || name.back() != '\\') name += '\\';
    if (folder.size() >= 2 && folder.front() == '\\') {
        name += folder.substr(1);
    } else if (folder != "\\") {
        name += folder;
    }
    if (!folder.empty() && folder.back() != '\\') name += '\\';
    return name + fileName;
}

}  // namespace torvik
