// Documents in and out of the store, as they are written.
#ifndef COMMAND_ANSWERS_PROFILESTORE_H
#define COMMAND_ANSWERS_PROFILESTORE_H

#include <json/value.h>

#include <cstddef>
#include <string>

#include "command/document/document.h"
#include "command/document/target.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {

[[nodiscard]] bool isStoredProfile(const std::string& name);

// Wrong use, with a suggestion, unless there is a profile of this name.
void requireStoredProfile(const std::string& name);

// Wrong use unless a profile can have the name: it can be said in a call.
void requireFitName(const std::string& name);

// The same, and the name must be free.
void requireFreeName(const std::string& name);

// The document as JSON. Throws Failure for one that is not well formed.
[[nodiscard]] Json::Value jsonOfDocument(const Document& document);

// The same as text, the way the store writes it, under another name.
[[nodiscard]] std::string renamedDocument(const Document& document, const std::string& name);

// The profile that the library would read. A document with faults is refused: Failure, kNo.
[[nodiscard]] FW::FWPROFILE readableProfile(const Target& target);

// The document of a profile, the way the store writes it.
[[nodiscard]] std::string documentText(const FW::FWPROFILE& profile);

// Writes the text of a profile document, into the profile's file or a new one. Throws Failure when
// that is not possible.
void storeDocument(const std::string& name, const std::string& text);

// Replaces the stored profile of its name. Throws Failure when that is not possible.
void storeProfile(const FW::FWPROFILE& profile);

[[nodiscard]] std::size_t ruleCount(const Json::Value& profile);

}  // namespace zamofw

#endif
