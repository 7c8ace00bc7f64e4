#include "command/apply/filterChange.h"

#include "command/apply/program.h"
#include "command/apply/programs.h"
#include "command/apply/restoreError.h"

namespace zamofw {

bool changeFilter(int family, const std::vector<std::string>& lines, const ExecutionLock& lock) {
    if (lines.empty()) {
        return false;
    }
    std::string input = "*filter\n";
    for (const std::string& line : lines) {
        input += line + "\n";
    }
    const posix::Descriptor file = memoryFile(input + "COMMIT\n");
    const std::string program = restoreProgram(family);
    const ProgramResult result =
        runProgram({program, "--noflush", "-w", kLockSeconds}, file.get(), {lock.descriptor()});
    if (result.status != 0) {
        throwIfLockIsHeld(result);
        failedProgram(family, program, result);
    }
    return true;
}

}  // namespace zamofw
