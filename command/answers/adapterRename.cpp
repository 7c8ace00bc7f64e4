#include <boost/algorithm/string/join.hpp>
#include <map>
#include <set>

#include "command/answers/adapterAnswers.h"
#include "command/answers/changeAnswer.h"
#include "command/answers/profileChange.h"
#include "command/answers/table.h"
#include "command/history/change.h"
#include "command/words/quoting.h"
#include "command/words/suggestion.h"
#include "zamofirewall/profile.h"

namespace zamofw {
namespace {

using Profiles = std::map<std::string, FW::FWPROFILE>;

Profiles allProfiles() {
    Profiles profiles;
    if (!FW::ZAMOFW_PROFILE().profileEnum(profiles)) {
        failed("the profiles cannot be read whole", "`zamofw check --all` shows what is wrong");
    }
    return profiles;
}

void requireKnown(const std::string& adapter, const Profiles& profiles) {
    std::set<std::string> known;
    for (const auto& [name, profile] : profiles) {
        for (const auto& [used, rules] : profile.rules) {
            known.insert(used);
        }
        for (const auto& [used, policy] : profile.adapterPolicyMap) {
            known.insert(used);
        }
    }
    if (known.count(adapter) == 0) {
        const std::string near = suggestion(adapter, {known.begin(), known.end()});
        wrongUse("no profile has rules or a default for the adapter " + shown(adapter) +
                     (near.empty() ? "" : ": " + near),
                 "the profiles have " + boost::algorithm::join(known, ", "));
    }
}

// "2 rules in `home`, 1 rule in `office`", or an empty text.
std::string lossOf(const std::string& oldName,
                   const std::string& newName,
                   const Profiles& profiles) {
    std::vector<std::string> losses;
    for (const auto& [name, profile] : profiles) {
        const auto lost = profile.rules.find(newName);
        if (profile.rules.count(oldName) != 0 && lost != profile.rules.end() &&
            !lost->second.empty()) {
            losses.push_back(counted(lost->second.size(), "rule") + " in " + shown(name));
        }
    }
    return boost::algorithm::join(losses, ", ");
}

}  // namespace

Status adapterRename(const Console& console,
                     const std::vector<std::string>& call,
                     const std::string& oldName,
                     const std::string& newName) {
    requireRoot("renaming an adapter");
    checkAdapterName(newName);
    const Profiles profiles = allProfiles();
    requireKnown(oldName, profiles);
    const std::string loss = lossOf(oldName, newName, profiles);
    if (!loss.empty() && !console.confirm("the rules that " + shown(newName) +
                                          " has now would be lost (" + loss + "); go on?")) {
        return refusedChange(console);
    }
    return recordedChange(call, [&] {
        if (!FW::ZAMOFW_PROFILE().profileChangeAdapter(oldName, newName, /*reload=*/false)) {
            failed("the adapter " + shown(oldName) + " could not be renamed in every profile",
                   "see that the disk is not full or mounted read-only; `zamofw undo` takes back "
                   "what was changed before the failure");
        }
        answerChange(console,
                     true,
                     oldName == newName ? "the rules and the default of " + oldName + " are removed"
                                        : "what was for " + oldName + " is now for " + newName);
        noteReload(console, "");
        return Status::kDone;
    });
}

}  // namespace zamofw
