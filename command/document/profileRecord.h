// From a document to the record of its profile.
#ifndef COMMAND_DOCUMENT_PROFILERECORD_H
#define COMMAND_DOCUMENT_PROFILERECORD_H

#include <optional>
#include <string>

#include "command/document/document.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {

// The name that makes the document a profile, also when only its begin is well formed.
[[nodiscard]] std::optional<std::string> nameIn(const Document& document);

// Whether the library takes the text; it takes some that are not well formed.
[[nodiscard]] bool isReadByLibrary(const Document& document);

// What ZAMOFW_JSON_DB::jsonToProfile() makes of the document. Throws Failure, with line and column,
// where the library would read no profile.
[[nodiscard]] FW::FWPROFILE profileRecord(const Document& document);

}  // namespace zamofw

#endif
