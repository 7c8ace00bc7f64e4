#include "library/store/lockedFile.h"

#include <fcntl.h>
#include <libgen.h>
#include <unistd.h>
#include <zamo/sdk.h>

#include <array>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/interprocess/exceptions.hpp>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

#include "library/logging/log.h"
#include "posix/file.h"
#include "zamofirewall/lockedJson.h"

namespace bip = boost::interprocess;
namespace ptime = boost::posix_time;

namespace FW {

// file_lock opens its file itself: through symbolic links, and so that a program started meanwhile
// inherits the descriptor. This gives access to its descriptor member, which is private, so that a
// lock can be made of a descriptor that was opened safely.
template <int bip::file_lock::*member>
struct DescriptorAccess {
    friend int& descriptorOf(bip::file_lock& lock) { return lock.*member; }
};
template struct DescriptorAccess<&bip::file_lock::m_file_hnd>;
int& descriptorOf(bip::file_lock& lock);

namespace {

constexpr const char* kLogModule = "utils";
constexpr const char* kLockDirectory = "/var/lock/firewall/";
constexpr const char* kFallbackDirectory = "/tmp/";
constexpr unsigned kLockDirectoryMode = 0770;
constexpr mode_t kLockFileMode = 0644;
constexpr std::size_t kPathBufferSize = 1024;
const ptime::time_duration kLockTimeout = ptime::microseconds(30000000);
// Somebody may delete the lock file whenever it has just been made, but not for ever.
constexpr int kMaxCreations = 100;
// A bare yield would burn the processor that the holder of the lock needs.
constexpr std::chrono::milliseconds kRetryInterval(1);

const char* lockDirectory() {
    if (ZAMOFSMkdirP(kLockDirectory, kLockDirectoryMode) == 0 &&
        access(kLockDirectory, W_OK | X_OK) == 0) {
        return kLockDirectory;
    }
    FW_LOG(LOG_DEBUG, "Failed to create path: %s", std::strerror(errno));
    return kFallbackDirectory;
}

// Neither a planted link nor an existing file of somebody else is touched.
void createFile(const std::string& path) {
    const int descriptor = open(path.c_str(),
                                O_WRONLY | O_CREAT | O_EXCL | O_TRUNC | O_CLOEXEC | O_NOFOLLOW,
                                kLockFileMode);
    if (descriptor >= 0) {
        (void)close(descriptor);
    }
}

int openLockFile(const std::string& path) {
    return open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
}

bool tryUntil(bip::file_lock& lock, const ptime::ptime& deadline) {
    while (!lock.try_lock()) {
        if (ptime::microsec_clock::universal_time() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(kRetryInterval);
    }
    return true;
}

}  // namespace

std::string getLockFile(const std::string& path) {
    const std::string directory = lockDirectory();
    std::array<char, kPathBufferSize> buffer = {};
    (void)std::snprintf(buffer.data(), buffer.size(), "%s", path.c_str());

    std::string lockPath = directory + basename(buffer.data()) + ".lock";
    if (access(lockPath.c_str(), F_OK) != 0) {
        createFile(lockPath);
    }
    return lockPath;
}

bool LockedFile::lock(const std::string& dataPath) {
    const ptime::ptime deadline = ptime::microsec_clock::universal_time() + kLockTimeout;
    for (int creations = 1;; ++creations) {
        const std::string lockPath = getLockFile(dataPath);
        const int descriptor = openLockFile(lockPath);
        if (descriptor < 0 && (errno != ENOENT || creations == kMaxCreations)) {
            throw bip::interprocess_exception(bip::error_info(errno));
        }
        if (descriptor < 0) {
            continue;
        }
        bip::file_lock opened;
        descriptorOf(opened) = descriptor;
        lock_.swap(opened);
        if (!tryUntil(lock_, deadline)) {
            return FW_FAILURE("Failed to get lock timeout");
        }
        // Whoever deletes a profile deletes its lock file too, perhaps while others wait for it.
        if (posix::isFileAt(descriptor, lockPath)) {
            return true;
        }
    }
}

}  // namespace FW
