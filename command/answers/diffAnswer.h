// `zamofw diff [A] [B]`: rules and lines
#ifndef COMMAND_ANSWERS_DIFFANSWER_H
#define COMMAND_ANSWERS_DIFFANSWER_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "command/console.h"
#include "command/document/target.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {

// One profile is compared with the profile in force, two with each other; what --file names comes
// after the others.
struct DiffRequest {
    std::vector<std::string> profiles;
    std::vector<std::string> files;
    // The words that say a rule on this machine; none when no words can. Then it is shown as JSON.
    std::function<std::optional<std::vector<std::string>>(const FW::FWRULE&)> wordsOf;
    bool isAboutMeaning = false;  // the packets whose verdict changes, instead of rules and lines
};

// The two profiles. Throws Failure as readTarget() does.
[[nodiscard]] std::vector<Target> diffTargets(const DiffRequest& request);

// Shows the rules, default policies and lines that differ, as a unified diff, or as
//   {"same":B,"removed":[LINE],"added":[LINE],"rules":{"removed":[RULE],"added":[RULE]},
//    "policies":{"removed":{ADAPTER:POLICY},"added":{ADAPTER:POLICY}}}
// where LINE is that of a plan with "family", and RULE that of a rule list without counters. kNo
// when something differs; names of profiles do not count.
[[nodiscard]] Status diffAnswer(const Console& console, const DiffRequest& request);

}  // namespace zamofw

#endif
