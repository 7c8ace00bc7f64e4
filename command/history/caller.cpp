#include "command/history/caller.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace zamofw {
namespace {

// Longer than any user name or address.
constexpr std::size_t kLongestText = 256;

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : std::string(value).substr(0, kLongestText);
}

std::string userName() {
    const uid_t user = getuid();
    // Anybody can set the variable, but only root's counts.
    std::string sudoUser = user == 0 ? variable("SUDO_USER") : "";
    if (!sudoUser.empty()) {
        return sudoUser;
    }
    const passwd* const entry = getpwuid(user);
    return entry == nullptr ? std::to_string(user) : entry->pw_name;
}

}  // namespace

Caller currentCaller() {
    Caller caller;
    caller.user = userName();
    const std::string connection = variable("SSH_CONNECTION");
    const std::string client = connection.substr(0, connection.find(' '));
    if (!client.empty()) {
        caller.from = client;
    }
    return caller;
}

}  // namespace zamofw
