// The JSON files of the firewall, each read and written under a lock file of its own.
//
// The lock excludes other processes, not other threads of the same process, and readers exclude
// each other too. An operation waits for it at most 30 seconds. When the lock file cannot be opened
// at all, boost::interprocess::interprocess_exception leaves jsonFileLoad() and jsonFileDump(), and
// with them every operation of the library that reads or writes a file. Nothing else is thrown.
#ifndef ZAMOFIREWALL_LOCKEDJSON_H
#define ZAMOFIREWALL_LOCKEDJSON_H

#include <json/value.h>

#include <string>

#include "zamofirewall/export.h"

namespace FW {

// The full path of the lock file that guards the data file `path`, which need not exist. Creates
// the lock file and its directory /var/lock/firewall/ when they are missing; where that directory
// cannot be made or written to, the lock file is in /tmp/. Data files of the same base name in
// different directories share one lock file.
ZAMOFW_EXPORT std::string getLockFile(const std::string& path);

// Parses the file into `value`. False, with one line in the system log, when the file does not
// exist, cannot be read or does not parse, or when the lock cannot be had in time; `value` is then
// undefined.
ZAMOFW_EXPORT bool jsonFileLoad(Json::Value& value, const std::string& path);

// Replaces the file by the text of `value`, whole or not at all: the text is written to `path` +
// ".tmp", which is renamed. False, with one line in the system log, when it could not be written
// and closed whole (the temporary file is then left behind), or the lock cannot be had in time.
ZAMOFW_EXPORT bool jsonFileDump(const Json::Value& value, const std::string& path);

}  // namespace FW

#endif
