#include "library/controller/rebuild.h"

#include <utility>

#include "library/logging/log.h"
#include "zamofirewall/controller.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";

bool reopenOrDisable(ZAMOFW& controller) {
    if (!controller.fwDefaultAccept()) {
        (void)controller.fwDisable();
        return false;
    }
    return true;
}

}  // namespace

bool rebuildRules(ZAMOFW& controller, const std::function<bool()>& rebuild) {
    if (!controller.fwDefaultDrop()) {
        return false;
    }
    bool result = false;
    try {
        result = rebuild();
    } catch (...) {
        try {
            (void)reopenOrDisable(controller);
        } catch (...) {
            // The first exception is the one that tells the caller what went wrong.
        }
        throw;
    }
    return reopenOrDisable(controller) && result;
}

bool execOrDisable(ZAMOFW& controller, Json::Value list) {
    if (!controller.fwExec(std::move(list))) {
        (void)controller.fwDisable();
        return FW_FAILURE("Failed to fwExec() so disable firewall");
    }
    return true;
}

}  // namespace FW
