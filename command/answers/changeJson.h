#ifndef COMMAND_ANSWERS_CHANGEJSON_H
#define COMMAND_ANSWERS_CHANGEJSON_H

#include <iosfwd>
#include <vector>

#include "command/analysis/difference.h"

namespace zamofw {

// The list of changes in the answer to `diff --meaning`, on one line without an end. There can be
// tens of thousands, so that it is written without a document in memory.
void writeChanges(const std::vector<analysis::Change>& changes, std::ostream& out);

}  // namespace zamofw

#endif
