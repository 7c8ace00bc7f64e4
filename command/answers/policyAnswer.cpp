#include "command/answers/policyAnswer.h"

#include "command/answers/operands.h"
#include "command/answers/profileChange.h"
#include "command/words/policyWord.h"
#include "command/words/quoting.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

FW::FW_POLICY policyOf(const std::string& word) {
    const std::optional<FW::FW_POLICY> policy = policyFromWord(word);
    if (!policy) {
        const std::string near = suggestedPolicy(word);
        wrongUse(shown(word) + " is no default" + (near.empty() ? "" : ": " + near),
                 "say allow, deny or none");
    }
    return *policy;
}

}  // namespace

Status policySet(const Console& console, const Call& call) {
    std::vector<std::string> words = call.words;
    const bool force = takeFlag("--force", words);
    checkOperands(words, "policy PROFILE ADAPTER allow|deny|none", {"--force"});
    const std::string adapter = words[1];
    checkAdapterName(adapter);
    const FW::FW_POLICY policy = policyOf(words[2]);
    // The store would drop it without a word.
    if (adapter == FW::kGlobalAdapter && policy != FW::FW_POLICY_NONE) {
        wrongUse("the default of `global` is always none",
                 "set the defaults of the adapters, or end the rules of `global` with one for "
                 "everything: zamofw rule add " +
                     shellQuoted({words[0]}) + " global " + words[2]);
    }
    const auto apply = [&](FW::FWPROFILE& profile) {
        profile.adapterPolicyMap[adapter] = policy;
        return "the default of " + adapter + " in " + words[0] + " is " + words[2];
    };
    return changeProfile(console, call, {words[0], force, apply});
}

}  // namespace zamofw
