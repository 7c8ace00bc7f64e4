// The lines that a rule would make: whether there are any, and whether they can be run.
#ifndef COMMAND_DOCUMENT_LINECHECK_H
#define COMMAND_DOCUMENT_LINECHECK_H

#include <string>

#include "command/document/check.h"
#include "command/document/findingList.h"
#include "command/document/rule.h"

namespace zamofw {

// An interface of this name is never translated, whatever a profile says for it.
constexpr const char* kNeverTranslated = "ppp0";

enum class LineLimit { kNone, kWords, kBytes };

// The limit that a command line, its program's path included, would run into.
[[nodiscard]] LineLimit limitPassedBy(const std::string& line);

// Whether all lines can be run.
bool checkLines(const RuleUnderCheck& rule, const CheckContext& context, FindingList& findings);

}  // namespace zamofw

#endif
