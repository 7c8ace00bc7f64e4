// The hooks by which other packages learn that the firewall is switched on or off.
#ifndef ZAMOFIREWALL_HOOK_H
#define ZAMOFIREWALL_HOOK_H

#include <cstdint>
#include <string>

#include "zamofirewall/export.h"

namespace FW {

// Runs the plug-ins of a hook and waits for them. They find the outcome of the operation in
// "RESULT": "0" or "-1". False, with a line in the system log, when a plug-in failed or the
// plug-ins could not be run.
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
