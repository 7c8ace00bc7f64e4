// A profile, alone in a document or inside an export.
#ifndef COMMAND_DOCUMENT_PROFILECHECK_H
#define COMMAND_DOCUMENT_PROFILECHECK_H

#include "command/document/check.h"
#include "command/document/findingList.h"
#include "command/document/location.h"

namespace zamofw {

void checkProfileValue(const Node& profile,
                       const Location& where,
                       const CheckContext& context,
                       FindingList& findings);

// The profile's name; null when it has none.
[[nodiscard]] const Node* profileNameIn(const Node& profile);

[[nodiscard]] Fault syntaxFault(const SyntaxFault& fault);
[[nodiscard]] Fault duplicateName(std::string_view name, std::string_view otherFile);

}  // namespace zamofw

#endif
