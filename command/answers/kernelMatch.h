// Whether the kernel holds what is stored.
#ifndef COMMAND_ANSWERS_KERNELMATCH_H
#define COMMAND_ANSWERS_KERNELMATCH_H

#include <string>
#include <vector>

#include "command/apply/verification.h"
#include "command/plan/plan.h"

namespace zamofw {

// What should be in force: the lines of the profile that the settings choose, or none while the
// firewall is disabled.
struct ShouldBe {
    bool isEnabled = false;
    Plan plan;
};
// Throws Failure when it cannot be read or translated.
[[nodiscard]] ShouldBe shouldBe();

struct KernelMatch {
    ShouldBe expected;
    std::vector<Difference> differences;
    std::string reload;  // who held the lock of a reload all the time, which may be the reason
};

// In the middle of a reload there are differences that mean nothing. So they are looked for again
// once no reload is under way, after so many seconds at most. Throws Failure when the kernel cannot
// be asked.
[[nodiscard]] KernelMatch kernelMatch(int secondsForReload);

// "missing", "extra", ...
[[nodiscard]] const char* kindName(Difference::Kind kind);

// A match in a word, for answers that are mainly about something else.
struct KernelAnswer {
    const char* answer;  // "same", "differs" or "unknown"
    std::string reason;
};
[[nodiscard]] KernelAnswer kernelAnswer();

}  // namespace zamofw

#endif
