// The firewall's JSON files, each read and written under a lock file of its own.
//
// Locks exclude other processes, and readers exclude each other too. Threads of one process take
// turns: they may call these functions, and the library's operations on files, at the same time. A
// record lock ends when its process closes any descriptor of the lock file, so a program must not
// open the library's lock files itself. The library changes no state of the process: not rand(),
// not the locale, and no descriptor from 0 to 2 is taken when the caller has closed it.
//
// Each call waits at most 30 seconds for its lock. When the lock file cannot be opened at all,
// boost::interprocess::interprocess_exception leaves jsonFileLoad() and jsonFileDump(), and with
// them every operation of the library that reads or writes a file. Otherwise only std::bad_alloc is
// thrown; nothing leaks then.
#ifndef ZAMOFIREWALL_LOCKEDJSON_H
#define ZAMOFIREWALL_LOCKEDJSON_H

#include <json/value.h>

#include <string>

#include "zamofirewall/export.h"

namespace FW {

// Returns the full path of the lock file for the data file `path`, which need not exist. Creates
// the lock file (mode 0600) and its directory /var/lock/firewall/ (0770) when they are missing.
// Where that directory cannot be created or written to, the lock file is in /tmp/. Only files and
// directories of root or the caller's user that nobody else may write to are used; others are moved
// away or replaced when possible. Data files with the same base name share one lock file. Does not
// wait for the lock.
ZAMOFW_EXPORT std::string getLockFile(const std::string& path);

// Parses the file into `value`. Numbers have a decimal point in every locale. Returns false, with
// one line in the system log, when the file does not exist, cannot be read or parsed, is larger
// than 64 MiB, or when the lock is not acquired in time; `value` is then undefined.
ZAMOFW_EXPORT bool jsonFileLoad(Json::Value& value, const std::string& path);

// Replaces the file by the text of `value`, whole or not at all: the text is written to `path` +
// ".tmp", synced to the disk, and renamed. Returns false, with one line in the system log, when
// that failed or the lock is not acquired in time; the file is then unchanged. A temporary file
// that could not be written whole is removed; one that could not be renamed stays.
ZAMOFW_EXPORT bool jsonFileDump(const Json::Value& value, const std::string& path);

}  // namespace FW

#endif
