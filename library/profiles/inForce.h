// What the blocked queries judge by: the profile in force.
#ifndef LIBRARY_PROFILES_INFORCE_H
#define LIBRARY_PROFILES_INFORCE_H

#include <memory>

#include "zamofirewall/ruleModel.h"

namespace FW {

struct InForce {
    bool enabled = false;
    std::shared_ptr<const FWPROFILE> profile;  // set when the firewall is enabled
};

// Reads the settings and, when the firewall is enabled, the profile in force. A query calls it for
// every port, and passes what the call before it found; a profile that has not changed since may
// stay the same object, whose rules are not parsed again. False is a failure that is logged.
[[nodiscard]] bool readProfileInForce(InForce& inForce);

}  // namespace FW

#endif
