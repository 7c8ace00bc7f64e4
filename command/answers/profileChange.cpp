#include "command/answers/profileChange.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "command/answers/changeAnswer.h"
#include "command/answers/changeFindings.h"
#include "command/answers/meaningAnswer.h"
#include "command/answers/profileStore.h"
#include "command/answers/systemNames.h"
#include "command/document/check.h"
#include "command/history/change.h"
#include "command/words/plainText.h"
#include "command/words/quoting.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

// The kernel's limit is 16 with the NUL.
constexpr std::size_t kLongestInterface = 15;

struct Edited {
    Target stored;
    std::string before;  // what the store makes of the records
    std::string after;
    FW::FWPROFILE old;
    FW::FWPROFILE profile;
    std::string done;
};

// As the store completes it when it writes the profile.
void setStoredPolicies(FW::FWPROFILE& profile) {
    for (const auto& [adapter, rules] : profile.rules) {
        profile.adapterPolicyMap.try_emplace(adapter, FW::FW_POLICY_ALLOW);
    }
    profile.adapterPolicyMap[FW::kGlobalAdapter] = FW::FW_POLICY_NONE;
}

Edited edited(const ProfileChange& change) {
    if (isPath(change.profile)) {
        wrongUse(shown(change.profile) + " is a file, and only stored profiles are changed",
                 "store it first: zamofw profile set NAME " + shellQuoted({change.profile}));
    }
    Edited result;
    result.stored = readTarget({change.profile, {}});
    result.profile = readableProfile(result.stored);
    setStoredPolicies(result.profile);
    result.old = result.profile;
    result.before = documentText(result.old);
    result.done = change.edit(result.profile);
    setStoredPolicies(result.profile);
    result.after = documentText(result.profile);
    return result;
}

// What is wrong with the file as it is written, and would be lost without a word: the record that
// is stored in its place does not have it.
Findings lostFindings(const Document& stored, const CheckContext& context) {
    Findings findings = checkProfile(stored, context);
    const auto isKept = [](const Finding& finding) {
        return finding.kind != "duplicate-member" && finding.kind != "unknown-member";
    };
    findings.erase(std::remove_if(findings.begin(), findings.end(), isKept), findings.end());
    return findings;
}

bool isAcceptable(const Console& console, const ProfileChange& change, const Edited& result) {
    const CheckContext context = systemCheckContext();
    Findings findings = lostFindings(result.stored.document, context);
    for (Finding& finding : checkProfile(readDocument(result.after, change.profile), context)) {
        findings.push_back(std::move(finding));
    }
    for (const Finding& finding : findings) {
        printFinding(console.err, finding);
    }
    if (!hasError(findings) || change.force) {
        return true;
    }
    console.err << "nothing was changed: the profile " << shown(change.profile)
                << " would have errors (--force stores it all the same)\n";
    return false;
}

}  // namespace

Status changeProfile(const Console& console, const Call& call, const ProfileChange& change) {
    requireRoot("changing a profile");
    const ConfigurationLock lock;
    const Edited result = edited(change);
    if (result.before == result.after) {
        answerChange(console, false, "nothing to change: " + result.done);
        return Status::kDone;
    }
    if (!isAcceptable(console, change, result)) {
        return refusedChange(console);
    }
    showMeaning(console, result.old, result.profile);
    return recordedChange(call.given, [&] {
        storeProfile(result.profile);
        answerChange(console, true, result.done);
        noteReload(console, change.profile);
        return Status::kDone;
    });
}

void checkAdapterName(const std::string& adapter) {
    const bool isInterface = !adapter.empty() && adapter.size() <= kLongestInterface &&
                             adapter.front() != '-' && adapter != "." && adapter != ".." &&
                             adapter.find_first_of(" /:") == std::string::npos &&
                             isPlainText(adapter);
    if (!isInterface) {
        wrongUse(shown(adapter) + " is no name of an adapter",
                 "an adapter is a network interface such as eth0 (at most 15 bytes, no blank, "
                 "slash or colon), global, pppoe or vpn");
    }
}

}  // namespace zamofw
