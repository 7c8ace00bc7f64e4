// Findings about a profile that is being changed, for a reader.
#ifndef COMMAND_ANSWERS_CHANGEFINDINGS_H
#define COMMAND_ANSWERS_CHANGEFINDINGS_H

#include <iosfwd>
#include <string>

#include "command/document/finding.h"

namespace zamofw {

// Where a JSON pointer of a profile document leads: "rule 3 of `eth0`". The document is not stored
// yet, so that its lines would say nothing.
[[nodiscard]] std::string placeInProfile(const std::string& pointer);

// "error: rule 3 of `eth0`: ...", and the remedy below it.
void printFinding(std::ostream& out, const Finding& finding);

}  // namespace zamofw

#endif
