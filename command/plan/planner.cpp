#include "command/plan/planner.h"

#include <boost/algorithm/string/replace.hpp>
#include <cstdint>
#include <set>
#include <vector>

#include "command/console.h"

namespace zamofw {
namespace {

// Dial-up is governed by the name "pppoe", or "vpn"; the interface itself never is.
constexpr const char* kNeverTranslated = "ppp0";

// The translator does not take the name "pppoe" where nothing dials out.
const std::string kAbsentPppoe = "absent-pppoe";

FW::FWRULE catchAllRule(FW::FW_POLICY policy) {
    FW::FWRULE rule;
    rule.policy = policy;
    rule.ipType = FW::FW_IP_TYPE_BOTH;
    rule.ipGroup = FW::FW_IP_GROUP_ALL;
    rule.portGroup = FW::FW_PORT_GROUP_ALL;
    return rule;
}

[[noreturn]] void cannotTranslate(const Step& step) {
    const std::string what = "cannot translate " + originText(originOf(step));
    const auto policy = static_cast<std::int32_t>(step.rule.policy);
    if (policy < FW::FW_POLICY_ALLOW || policy > FW::FW_POLICY_NONE) {
        failed(what + ": the policy " + std::to_string(policy) + " is unknown",
               "a policy is 0 (allow), 1 (deny) or 2 (none)");
    }
    failed(what + ": the service catalogue cannot be read",
           "see that /usr/zamo/etc.defaults/services.d/ holds the services");
}

// The member of a command list.
const char* memberOf(int family) {
    return (family == 4 ? FW::kIpv4 : FW::kIpv6).key;
}

}  // namespace

// The translator's scratch data. Making and freeing it for each rule costs more than the
// translation itself, so it is made once, and a field that a rule has in common with the rule
// before it keeps its fragments.
class Planner::Scratch {
  public:
    explicit Scratch(FW::ZAMOFW_IPTABLES_RULES& translator) : translator_(translator) {}
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    // False when the rule cannot be translated.
    bool translate(const std::string& key, const FW::FWRULE& rule) {
        keeps_ = fill(key, rule);
        if (keeps_) {
            key_ = key;
            direct_ = rule.adapterDirect;
            policy_ = rule.policy;
            table_ = rule.table;
        }
        return keeps_;
    }

    [[nodiscard]] const Arguments& arguments() const { return fields_; }

    // The lines of the arguments stay until they are taken.
    void makeLines(const std::string& key, const FW::FWRULE& rule) {
        translator_.iptablesArgToCmd(key, rule, arguments_, lines_);
    }

    Json::Value& linesOf(int family, const std::string& key) {
        return lines_[memberOf(family)][key];
    }

  private:
    static Json::Value emptyArguments(FW::ZAMOFW_IPTABLES_RULES& translator) {
        Json::Value arguments;
        translator.iptablesRulesInit(arguments);
        return arguments;
    }

    using Field = bool (FW::ZAMOFW_IPTABLES_RULES::*)(const FW::FWRULE&, Json::Value&);

    bool refill(Json::Value& fragments, Field field, const FW::FWRULE& rule) {
        fragments.clear();
        return (translator_.*field)(rule, arguments_);
    }

    bool refillCommon(Json::Value& fragments, Field field, const FW::FWRULE& rule) {
        ++fields_.commonFill;
        return refill(fragments, field, rule);
    }

    // The fields in the order of FwRuleToIptablesArg().
    bool fill(const std::string& key, const FW::FWRULE& rule) {
        using Translator = FW::ZAMOFW_IPTABLES_RULES;
        if (!keeps_ || key != key_ || rule.adapterDirect != direct_) {
            ++fields_.commonFill;
            adapters_.clear();
            if (!translator_.adapterToIptablesArg(key, rule, arguments_)) {
                return false;
            }
        }
        v4_.clear();
        if (!refill(v6_, &Translator::ipToIptablesArg, rule) ||
            !refill(ports_, &Translator::portToIptablesArg, rule)) {
            return false;
        }
        if (!keeps_ || rule.chainList != chainList_) {
            chainList_ = rule.chainList;
            if (!refillCommon(chains_, &Translator::chainToIptablesArg, rule)) {
                return false;
            }
        }
        if ((!keeps_ || rule.table != table_) &&
            !refillCommon(tables_, &Translator::tableToIptablesArg, rule)) {
            return false;
        }
        return (keeps_ && rule.policy == policy_) ||
               refillCommon(policies_, &Translator::policyToIptablesArg, rule);
    }

    FW::ZAMOFW_IPTABLES_RULES& translator_;
    Json::Value arguments_ = emptyArguments(translator_);
    // The arrays in it, which stay where they are.
    Json::Value& adapters_ = arguments_["adapter"];
    Json::Value& v4_ = arguments_["ip"][FW::kIpv4.key];
    Json::Value& v6_ = arguments_["ip"][FW::kIpv6.key];
    Json::Value& ports_ = arguments_["port"];
    Json::Value& chains_ = arguments_["chain"];
    Json::Value& tables_ = arguments_["table"];
    Json::Value& policies_ = arguments_["policy"];
    Arguments fields_ = {tables_, chains_, adapters_, v4_, v6_, ports_, policies_};
    Json::Value lines_;
    // Of the rule before, if it could be translated.
    bool keeps_ = false;
    std::string key_;
    std::int32_t direct_ = 0;
    std::set<std::string> chainList_;
    std::string table_;
    FW::FW_POLICY policy_ = FW::FW_POLICY_NONE;
};

PlannedLine originOf(const Step& step) {
    return {"", step.adapter, step.kind, step.position, step.rule.name};
}

Planner::Planner(bool mayHaveTunnel, Adapters adapters, LineTaker& taker)
    : taker_(taker),
      mayHaveTunnel_(mayHaveTunnel),
      adapters_(adapters),
      scratch_(std::make_unique<Scratch>(translator_)) {}

Planner::~Planner() = default;

void Planner::addBuiltInLines(const Established& established) {
    Json::Value lines;
    (void)translator_.fwRulesToIptablesRules(
        established.isAccepted, {}, {}, lines, established.exceptFrom);
    FW::FWRULE unnamed;
    const std::string key = FW::kGlobalAdapter;
    const Step step = {unnamed, key, LineKind::kBuiltIn, std::nullopt};
    for (const int family : {4, 6}) {
        hand(lines[memberOf(family)][key], family, key, step);
    }
}

bool Planner::addAdapter(const PlannedAdapter& adapter) {
    if (adapter.name == kNeverTranslated) {
        return true;
    }
    const bool isPresent = translator_.adapterIsEnabled(adapter.name);
    if (!isPresent && adapters_ == Adapters::kPresent) {
        return true;
    }
    isAbsentPppoe_ = !isPresent && adapter.name == FW::kPppoeAdapter;
    const std::optional<std::string> tunnel =
        isPresent ? tunnelOf(adapter.name) : std::optional<std::string>();
    std::size_t position = 0;
    const auto addRule = [&](const FW::FWRULE& rule) {
        addStep(tunnel, {rule, adapter.name, LineKind::kRule, ++position});
    };
    if (!adapter.visitRules(addRule)) {
        return false;
    }
    if (adapter.policy) {
        const FW::FWRULE rule = catchAllRule(*adapter.policy);
        addStep(tunnel, {rule, adapter.name, LineKind::kDefault, std::nullopt});
    }
    return true;
}

// The interface that gets a rule's IPv6 lines as well. The lines of a rule that matches everything
// tell it.
std::optional<std::string> Planner::tunnelOf(const std::string& adapter) {
    if (!mayHaveTunnel_) {
        return std::nullopt;
    }
    FW::FWRULE probe = catchAllRule(FW::FW_POLICY_DENY);
    probe.ipType = FW::FW_IP_TYPE_V6;
    Json::Value lines;
    translator_.iptables6in4ToCmd(adapter, probe, lines);
    const std::vector<std::string> names = lines[FW::kIpv6.key].getMemberNames();
    return names.empty() ? std::nullopt : std::optional(names.front());
}

void Planner::addStep(const std::optional<std::string>& tunnel, const Step& step) {
    if (!step.rule.enable || step.rule.policy == FW::FW_POLICY_NONE) {
        return;
    }
    if (!translate(step.adapter, step.rule, step)) {
        cannotTranslate(step);
    }
    if (tunnel) {
        FW::FWRULE rule = step.rule;
        rule.ipType = FW::FW_IP_TYPE_V6;
        (void)translate(*tunnel, rule, step);
    }
}

// Hands over the lines of one rule under `key`.
bool Planner::translate(const std::string& key, const FW::FWRULE& rule, const Step& step) {
    const std::string& name = isAbsentPppoe_ ? kAbsentPppoe : key;
    if (!scratch_->translate(name, rule)) {
        return false;
    }
    if (taker_.takeArguments(step, scratch_->arguments())) {
        return true;
    }
    scratch_->makeLines(name, rule);
    for (const int family : {4, 6}) {
        hand(scratch_->linesOf(family, name), family, key, step);
    }
    return true;
}

void Planner::hand(Json::Value& lines, int family, const std::string& key, const Step& step) {
    if (lines.empty()) {
        return;
    }
    if (isAbsentPppoe_) {
        for (Json::Value& line : lines) {
            line = boost::replace_first_copy(line.asString(), kAbsentPppoe, FW::kPppoeAdapter);
        }
    }
    taker_.take(step, family, key, lines);
    lines.clear();
}

}  // namespace zamofw
