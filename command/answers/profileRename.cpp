#include "command/answers/changeAnswer.h"
#include "command/answers/profileAnswers.h"
#include "command/answers/profileStore.h"
#include "command/history/change.h"
#include "command/words/quoting.h"
#include "zamofirewall/profile.h"

namespace zamofw {

Status profileRename(const Console& console,
                     const std::vector<std::string>& call,
                     const std::string& oldName,
                     const std::string& newName) {
    requireRoot("renaming a profile");
    requireStoredProfile(oldName);
    requireFreeName(newName);
    return recordedChange(call, [&] {
        if (!FW::ZAMOFW_PROFILE().profileRename(oldName, newName)) {
            failed("the profile " + shown(oldName) + " could not be renamed",
                   "see that its document has no faults (`zamofw check " + shellQuoted({oldName}) +
                       "`), and that the disk is not full or mounted read-only");
        }
        answerChange(console, true, shown(oldName) + " is now called " + shown(newName));
        return Status::kDone;
    });
}

}  // namespace zamofw
