// What a restore program says when it fails.
#ifndef COMMAND_APPLY_RESTOREERROR_H
#define COMMAND_APPLY_RESTOREERROR_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "command/apply/program.h"

namespace zamofw {

// The number of the line that the program names, from 1; 0 when it names none.
[[nodiscard]] std::size_t namedLine(const std::string& error);

// The index of the line that opens a table which the kernel does not have, other than the filter
// table; nothing when the words are about something else.
[[nodiscard]] std::optional<std::size_t> missingTable(const std::vector<std::string>& lines,
                                                      const std::string& error);

// Throws Failure unless a line of the input may be the reason.
void throwUnlessAboutLine(int family, const std::string& program, const ProgramResult& result);

// Throws Failure when the line is about one of the firewall's chains, and not about a rule in it.
void throwIfChainIsMissing(int family, const std::string& line);

// Throws Failure, naming the holder, when the program ended because the xtables lock was not free.
void throwIfLockIsHeld(const ProgramResult& result);

// Ends the call: the program failed, and no line of ours is the reason.
[[noreturn]] void failedProgram(int family,
                                const std::string& program,
                                const ProgramResult& result);

}  // namespace zamofw

#endif
