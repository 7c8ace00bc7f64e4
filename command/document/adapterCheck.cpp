#include "command/document/adapterCheck.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "command/document/memberCheck.h"
#include "command/document/ruleCheck.h"
#include "command/document/textCheck.h"
#include "library/model/names.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {
namespace {

using AdapterMembers = std::vector<const Member*>;

// The adapters that have rules, disabled ones included, or a policy.
using AdapterSet = std::set<std::string_view>;

AdapterMembers membersOf(const Node* node, const Location& where, FindingList& findings) {
    return node == nullptr ? AdapterMembers() : checkFreeMembers(*node, where, findings);
}

void checkAdapterName(const Member& member,
                      const Location& where,
                      const CheckContext& context,
                      FindingList& findings) {
    const std::string name(member.name);
    if (std::optional<Fault> fault = wordFault("the adapter", name)) {
        findings.error(member.nameOffset, where, std::move(*fault));
    } else if (context.adapters.count(name) == 0) {
        findings.warning(member.nameOffset,
                         where,
                         {"absent-adapter",
                          "there is no adapter " + quoted(name) +
                              " here, so that its rules and its policy are not in force",
                          "`zamofw adapter list` shows the adapters; `zamofw adapter rename` moves "
                          "rules to another one."});
    }
}

void checkRuleList(const Member& adapter,
                   const Location& where,
                   const CheckContext& context,
                   FindingList& findings) {
    const Span<Node> rules = adapter.value.items();
    const std::string name(adapter.name);
    for (std::size_t i = 0; i < rules.size(); ++i) {
        checkRule(rules[i], {where, i}, name, context, findings);
    }
}

// The adapters with rules.
AdapterSet checkRuleLists(const AdapterMembers& members,
                          const Location& rules,
                          const CheckContext& context,
                          FindingList& findings) {
    AdapterSet withRules;
    for (const Member* member : members) {
        const Location where(rules, member->name);
        checkAdapterName(*member, where, context, findings);
        const Node& list = member->value;
        if (list.kind == Node::Kind::kList) {
            checkRuleList(*member, where, context, findings);
            if (!list.items().empty()) {
                withRules.insert(member->name);
            }
        } else if (list.kind != Node::Kind::kNull) {
            findings.error(list.offset,
                           where,
                           {"wrong-type",
                            "the rules of an adapter must be a list",
                            "Put the rules in brackets: [ { ... }, { ... } ]."});
        }
    }
    return withRules;
}

void checkPolicy(const Member& member,
                 const Location& where,
                 const AdapterSet& withRules,
                 FindingList& findings) {
    const Node& value = member.value;
    if (!checkType(value, where, "a default policy", MemberType::kInteger, findings)) {
        return;
    }
    if (!isCode(value.integer(), policyCodes())) {
        findings.error(
            value.offset, where, codeFault("a default policy", value.integer(), policyCodes()));
        return;
    }
    if (value.integer() != FW::FW_POLICY_DENY && member.name != FW::kGlobalAdapter &&
        withRules.count(member.name) != 0) {
        findings.warning(
            value.offset,
            where,
            {"open-by-default",
             "what no rule of " + quoted(member.name) + " matches is let in",
             "Unless that is meant, set it to 1 (deny), for instance with `zamofw policy PROFILE " +
                 std::string(member.name) + " deny`."});
    }
}

void reportNoPolicy(const Member& member, const Location& where, FindingList& findings) {
    findings.warning(member.nameOffset,
                     where,
                     {"no-policy",
                      quoted(member.name) +
                          " has rules but no default policy, so that what they do not match is "
                          "let in",
                      "Give it one with `zamofw policy PROFILE " + std::string(member.name) +
                          " deny`, or in `adapterPolicyMap`: 1 is deny, 0 allow, 2 none."});
}

}  // namespace

void checkAdapters(const Adapters& adapters,
                   const Location& profile,
                   const CheckContext& context,
                   FindingList& findings) {
    const std::string& policiesName = profileTable()[profileField::kPolicies].name;
    const Location rules(profile, profileTable()[profileField::kRules].name);
    const Location policies(profile, policiesName);
    const AdapterMembers ruleLists = membersOf(adapters.rules, rules, findings);
    const AdapterMembers policyList = membersOf(adapters.policies, policies, findings);

    const AdapterSet withRules = checkRuleLists(ruleLists, rules, context, findings);
    AdapterSet named;
    for (const Member* member : ruleLists) {
        named.insert(member->name);
    }
    AdapterSet withPolicy;
    for (const Member* member : policyList) {
        // null is as good as no policy.
        if (member->value.kind == Node::Kind::kNull) {
            continue;
        }
        const Location where(policies, member->name);
        if (named.count(member->name) == 0) {
            checkAdapterName(*member, where, context, findings);
        }
        withPolicy.insert(member->name);
        checkPolicy(*member, where, withRules, findings);
    }
    for (const Member* member : ruleLists) {
        if (adapters.arePoliciesKnown && withRules.count(member->name) != 0 &&
            withPolicy.count(member->name) == 0) {
            reportNoPolicy(*member, {rules, member->name}, findings);
        }
    }
}

}  // namespace zamofw
