#include "command/answers/bootAnswers.h"
#include "command/answers/changeAnswer.h"
#include "command/answers/trialEnd.h"
#include "command/apply/chains.h"
#include "command/apply/startNote.h"
#include "command/apply/trial.h"

namespace zamofw {

Status stopAnswer(const Console& console) {
    requireRoot("stopping the firewall");
    const ExecutionLock lock;
    const SavedRulesAside aside;
    const SetUp door = openDoor(lock);
    if (!door.problems.empty()) {
        failed(door.problems + "the door could not be opened");
    }
    dropStartNote();
    endTrial(console);
    answerChange(console,
                 door.isChanged,
                 "the door is open until `zamofw start`; what is stored is as it was");
    return Status::kDone;
}

}  // namespace zamofw
