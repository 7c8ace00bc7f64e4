// Findings as an answer.
#ifndef COMMAND_DOCUMENT_FINDINGTEXT_H
#define COMMAND_DOCUMENT_FINDINGTEXT_H

#include <string>

#include "command/document/finding.h"

namespace zamofw {

// {"ok":B,"findings":[...]} on one line, without a line feed at its end. `ok` is false when there
// is an error.
[[nodiscard]] std::string findingsJson(const Findings& findings);

// As a compiler prints them, the remedy indented on a line of its own:
//   FILE:LINE:COLUMN: error: MESSAGE [KIND]
//       REMEDY
[[nodiscard]] std::string findingsText(const Findings& findings);

}  // namespace zamofw

#endif
