#ifndef COMMAND_APPLY_LEGACYTABLE_H
#define COMMAND_APPLY_LEGACYTABLE_H

#include <memory>

namespace zamofw {

// The filter table of a family as the kernel gives it to the legacy programs, rules, policies and
// counters. Reading it takes a small part of the time of ip6tables-save. The library of those
// programs does not serve here: it refuses to commit what was read before another commit.
//
// Whoever reads it and puts it back must hold the xtables lock all the while, since the kernel
// takes a table as a whole.
class LegacyTable {
  public:
    virtual ~LegacyTable() = default;
    LegacyTable() = default;
    LegacyTable(const LegacyTable&) = delete;
    LegacyTable& operator=(const LegacyTable&) = delete;

    // Throws Failure when the kernel does not take it.
    virtual void putBack() const = 0;
};

// Null when the kernel does not give it.
[[nodiscard]] std::unique_ptr<LegacyTable> readLegacyTable(int family);

}  // namespace zamofw

#endif
