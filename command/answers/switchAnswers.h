// `zamofw enable`, `zamofw disable` and `zamofw update`: the library's operations.
#ifndef COMMAND_ANSWERS_SWITCHANSWERS_H
#define COMMAND_ANSWERS_SWITCHANSWERS_H

#include <string>
#include <vector>

#include "command/answers/reloadAnswer.h"
#include "command/console.h"

namespace zamofw {

// Each answers {"changed":B}. `given` is the whole call, for the change log.

// Refuses a profile with errors, unless they are only to be shown.
[[nodiscard]] Status enableAnswer(const Console& console,
                                  const std::vector<std::string>& given,
                                  Errors errors);

[[nodiscard]] Status disableAnswer(const Console& console, const std::vector<std::string>& given);

// Repairs the rules about services in every profile after the service catalogue has changed.
[[nodiscard]] Status updateAnswer(const Console& console, const std::vector<std::string>& given);

}  // namespace zamofw

#endif
