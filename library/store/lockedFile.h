// The lock that every access to a JSON file holds.
#ifndef LIBRARY_STORE_LOCKEDFILE_H
#define LIBRARY_STORE_LOCKEDFILE_H

#include <boost/interprocess/sync/file_lock.hpp>
#include <string>

namespace FW {

// Holds the lock of one data file until the end of the scope.
//
// It is a POSIX record lock, which belongs to the process: a second lock on the same file in this
// process is granted at once, and closing any descriptor of the lock file ends the first one. So
// never take it twice in one chain of calls.
class LockedFile {
  public:
    // Waits at most 30 seconds; false when that was not enough. Throws
    // boost::interprocess::interprocess_exception when the lock file cannot be opened.
    [[nodiscard]] bool lock(const std::string& dataPath);

  private:
    boost::interprocess::file_lock lock_;
};

}  // namespace FW

#endif
