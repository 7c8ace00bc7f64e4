// The documents of the profile directory.
#ifndef COMMAND_DOCUMENT_STOREDPROFILE_H
#define COMMAND_DOCUMENT_STOREDPROFILE_H

#include <optional>
#include <string>
#include <vector>

#include "command/document/document.h"

namespace zamofw {

// Copies that a trial works on carry such a name. They are no part of the configuration.
[[nodiscard]] bool isTrialCopy(const std::string& profile);

// The paths of the profile directory's documents, those of trial copies included, in the order in
// which the library looks at them. None when the directory cannot be read; without permission a
// Failure.
[[nodiscard]] std::vector<std::string> profileFiles();

// The document of the profile that the library finds under this name: of several the one whose file
// name sorts first. A file that is not well formed is taken only when no other has the name. Reads
// without locks: a file is replaced as a whole.
[[nodiscard]] std::optional<Document> findStored(const std::string& name);

// The names of all stored profiles, trial copies left out.
[[nodiscard]] std::vector<std::string> storedProfileNames();

}  // namespace zamofw

#endif
