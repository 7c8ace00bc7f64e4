#include "command/answers/changeAnswer.h"
#include "command/answers/profileAnswers.h"
#include "command/answers/profileReplacement.h"
#include "command/answers/profileStore.h"
#include "command/answers/systemNames.h"
#include "command/document/check.h"
#include "command/words/quoting.h"

namespace zamofw {

Status profileSet(const Console& console,
                  const std::vector<std::string>& call,
                  const ProfileSetRequest& request) {
    requireRoot("storing a profile");
    if (!isStoredProfile(request.name)) {
        requireFreeName(request.name);
    }
    const Target target = readTarget({std::nullopt, request.file});
    const CheckContext context = systemCheckContext();
    if (!isAccepted(console, checkProfile(target.document, context), request.force)) {
        return refusedChange(console);
    }
    return replaceProfile(
        console, call, request.name, renamedDocument(target.document, request.name), Loss::kAsk);
}

}  // namespace zamofw
