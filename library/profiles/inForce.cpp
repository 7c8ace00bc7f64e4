#include "library/profiles/inForce.h"

#include <string>
#include <utility>

#include "library/logging/log.h"
#include "library/store/settings.h"
#include "zamofirewall/profileDatabase.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

}  // namespace

bool readProfileInForce(InForce& inForce) {
    if (!settingsStatus(inForce.enabled)) {
        return FW_FAILURE("Failed to check firewall status");
    }
    if (!inForce.enabled) {
        return true;
    }
    std::string name;
    if (!settingsProfile(name)) {
        return FW_FAILURE("Failed to fwProfileConfigGet()");
    }
    auto profile = std::make_shared<FWPROFILE>();
    if (!ZAMOFW_JSON_DB().profileGet(name, *profile)) {
        return FW_FAILURE("Failed to profileGet(%s)", name.c_str());
    }
    inForce.profile = std::move(profile);
    return true;
}

}  // namespace FW
