// What is wrong with the firewall's files, programs and locks.
#ifndef COMMAND_ANSWERS_FILEDAMAGE_H
#define COMMAND_ANSWERS_FILEDAMAGE_H

#include <string>
#include <vector>

#include "command/apply/damage.h"

namespace zamofw {

// tool-missing
[[nodiscard]] Damages toolDamages();

// bad-file: settings, profiles and the list of kernel modules that cannot be read or used;
// no-default: the settings name a profile that is not there.
[[nodiscard]] Damages storedDamages();

// Files that a killed write has left, for temporary-file.
[[nodiscard]] std::vector<std::string> temporaryFiles();

// The profiles that trials have worked on which nobody will end: `age` seconds old at least.
[[nodiscard]] std::vector<std::string> trialCopies(long age);

// lock-held: locks that somebody holds for longer than a moment, and who. The lock of a reload is
// left out.
[[nodiscard]] Damages lockDamages();

}  // namespace zamofw

#endif
