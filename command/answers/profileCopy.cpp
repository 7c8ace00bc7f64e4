#include "command/answers/changeAnswer.h"
#include "command/answers/profileAnswers.h"
#include "command/answers/profileStore.h"
#include "command/history/change.h"
#include "command/words/quoting.h"

namespace zamofw {

Status profileCopy(const Console& console,
                   const std::vector<std::string>& call,
                   const std::string& from,
                   const std::string& to) {
    requireRoot("copying a profile");
    requireStoredProfile(from);
    requireFreeName(to);
    return recordedChange(call, [&] {
        requireFreeName(to);
        storeDocument(to, renamedDocument(readTarget({from, std::nullopt}).document, to));
        answerChange(console, true, shown(to) + " is a copy of " + shown(from));
        return Status::kDone;
    });
}

}  // namespace zamofw
