// Hooks tell other packages that the firewall is switched on or off.
#ifndef ZAMOFIREWALL_HOOK_H
#define ZAMOFIREWALL_HOOK_H

#include <cstdint>
#include <string>

#include "zamofirewall/export.h"

namespace FW {

// Runs the plug-ins of a hook and waits for them, however long they take. Their argument "RESULT"
// is the outcome of the operation: "0" or, after a failure, "-1". False, with a line in the system
// log, if a plug-in failed or could not be run. What is said about signals at ZAMOFW (controller.h)
// holds here too.
class ZAMOFW_EXPORT ZamoFwHook {
  public:
    enum HookAction : std::int32_t {
        PRE_HOOK = 0,
        POST_HOOK = 1,
    };

    bool RunFwHook(const std::string& hook, HookAction action, bool result);

    bool RunFwEnablePreHook();
    bool RunFwEnablePostHook(bool result);
    bool RunFwDisablePreHook();
    bool RunFwDisablePostHook(bool result);
};

}  // namespace FW

#endif
