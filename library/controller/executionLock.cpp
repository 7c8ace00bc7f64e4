#include "library/controller/executionLock.h"

#include <zamo/core.h>

#include "library/logging/log.h"
#include "library/model/names.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";
constexpr int kExclusive = 1;
constexpr int kSeconds = 30;

}  // namespace

ExecutionLock::~ExecutionLock() {
    if (descriptor_ >= 0 && VLIBCFileUnlockByFile(descriptor_) == 0) {
        FW_LOG(LOG_ERR, "Failed to unlock");
    }
}

bool ExecutionLock::lock() {
    if (VLIBCFileLockTimeByFile(kExecutionLockFile, kExclusive, kSeconds, &descriptor_) == 0) {
        return FW_FAILURE("TIMEOUT: getting lock");
    }
    return true;
}

}  // namespace FW
