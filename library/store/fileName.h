// Names of the files in the profile directory.
#ifndef LIBRARY_STORE_FILENAME_H
#define LIBRARY_STORE_FILENAME_H

#include <functional>
#include <string>

namespace FW {

// Whether a data file may have this name: it stays in the directory, it is UTF-8, and there is room
// for the endings of its lock file and its temporary file.
[[nodiscard]] bool isFileName(const std::string& name);

// Whether the name leaves room for those endings.
[[nodiscard]] bool fitsFileName(const std::string& name);

// A number near the present time for which `isTaken` is false.
[[nodiscard]] std::string drawFileName(const std::function<bool(const std::string&)>& isTaken);

}  // namespace FW

#endif
