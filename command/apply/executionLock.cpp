#include "command/apply/executionLock.h"

#include <zamo/core.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "command/apply/lockHolders.h"
#include "command/console.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

constexpr int kExclusive = 1;
constexpr int kSeconds = 30;

// Negative when it is not free in time.
int lockWithin(int seconds) {
    int descriptor = -1;
    if (VLIBCFileLockTimeByFile(FW::kExecutionLockFile, kExclusive, seconds, &descriptor) != 0) {
        return descriptor;
    }
    if (errno != ETIMEDOUT) {
        failed(std::string("the lock ") + FW::kExecutionLockFile +
               " cannot be taken: " + std::strerror(errno));
    }
    return -1;
}

}  // namespace

ExecutionLock::ExecutionLock() : descriptor_(lockWithin(kSeconds)) {
    if (descriptor_ < 0) {
        const std::string file = FW::kExecutionLockFile;
        failed("another program has held the lock " + file + " for " + std::to_string(kSeconds) +
                   " seconds" + lockHolders(file),
               "another reload is under way; try again when it has ended");
    }
}

std::unique_ptr<ExecutionLock> ExecutionLock::takenWithin(int seconds) {
    const int descriptor = lockWithin(seconds);
    return descriptor < 0 ? nullptr : std::unique_ptr<ExecutionLock>(new ExecutionLock(descriptor));
}

ExecutionLock::~ExecutionLock() {
    (void)VLIBCFileUnlockByFile(descriptor_);
}

}  // namespace zamofw
