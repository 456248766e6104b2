// Who may come in, with which password.
#pragma once

#include <map>
#include <string>

#include "sandbox/store/values/error.h"

namespace sandbox::server {

class Logins {
public:
    Logins(const std::string& saPassword, const std::map<std::string, std::string>& others);

    [[nodiscard]] bool accepts(const std::string& user, const std::string& password) const;

private:
    std::map<std::string, std::string> passwords_;  // by name in lower case
};

// 18456, as the client sees it whatever the reason was.
[[nodiscard]] Message loginFailed(const std::string& user);

}  // namespace sandbox::server
