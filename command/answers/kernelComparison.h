// The kernel against the profile, for a report.
#ifndef COMMAND_ANSWERS_KERNELCOMPARISON_H
#define COMMAND_ANSWERS_KERNELCOMPARISON_H

#include "command/report/report.h"

namespace zamofw {

[[nodiscard]] report::Part<std::vector<report::Deviation>> kernelComparison();

}  // namespace zamofw

#endif
