// `zamofw try`, `zamofw confirm` and `zamofw revert`
#ifndef COMMAND_ANSWERS_TRIALANSWERS_H
#define COMMAND_ANSWERS_TRIALANSWERS_H

#include <optional>
#include <string>
#include <vector>

#include "command/answers/reloadAnswer.h"
#include "command/console.h"
#include "command/document/target.h"

namespace zamofw {

constexpr unsigned long kTrialSeconds = 60;
constexpr unsigned long kMostTrialSeconds = 24UL * 60 * 60;

struct TryRequest {
    TargetWords target;
    std::optional<std::string> client;  // else that of the SSH connection
    std::optional<std::string> seconds;
    bool allowsLockout = false;
    Errors errors = Errors::kRefuse;
};
// Puts the profile into force for a while. Nothing that is stored changes, but for the copy that is
// tried. Answers {"profile":S,"client":S|null,"until":RFC3339}. kNo for errors, for a client who
// would be locked out, and while another trial is under way.
[[nodiscard]] Status tryAnswer(const Console& console, const TryRequest& request);

// Makes the profile on trial the one in force, and stores it where it is not stored like this. The
// caller must come through a connection that was made after the trial began; kNo otherwise, and
// when the trial is over. Answers {"changed":B}.
[[nodiscard]] Status confirmAnswer(const Console& console, const std::vector<std::string>& given);

// Takes the trial back. Answers {"changed":B}; kNo when there is none.
[[nodiscard]] Status revertAnswer(const Console& console);

// The same for the timer of the trial that is under way: when its time is over, and again until it
// is done.
[[nodiscard]] Status revertWhenDue(const Console& console);

}  // namespace zamofw

#endif
