// Where lock files are, and which of them are trusted.
#ifndef LIBRARY_STORE_LOCKPATH_H
#define LIBRARY_STORE_LOCKPATH_H

#include <string>

#include "posix/descriptor.h"

namespace FW {

// The directory of the lock files, made when missing: /var/lock/firewall/, or /tmp/ after a line in
// the log. /var/lock is writable for every user, so only a directory of root or of our own user
// that nobody else may write to is taken; another user's directory is moved away when possible.
std::string lockDirectory();

// Whether lockDirectory() is /var/lock/firewall/ and logs nothing.
bool isLockDirectoryUsable();

// The full path of the lock file of a data file. Makes the directory, but not the file.
std::string lockPathOf(const std::string& dataPath);

// Opens the lock file, which is made when missing, with mode 0600. Links, and files of another
// user, are deleted and made anew. Throws boost::interprocess::interprocess_exception when it
// cannot be opened.
posix::Descriptor openLockFile(const std::string& lockPath);

// Makes the lock file when it is missing or not trusted, without opening one that is all right.
void makeLockFile(const std::string& lockPath) noexcept;

}  // namespace FW

#endif
