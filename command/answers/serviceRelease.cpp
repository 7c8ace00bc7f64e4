#include <algorithm>
#include <map>

#include "command/answers/changeAnswer.h"
#include "command/answers/serviceAnswers.h"
#include "command/answers/serviceCatalogue.h"
#include "command/answers/table.h"
#include "command/history/change.h"
#include "command/words/quoting.h"
#include "zamofirewall/profile.h"

namespace zamofw {
namespace {

struct Uses {
    std::size_t rules = 0;
    std::size_t lostRules = 0;  // of a user, that name no other service
};

bool namesService(const FW::FWRULE& rule, const std::string& service) {
    return (rule.portGroup == FW::FW_PORT_GROUP_SERVICE ||
            rule.portGroup == FW::FW_PORT_GROUP_RESERVED_SERVICE) &&
           std::find(rule.portList.begin(), rule.portList.end(), service) != rule.portList.end();
}

void countUses(const std::vector<FW::FWRULE>& rules, const std::string& service, Uses& uses) {
    for (const FW::FWRULE& rule : rules) {
        if (namesService(rule, service)) {
            ++uses.rules;
            if (rule.portGroup == FW::FW_PORT_GROUP_SERVICE && rule.portList.size() == 1) {
                ++uses.lostRules;
            }
        }
    }
}

Uses usesOf(const std::string& service) {
    std::map<std::string, FW::FWPROFILE> profiles;
    if (!FW::ZAMOFW_PROFILE().profileEnum(profiles)) {
        failed("the profiles cannot be read whole", "`zamofw check --all` shows what is wrong");
    }
    Uses uses;
    for (const auto& [name, profile] : profiles) {
        for (const auto& [adapter, rules] : profile.rules) {
            countUses(rules, service, uses);
        }
    }
    return uses;
}

}  // namespace

Status serviceRelease(const Console& console,
                      const std::vector<std::string>& call,
                      const std::string& name) {
    requireRoot("releasing a service");
    const Uses uses = usesOf(name);
    if (uses.rules == 0) {
        // A service that is gone from the catalogue may still stand in rules.
        (void)requiredService(name);
        answerChange(console, false, "nothing to change: no rule names " + shown(name));
        return Status::kDone;
    }
    if (uses.lostRules > 0 &&
        !console.confirm(counted(uses.lostRules, "rule") + " of yours would be lost that " +
                         (uses.lostRules == 1 ? "names" : "name") + " only " + shown(name) +
                         "; go on?")) {
        return refusedChange(console);
    }
    return recordedChange(call, [&] {
        if (!FW::ZAMOFW_PROFILE().profileRemoveServ(name)) {
            failed("the service " + shown(name) + " could not be taken out of every profile",
                   "see that the disk is not full or mounted read-only; `zamofw undo` takes back "
                   "what was changed before the failure");
        }
        answerChange(
            console, true, shown(name) + " is taken out of " + counted(uses.rules, "rule"));
        noteReload(console, "");
        return Status::kDone;
    });
}

}  // namespace zamofw
