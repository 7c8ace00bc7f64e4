#include "library/store/lockedFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <boost/interprocess/exceptions.hpp>
#include <cerrno>
#include <chrono>
#include <thread>

#include "library/store/lockPath.h"
#include "posix/file.h"
#include "zamofirewall/lockedJson.h"

namespace bip = boost::interprocess;

namespace FW {
namespace {

constexpr std::chrono::seconds kLockTimeout(30);
// A bare yield would burn the processor that the holder of the lock needs.
constexpr std::chrono::milliseconds kRetryInterval(1);

std::mutex& turns() {
    static std::mutex mutex;
    return mutex;
}

// False while another process holds a lock on the file.
bool tryRecordLock(int file) {
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    if (fcntl(file, F_SETLK, &whole) == 0) {
        return true;
    }
    if (errno != EAGAIN && errno != EACCES) {
        throw bip::interprocess_exception(bip::error_info(errno));
    }
    return false;
}

}  // namespace

std::string getLockFile(const std::string& path) {
    std::string lockPath = lockPathOf(path);
    const std::lock_guard<std::mutex> turn(turns());
    makeLockFile(lockPath);
    return lockPath;
}

bool LockedFile::lock(const std::string& dataPath) {
    const auto deadline = std::chrono::steady_clock::now() + kLockTimeout;
    lockPath_ = lockPathOf(dataPath);
    do {
        turn_ = std::unique_lock<std::mutex>(turns(), std::try_to_lock);
        if (turn_ && tryLock()) {
            return true;
        }
        turn_ = {};
        std::this_thread::sleep_for(kRetryInterval);
    } while (std::chrono::steady_clock::now() < deadline);
    turn_ = std::unique_lock<std::mutex>(turns());
    file_ = {};
    turn_ = {};
    return false;
}

// Whoever deletes a profile deletes its lock file too, perhaps while others wait for it. A lock on
// a deleted file excludes nobody.
bool LockedFile::tryLock() {
    if (!file_ || !posix::isFileAt(file_.get(), lockPath_)) {
        file_ = openLockFile(lockPath_);
    }
    if (!tryRecordLock(file_.get())) {
        return false;
    }
    if (!posix::isFileAt(file_.get(), lockPath_)) {
        file_ = {};
        return false;
    }
    return true;
}

void LockedFile::deleteLockFile() {
    (void)unlink(lockPath_.c_str());
}

}  // namespace FW
