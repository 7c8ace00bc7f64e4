// Moving an adapter's rules and default policy to its new name.

#include "library/logging/log.h"
#include "library/store/profileStore.h"
#include "library/store/settings.h"
#include "zamofirewall/controller.h"
#include "zamofirewall/profile.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

// With equal names the entry is gone afterwards. False when there was none.
template <typename Value>
bool moveEntry(const std::string& from, const std::string& to, std::map<std::string, Value>& map) {
    const auto found = map.find(from);
    if (found == map.end()) {
        return false;
    }
    map[to] = Value(found->second);
    map.erase(from);
    return true;
}

}  // namespace

bool ZAMOFW_PROFILE::profileChangeAdapter(const std::string& oldAdapter,
                                          const std::string& newAdapter,
                                          bool reload) {
    Documents documents;
    ProfileIndex index(documents);
    ProfileMap profiles;
    if (!readProfiles(index, profiles)) {
        return FW_FAILURE("Failed to profileEnum()");
    }
    std::string inForce;
    if (!settingsProfile(documents, inForce)) {
        return FW_FAILURE("Failed to fwProfileConfigGet()");
    }
    bool inForceChanged = false;
    for (auto& [name, profile] : profiles) {
        // Only a default policy that moves makes a reload necessary.
        if (moveEntry(oldAdapter, newAdapter, profile.adapterPolicyMap) && name == inForce) {
            inForceChanged = true;
        }
        (void)moveEntry(oldAdapter, newAdapter, profile.rules);
        if (!rewriteProfile(index, name, profile)) {
            return FW_FAILURE("Failed to profile set [%s]", name.c_str());
        }
    }
    if (reload && inForceChanged && !ZAMOFW().fwReload(/*blEstablished=*/true)) {
        return FW_FAILURE("Failed to reload firewall");
    }
    return true;
}

}  // namespace FW
