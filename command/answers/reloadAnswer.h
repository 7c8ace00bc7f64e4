// `zamofw reload` and `zamofw profile use`: rules into force.
#ifndef COMMAND_ANSWERS_RELOADANSWER_H
#define COMMAND_ANSWERS_RELOADANSWER_H

#include <string>
#include <vector>

#include "command/apply/transaction.h"
#include "command/console.h"

namespace zamofw {

// What becomes of the errors that the check finds in a profile.
enum class Errors {
    kRefuse,
    kShow,   // they are shown, and that is all
    kKnown,  // the caller has shown them already
};

struct InForce {
    std::string profile;
    bool isEnabled = false;  // a firewall that is switched off has no rules in force
    Outcome outcome;
};

// Puts the stored profile that the settings choose into the kernel, as one transaction. Shows what
// the check finds. Throws Failure: kNo for errors that refuse it, kNotPermitted without root,
// kFailed when nothing could be tried.
[[nodiscard]] InForce putIntoForce(const Console& console, Errors errors);

// The same for a caller that holds the lock already.
[[nodiscard]] InForce putIntoForce(const Console& console,
                                   Errors errors,
                                   const ExecutionLock& lock);

// Answers {"applied":B,"profile":S,"lines":N,"milliseconds":N,"refused":[...]}, or the same as
// text. kFailed when a line was refused.
[[nodiscard]] Status showInForce(const Console& console, const InForce& result);

struct ReloadRequest {
    bool sequential = false;  // line by line, as the library does it
    Errors errors = Errors::kRefuse;
};
[[nodiscard]] Status reloadAnswer(const Console& console, const ReloadRequest& request);

struct ProfileUseRequest {
    std::string name;
    bool reload = true;
    Errors errors = Errors::kRefuse;
    std::vector<std::string> given;  // the whole call, for the change log
};
// Chooses the profile in force. The choice is taken back when its rules are refused.
[[nodiscard]] Status profileUseAnswer(const Console& console, const ProfileUseRequest& request);

}  // namespace zamofw

#endif
