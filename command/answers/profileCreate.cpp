#include "command/answers/changeAnswer.h"
#include "command/answers/profileAnswers.h"
#include "command/answers/profileStore.h"
#include "command/history/change.h"
#include "command/words/quoting.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

std::string emptyProfile(const std::string& name) {
    FW::FWPROFILE profile;
    profile.name = name;
    profile.adapterPolicyMap[FW::kGlobalAdapter] = FW::FW_POLICY_NONE;
    return documentText(profile);
}

}  // namespace

Status profileCreate(const Console& console,
                     const std::vector<std::string>& call,
                     const std::string& name) {
    requireRoot("making a profile");
    requireFreeName(name);
    return recordedChange(call, [&] {
        requireFreeName(name);
        storeDocument(name, emptyProfile(name));
        answerChange(console, true, "the profile " + shown(name) + " is made, without rules");
        return Status::kDone;
    });
}

}  // namespace zamofw
