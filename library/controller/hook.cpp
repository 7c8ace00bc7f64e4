#include "zamofirewall/hook.h"

#include <zamo/sdk.h>

#include "library/logging/log.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwHook";
constexpr const char* kCategory = "net";
constexpr const char* kEnableHook = "net/firewall_enable";
constexpr const char* kDisableHook = "net/firewall_disable";
constexpr const char* kResultArgument = "RESULT";

// Always released: the platform may have something to undo even if init() failed.
class Plugins {
  public:
    Plugins() = default;
    ~Plugins() { VLIBPluginExit(handle_); }
    Plugins(const Plugins&) = delete;
    Plugins& operator=(const Plugins&) = delete;

    [[nodiscard]] bool init(const std::string& hook) {
        return VLIBPluginSDKInit(kCategory, hook.c_str(), &handle_) >= 0;
    }
    [[nodiscard]] VLIBPlugin* get() const { return handle_; }

  private:
    VLIBPlugin* handle_ = nullptr;
};

}  // namespace

bool ZamoFwHook::RunFwHook(const std::string& hook, HookAction action, bool result) {
    Plugins plugins;
    if (!plugins.init(hook)) {
        return FW_FAILURE("Failed to init hook plugin");
    }
    const char* const value = result ? "0" : "-1";
    if (VLIBPluginSetArg(plugins.get(), kResultArgument, value) < 0) {
        FW_LOG(LOG_ERR, "Failed to set %s = %s", kResultArgument, value);
    }
    const int code = action == PRE_HOOK ? VLIB_PLUGIN_PRE : VLIB_PLUGIN_POST;
    if (VLIBPluginAction(code, plugins.get()) < 0) {
        return FW_FAILURE("Failed to run hook: %s", hook.c_str());
    }
    return true;
}

bool ZamoFwHook::RunFwEnablePreHook() {
    return RunFwHook(kEnableHook, PRE_HOOK, true);
}

bool ZamoFwHook::RunFwEnablePostHook(bool result) {
    return RunFwHook(kEnableHook, POST_HOOK, result);
}

bool ZamoFwHook::RunFwDisablePreHook() {
    return RunFwHook(kDisableHook, PRE_HOOK, true);
}

bool ZamoFwHook::RunFwDisablePostHook(bool result) {
    return RunFwHook(kDisableHook, POST_HOOK, result);
}

}  // namespace FW
