// The lock that every access to a JSON file holds.
#ifndef LIBRARY_STORE_LOCKEDFILE_H
#define LIBRARY_STORE_LOCKEDFILE_H

#include <mutex>
#include <string>

#include "posix/descriptor.h"

namespace FW {

// Holds the lock of one data file until the end of the scope.
//
// It is a POSIX record lock, which belongs to the process: it does not exclude other threads, and
// closing any descriptor of the lock file ends it. Therefore the threads of the process take turns:
// only the one that holds a mutex locks a file, or closes a lock file. So a thread holds at most
// one lock at a time.
class LockedFile {
  public:
    // Waits at most 30 seconds; false when the lock was not acquired by then. Throws
    // boost::interprocess::interprocess_exception when the lock file cannot be opened.
    [[nodiscard]] bool lock(const std::string& dataPath);

    // Deletes the lock file while it is held, so that those who wait for it take a new one.
    void deleteLockFile();

  private:
    bool tryLock();

    std::string lockPath_;
    std::unique_lock<std::mutex> turn_;
    posix::Descriptor file_;  // closed before the turn ends
};

}  // namespace FW

#endif
