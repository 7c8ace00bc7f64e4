#include "command/answers/changeAnswer.h"
#include "command/answers/profileAnswers.h"
#include "command/answers/profileStore.h"
#include "command/answers/table.h"
#include "command/history/change.h"
#include "command/words/quoting.h"
#include "zamofirewall/profile.h"

#include <json/value.h>
#include <unistd.h>

namespace zamofw {
namespace {

// A document that cannot be read may be deleted too.
std::string lossOf(const std::string& name) {
    try {
        return counted(ruleCount(jsonOfDocument(readTarget({name, {}}).document)), "rule");
    } catch (const Failure&) {
        return "a document that cannot be read";
    }
}

}  // namespace

Status profileDelete(const Console& console,
                     const std::vector<std::string>& call,
                     const std::string& name) {
    requireRoot("deleting a profile");
    requireStoredProfile(name);
    if (profileNameInForce() == name) {
        failed("the profile " + shown(name) + " is in force, and cannot be deleted",
               "choose another one first: zamofw profile use NAME");
    }
    if (!console.confirm("deleting " + shown(name) + " throws away " + lossOf(name) +
                         "; delete it?")) {
        return refusedChange(console);
    }
    return recordedChange(call, [&] {
        // The library does not say when the file cannot be removed.
        const std::string path = FW::ZAMOFW_PROFILE().profilePathGet(name);
        if (!FW::ZAMOFW_PROFILE().profileDelete(name) || access(path.c_str(), F_OK) == 0) {
            failed("the profile " + shown(name) + " could not be deleted",
                   "see that it is not in force by now (`zamofw profile list`), and that the disk "
                   "is not mounted read-only");
        }
        answerChange(console, true, "the profile " + shown(name) + " is deleted");
        return Status::kDone;
    });
}

}  // namespace zamofw
