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

// Ends the call: the directory of the profiles is not there.
[[noreturn]] void missingStoreDirectory();

// The paths of the profile directory's documents, those of trial copies included, in the order in
// which the library looks at them. Throws Failure when the directory is missing or may not
// be read.
[[nodiscard]] std::vector<std::string> profileFiles();

// The document of the profile that the library finds under this name: of several the one whose file
// name sorts first. A file that is not well formed is taken only when no other has the name. Reads
// without locks: a file is replaced as a whole.
[[nodiscard]] std::optional<Document> findStored(const std::string& name);

// The names of all stored profiles, trial copies left out.
[[nodiscard]] std::vector<std::string> storedProfileNames();

// The documents of the profile directory that no name can be found in, because they are not well
// formed: FILE:LINE:COLUMN and the fault of each.
[[nodiscard]] std::vector<std::string> unnamedDocuments();

}  // namespace zamofw

#endif
