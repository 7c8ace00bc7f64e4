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

}  // namespace

ExecutionLock::ExecutionLock() {
    if (VLIBCFileLockTimeByFile(FW::kExecutionLockFile, kExclusive, kSeconds, &descriptor_) != 0) {
        return;
    }
    const int error = errno;
    const std::string file = FW::kExecutionLockFile;
    if (error == ETIMEDOUT) {
        failed("another program has held the lock " + file + " for " + std::to_string(kSeconds) +
                   " seconds" + lockHolders(file),
               "another reload is under way; try again when it has ended");
    }
    failed("the lock " + file + " cannot be taken: " + std::strerror(error));
}

ExecutionLock::~ExecutionLock() {
    (void)VLIBCFileUnlockByFile(descriptor_);
}

}  // namespace zamofw
