// What the kernel holds now.
#ifndef COMMAND_APPLY_KERNELSTATE_H
#define COMMAND_APPLY_KERNELSTATE_H

#include <string>

namespace zamofw {

// "ACCEPT" or "DROP"; "unknown" when it cannot be asked.
struct Policies {
    std::string input = "unknown";
    std::string forward = "unknown";
};
[[nodiscard]] Policies kernelPolicies(int family);

// What the firewall's chains and the policies of a family are now. Throws Failure when they cannot
// be read, or a chain is missing.
class SavedChains {
  public:
    explicit SavedChains(int family);

    // Input for `iptables-restore --noflush --counters` that makes them that again.
    [[nodiscard]] std::string input() const;

    // Whether a reload that was killed, or could not open the policies, has left guard rules.
    [[nodiscard]] bool hasGuards() const;

  private:
    std::string table_;
};

// Throws Failure unless all of the firewall's chains are there: a reload line by line closes the
// policies before it finds out. Says whether guard rules are left, of which such a reload takes
// away no more than its own.
enum class Guards { kNone, kLeft };
[[nodiscard]] Guards requireChains();

// Ends the call: one of the firewall's chains is not there.
[[noreturn]] void chainIsMissing(int family, const std::string& chain);

}  // namespace zamofw

#endif
