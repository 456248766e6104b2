// Logins by name and password.
#include "sandbox/server/logins.h"

#include "sandbox/server/names.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox::server {

Logins::Logins(const std::string& saPassword, const std::map<std::string, std::string>& others) {
    passwords_["sa"] = saPassword;
    for (const auto& [name, password] : others) passwords_[lowerName(name)] = password;
}

bool Logins::accepts(const std::string& user, const std::string& password) const {
    const auto found = passwords_.find(lowerName(user));
    return found != passwords_.end() && found->second == password;
}

Message loginFailed(const std::string& user) {
    return errorMessage<18456>(user).atLine(1);
}

}  // namespace sandbox::server
