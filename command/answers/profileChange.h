// A change of one stored profile: checked, recorded and stored.
#ifndef COMMAND_ANSWERS_PROFILECHANGE_H
#define COMMAND_ANSWERS_PROFILECHANGE_H

#include <functional>
#include <string>

#include "command/answers/call.h"
#include "command/console.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {

struct ProfileChange {
    std::string profile;
    bool force = false;  // faults do not refuse it
    // Changes the profile, and gives back what has been done, for the answer. Throws a Failure when
    // it cannot be done to this profile.
    std::function<std::string(FW::FWPROFILE&)> edit;
};

// Answers {"changed":B}. What would not change anything is neither stored nor recorded; a result
// with errors is refused with kNo, and its warnings are shown.
[[nodiscard]] Status changeProfile(const Console& console,
                                   const Call& call,
                                   const ProfileChange& change);

// Wrong use unless the name can be that of a network interface or is one of the predefined
// adapters.
void checkAdapterName(const std::string& adapter);

}  // namespace zamofw

#endif
