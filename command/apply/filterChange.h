#ifndef COMMAND_APPLY_FILTERCHANGE_H
#define COMMAND_APPLY_FILTERCHANGE_H

#include <string>
#include <vector>

#include "command/apply/executionLock.h"

namespace zamofw {

// Runs lines of a family's filter table all at once. False when there are none. Throws Failure when
// they are refused or the xtables lock is not free in time; nothing is changed then.
bool changeFilter(int family, const std::vector<std::string>& lines, const ExecutionLock& lock);

}  // namespace zamofw

#endif
