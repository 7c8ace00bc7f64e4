// The programs of a family that take and give whole tables.
#ifndef COMMAND_APPLY_PROGRAMS_H
#define COMMAND_APPLY_PROGRAMS_H

#include <array>
#include <string>

#include "command/apply/program.h"
#include "library/model/names.h"

namespace zamofw {

// Seconds to wait for the lock that the legacy programs share; without a limit they wait for ever.
constexpr const char* kLockSeconds = "20";
constexpr const char* kXtablesLock = "/run/xtables.lock";

constexpr std::array<const char*, 3> kOurChains = {
    FW::kInputChain, FW::kForwardChain, FW::kReloadingChain};

[[nodiscard]] std::string tool(int family);
[[nodiscard]] std::string restoreProgram(int family);
[[nodiscard]] std::string saveProgram(int family);

// The variants of the programs. One that is neither of them, as a script in front of a program, may
// or may not take the xtables lock.
enum class Variant { kLegacy, kNft, kUnknown };
[[nodiscard]] Variant variantOf(int family);

// A program's message without the advice to read its help, which is about its own options.
[[nodiscard]] std::string causeIn(const std::string& error);

}  // namespace zamofw

#endif
