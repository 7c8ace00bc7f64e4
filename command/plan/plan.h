// The lines of a profile, each with its origin.
#ifndef COMMAND_PLAN_PLAN_H
#define COMMAND_PLAN_PLAN_H

#include <json/value.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "command/console.h"
#include "command/plan/plannedLine.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {

// Below this, nobody waits for long enough to wonder.
constexpr std::size_t kManyLines = 2000;

// The command list that the library would run for this profile, established connections accepted.
// Made of the translator's pieces, one rule at a time, so that each line's rule is known, and
// without a start of the network tool per rule: it is asked once per adapter, and only on a machine
// that has a tunnel. Throws Failure when a rule cannot be translated.
[[nodiscard]] Plan planProfile(const FW::FWPROFILE& profile);

// The same where it is known whether the network tool needs to be asked for tunnels.
[[nodiscard]] Plan planProfile(const FW::FWPROFILE& profile, bool mayHaveTunnel);

// The same as if all adapters were there that the profile has rules for. One that is not is an
// interface of its name.
[[nodiscard]] Plan planOfAllAdapters(const FW::FWPROFILE& profile);

// The command list of the library's trial: the established connections of this client are judged by
// the rules, so that one who is locked out notices it at once; without a client those of everybody
// are.
[[nodiscard]] Plan planTrial(const FW::FWPROFILE& profile,
                             const std::optional<std::string>& client);

// As text: each line with its program in front, as it would be run.
[[nodiscard]] std::string planLines(const Plan& plan);

// The same with a comment before the lines of each rule that says where they come from.
[[nodiscard]] std::string planLinesWithOrigins(const Plan& plan);

// {"profile":S,"v4":[LINE],"v6":[LINE]}
[[nodiscard]] std::string planJson(const Plan& plan);

// One LINE of it.
[[nodiscard]] Json::Value lineJson(const PlannedLine& line);

// "rule 2 of eth0 (name)", "the default policy of eth0", "built-in"
[[nodiscard]] std::string originText(const PlannedLine& line);

// A line that cmdExec() would refuse, or that an input for the restore programs cannot say.
class UnsayableLine : public Failure {
  public:
    UnsayableLine(const PlannedLine& line, std::string why);
    [[nodiscard]] const std::string& why() const { return why_; }

  private:
    std::string why_;
};
void requireSayable(const PlannedLine& line, int family);

// Input for `iptables-restore --noflush` (family 4) and `ip6tables-restore --noflush` (family 6): a
// comment line that names the family, the firewall's chains flushed and filled, the policies
// opened. Throws UnsayableLine.
[[nodiscard]] std::string restoreInput(const Plan& plan, int family);

// Both inputs, without what tells where their lines come from.
struct RestoreInputs {
    std::string v4;
    std::string v6;
    std::size_t lines = 0;  // of the plan, if it is known
};
[[nodiscard]] RestoreInputs restoreInputs(const Plan& plan);

// An adapter with its rules, which are there one at a time.
using RuleVisitor = std::function<void(const FW::FWRULE& rule)>;
struct PlannedAdapter {
    std::string name;
    std::optional<FW::FW_POLICY> policy;
    // False when they cannot all be visited.
    std::function<bool(const RuleVisitor& visit)> visitRules;
};

// The adapters of a profile, which must outlive them.
[[nodiscard]] std::vector<PlannedAdapter> adaptersOf(const FW::FWPROFILE& profile);

// The same texts as those of the plan, made without it: neither the records of the rules nor the
// lines are kept. `expectedSize` is about that of the larger text. None when something is out of
// the ordinary, a tunnel or a rule that cannot be translated for example.
[[nodiscard]] std::optional<RestoreInputs> plainInputs(const std::vector<PlannedAdapter>& adapters,
                                                       std::size_t expectedSize);

// One input with the origin of each line, by its index; null for a line that comes from no rule.
// The origins belong to the plan.
struct RestoreText {
    std::string text;
    std::vector<const PlannedLine*> origins;
};
[[nodiscard]] RestoreText restoreText(const Plan& plan, int family);

}  // namespace zamofw

#endif
