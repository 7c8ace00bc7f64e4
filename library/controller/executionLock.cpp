#include "library/controller/executionLock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <zamo/core.h>

#include <array>

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

void ExecutionLock::noteRebuild() const noexcept {
    // Not UTIME_NOW: the kernel's own time stamps have the resolution of its timer.
    std::timespec now = {};
    (void)clock_gettime(CLOCK_REALTIME, &now);
    // If this fails, a disable that runs at this moment may leave rules behind, as if it had come
    // first. Nothing else depends on it.
    (void)futimens(descriptor_, std::array{now, now}.data());
}

RebuildNote lastRebuild() noexcept {
    struct stat file = {};
    if (lstat(kExecutionLockFile, &file) != 0) {
        return {};
    }
    return {file.st_mtim.tv_sec, file.st_mtim.tv_nsec};
}

}  // namespace FW
