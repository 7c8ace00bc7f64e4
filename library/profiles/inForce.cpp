#include "library/profiles/inForce.h"

#include <utility>

#include "library/logging/log.h"
#include "library/store/profileStore.h"
#include "library/store/settings.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

}  // namespace

bool InForce::readProfile(const std::string& name) {
    const Json::Value* const document = findDocument(documents_, name);
    if (document == nullptr) {
        return false;
    }
    if (profile_ != nullptr && name_ == name && readings_ == documents_.readings()) {
        return true;
    }
    FWPROFILE profile;
    if (!profileOfDocument(*document, profile)) {
        return false;
    }
    profile_ = std::make_shared<const FWPROFILE>(std::move(profile));
    name_ = name;
    readings_ = documents_.readings();
    return true;
}

bool InForce::read() {
    if (!settingsStatus(documents_, enabled_)) {
        return FW_FAILURE("Failed to check firewall status");
    }
    if (!enabled_) {
        profile_ = nullptr;
        return true;
    }
    std::string name;
    if (!settingsProfile(documents_, name)) {
        return FW_FAILURE("Failed to fwProfileConfigGet()");
    }
    if (!readProfile(name)) {
        return FW_FAILURE("Failed to profileGet(%s)", name.c_str());
    }
    return true;
}

}  // namespace FW
