#include <syslog.h>

#include <boost/algorithm/string/replace.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <exception>
#include <ostream>

#include "command/answers/bootAnswers.h"
#include "command/answers/changeAnswer.h"
#include "command/answers/profileInForce.h"
#include "command/answers/refusalText.h"
#include "command/answers/reloadAnswer.h"
#include "command/answers/trialEnd.h"
#include "command/apply/chains.h"
#include "command/apply/keptRules.h"
#include "command/apply/kernelModules.h"
#include "command/apply/startNote.h"
#include "command/apply/trial.h"
#include "command/history/changeLog.h"
#include "command/systemLog.h"

namespace zamofw {
namespace {

// Whether rules are to be in force. When the settings cannot be read, those that were the last ones
// are the best guess.
bool isMeantToBeClosed() {
    try {
        return isFirewallEnabled();
    } catch (const std::exception&) {
        return readRules(kKeptRulesFile).has_value();
    }
}

// The guard rules take modules too. A failure ends the reload, which says what is wrong.
void loadModulesIfPossible() {
    try {
        loadKernelModules();
    } catch (const std::exception&) {
    }
}

// Why the stored rules are not in force; empty when they are.
std::string problemOfReload(const Console& console, const ExecutionLock& lock) {
    try {
        const InForce result = putIntoForce(console, Errors::kShow, lock);
        return refusalsText(result.outcome.refused);
    } catch (const Failure& failure) {
        return std::string(failure.what()) + "\n" +
               (failure.remedy().empty() ? "" : failure.remedy() + "\n");
    } catch (const std::exception& problem) {
        return std::string(problem.what()) + "\n";
    }
}

bool applyLastRules(const ExecutionLock& lock) {
    const std::optional<RestoreInputs> last = readRules(kKeptRulesFile);
    try {
        return last && applyInputs(*last, lock).applied;
    } catch (const std::exception&) {
        return false;
    }
}

std::string oneLine(std::string text) {
    boost::trim(text);
    return boost::replace_all_copy(text, "\n", " ");
}

// What is in force after all, in words.
struct Fallback {
    bool hasRules = false;
    std::string text;
};

// A machine that nobody can reach cannot be mended, so that without any rules the door is open, as
// it is after a failed reload of the library.
Fallback fallback(const SetUp& chains, std::string& problems, const ExecutionLock& lock) {
    if (chains.problems.empty() && applyLastRules(lock)) {
        return {true, "the last rules that were in force are in force again"};
    }
    if (chains.hadRules) {
        return {true, "the rules that were in force still are"};
    }
    const std::string more = openDoor(lock).problems;
    problems += more == chains.problems ? "" : more;
    return {false, "none could take their place: THE FIREWALL IS OPEN"};
}

[[noreturn]] void fallBack(const Console& console,
                           std::string problems,
                           const SetUp& chains,
                           const ExecutionLock& lock) {
    const Fallback fallen = fallback(chains, problems, lock);
    endTrial(console);
    const std::string what = "the stored rules could not be put into force; " + fallen.text;
    const StartNote note = {currentTime(), fallen.hasRules, oneLine(problems)};
    writeStartNote(note);
    logUnseen(LOG_ERR, what + ": " + note.cause);
    failed(problems + what, "find the cause, then run `zamofw reload`");
}

Status answerStart(const Console& console, bool isChanged, const std::string& text) {
    dropStartNote();
    endTrial(console);
    answerChange(console, isChanged, text);
    return Status::kDone;
}

}  // namespace

Status startAnswer(const Console& console) {
    requireRoot("starting the firewall");
    const ExecutionLock lock;
    const SavedRulesAside aside;
    if (!isMeantToBeClosed()) {
        const SetUp chains = makeChains(Door::kOpen, lock);
        if (!chains.problems.empty()) {
            failed(chains.problems + "the firewall's chains could not be made");
        }
        (void)isFirewallEnabled();  // the settings may be what is wrong
        return answerStart(console, chains.isChanged, "the firewall is disabled: the door is open");
    }
    loadModulesIfPossible();
    const SetUp chains = makeChains(Door::kClosedUntilFilled, lock);
    const std::string problems =
        chains.problems.empty() ? problemOfReload(console, lock) : chains.problems;
    if (!problems.empty()) {
        fallBack(console, problems, chains, lock);
    }
    return answerStart(console, true, "the firewall is started");
}

}  // namespace zamofw
