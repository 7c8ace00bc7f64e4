#include "command/document/ruleCheck.h"

#include <algorithm>
#include <array>

#include "command/document/addressCheck.h"
#include "command/document/lineCheck.h"
#include "command/document/portCheck.h"
#include "command/document/rule.h"
#include "command/document/textCheck.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {
namespace {

constexpr std::array<const char*, 5> kTables = {"filter", "nat", "mangle", "raw", "security"};
constexpr std::size_t kLongestChain = 28;

// The name of a table or chain. One that is `unknown` is not worth a second finding when the line
// is too long because of it.
std::optional<Fault> nameFault(const char* what,
                               std::string_view name,
                               const char* missingRemedy,
                               const std::optional<Fault>& unknown) {
    if (name.empty()) {
        return Fault{"missing-values",
                     std::string(what) + " has no name, which iptables refuses",
                     missingRemedy};
    }
    const std::optional<Fault> fault = isWord(name) ? std::nullopt : wordFault(what, name);
    return fault ? fault : unknown;
}

std::optional<Fault> tableFault(std::string_view table, bool canRun) {
    std::optional<Fault> unknown;
    if (canRun && std::find(kTables.begin(), kTables.end(), table) == kTables.end()) {
        unknown = Fault{"unknown-code",
                        "iptables has no table " + quoted(table),
                        "Set `table` to \"filter\", where the firewall's chains are."};
    }
    return nameFault("the table", table, "Set `table` to \"filter\".", unknown);
}

std::optional<Fault> chainFault(std::string_view chain, bool canRun) {
    std::optional<Fault> unknown;
    if (canRun && chain.size() > kLongestChain) {
        unknown = Fault{"unknown-code",
                        "no chain is called " + quoted(chain) + ": names of chains have at most " +
                            std::to_string(kLongestChain) + " bytes",
                        "Correct the name, or take the entry out."};
    }
    return nameFault("the chain", chain, "Take the entry out.", unknown);
}

void checkTable(const RuleUnderCheck& rule, bool canRun, FindingList& findings) {
    // A rule without a verdict makes no line, and needs no table.
    if (!rule.members.isSound(field::kTable) ||
        rule.members.integer(field::kPolicy) == FW::FW_POLICY_NONE) {
        return;
    }
    if (std::optional<Fault> fault = tableFault(rule.members.text(field::kTable), canRun)) {
        findings.error(
            rule.offsetOf(field::kTable), rule.whereOf(field::kTable), std::move(*fault));
    }
}

void checkChains(const RuleUnderCheck& rule, bool canRun, FindingList& findings) {
    const Span<Node> chains = rule.members.items(field::kChainList);
    const Location list = rule.whereOf(field::kChainList);
    for (std::size_t i = 0; i < chains.size(); ++i) {
        if (std::optional<Fault> fault = chainFault(chains[i].text(), canRun)) {
            findings.error(chains[i].offset, {list, i}, std::move(*fault));
        }
    }
}

}  // namespace

void checkRule(const Node& node,
               const Location& where,
               const std::string& adapter,
               const CheckContext& context,
               FindingList& findings) {
    if (!checkType(node, where, "a rule", MemberType::kObject, findings)) {
        return;
    }
    const RuleUnderCheck rule = {
        node, where, adapter, checkMembers(node, where, ruleTable(), "a rule", true, findings)};
    const bool canRun = checkLines(rule, context, findings);
    checkTable(rule, canRun, findings);
    checkChains(rule, canRun, findings);
    checkAddresses(rule, context, findings);
    checkPorts(rule, context, findings);
}

}  // namespace zamofw
