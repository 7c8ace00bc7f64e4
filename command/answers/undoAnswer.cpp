#include "command/answers/changeAnswer.h"
#include "command/answers/configurationExchange.h"
#include "command/answers/historyAnswers.h"
#include "command/history/change.h"
#include "command/history/configuration.h"
#include "command/words/quoting.h"

namespace zamofw {

Status undoAnswer(const Console& console, const std::vector<std::string>& call) {
    requireRoot("taking a change back");
    return recordedUndo(call, [&](const Snapshot* snapshot) {
        if (snapshot == nullptr) {
            answerChange(console, false, "there is no change to take back");
            return Status::kNo;
        }
        showExchange(console, readableConfiguration(), snapshot->configuration);
        exchangeConfiguration(console, snapshot->configuration, Errors::kShow);
        answerChange(console,
                     true,
                     "all is as it was before " + snapshot->time + ": zamofw " +
                         shellQuoted(snapshot->command) + " is taken back");
        return Status::kDone;
    });
}

}  // namespace zamofw
