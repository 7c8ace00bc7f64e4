// The profile that a call is about: one that is stored, or a document from elsewhere.
#ifndef COMMAND_DOCUMENT_TARGET_H
#define COMMAND_DOCUMENT_TARGET_H

#include <optional>
#include <string>

#include "command/document/document.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {

// The words for it. PROFILE is a stored profile's name, a path with a slash, or "-" for standard
// input; --file FILE is a path of any form, or "-". None of them: the profile in force.
struct TargetWords {
    std::optional<std::string> profile;
    std::optional<std::string> file;
};

struct Target {
    Document document;      // its file is a path, or "-" for standard input
    std::string name;       // as stored; of another document its "name", or else its file
    bool isStored = false;  // in the profile directory
};

// Whether the word is no name of a stored profile, but the path of a file or "-".
[[nodiscard]] bool isPath(const std::string& word);

// Ends the call: wrong use, with a suggestion for a near miss.
[[noreturn]] void unknownProfile(const std::string& name);

// Throws Failure when the settings cannot be read.
[[nodiscard]] std::string profileNameInForce();

// Reads it. Throws Failure: kWrongUse for an unknown name, with a suggestion for a near miss;
// kNotPermitted for what only root may read; kFailed for any other document that cannot be read, or
// is too large. What the document says is not looked at: its syntax may be wrong.
[[nodiscard]] Target readTarget(const TargetWords& words);

// The stored profile of this name, which is the one in force.
[[nodiscard]] Target targetInForce(const std::string& name);

// The profile that the library would read from the document. Throws Failure, with line and column,
// for a document that is no JSON or holds a member of a wrong type.
[[nodiscard]] FW::FWPROFILE profileOf(const Target& target);

}  // namespace zamofw

#endif
