// A profile's command list, made one rule at a time.

#include <json/value.h>

#include <boost/algorithm/string/replace.hpp>
#include <cstdint>
#include <map>
#include <set>
#include <utility>

#include "command/console.h"
#include "command/plan/plan.h"
#include "command/plan/tunnelLook.h"
#include "library/model/names.h"
#include "zamofirewall/translator.h"

namespace zamofw {
namespace {

// Dial-up is governed by the name "pppoe", or "vpn"; the interface itself never is.
constexpr const char* kNeverTranslated = "ppp0";

// The translator does not take the name "pppoe" where nothing dials out.
constexpr const char* kAbsentPppoe = "absent-pppoe";

// The lines of one family by the name that they run under.
using LinesByKey = std::map<std::string, std::vector<PlannedLine>>;

// What an adapter's list is made of: its rules, then its default policy.
struct Step {
    const FW::FWRULE& rule;
    LineKind kind;
    std::optional<std::size_t> position;
};

FW::FWRULE catchAllRule(FW::FW_POLICY policy) {
    FW::FWRULE rule;
    rule.policy = policy;
    rule.ipType = FW::FW_IP_TYPE_BOTH;
    rule.ipGroup = FW::FW_IP_GROUP_ALL;
    rule.portGroup = FW::FW_PORT_GROUP_ALL;
    return rule;
}

[[noreturn]] void cannotTranslate(const FW::FWRULE& rule, const PlannedLine& origin) {
    const std::string what = "cannot translate " + originText(origin);
    const auto policy = static_cast<std::int32_t>(rule.policy);
    if (policy < FW::FW_POLICY_ALLOW || policy > FW::FW_POLICY_NONE) {
        failed(what + ": the policy " + std::to_string(policy) + " is unknown",
               "a policy is 0 (allow), 1 (deny) or 2 (none)");
    }
    failed(what + ": the service catalogue cannot be read",
           "see that /usr/zamo/etc.defaults/services.d/ holds the services");
}

// The translator's scratch data. Making and freeing it for each rule costs more than the
// translation itself, so it is made once, and a field that a rule has in common with the rule
// before it keeps its fragments.
class Scratch {
  public:
    explicit Scratch(FW::ZAMOFW_IPTABLES_RULES& translator) : translator_(translator) {}
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    // False when the rule cannot be translated. The lines stay until they are taken.
    bool translate(const std::string& key, const FW::FWRULE& rule) {
        const bool isFilled = fill(key, rule);
        key_ = key;
        keeps_ = isFilled;
        if (isFilled) {
            direct_ = rule.adapterDirect;
            policy_ = rule.policy;
            table_ = rule.table;
            translator_.iptablesArgToCmd(key, rule, arguments_, lines_);
        }
        return isFilled;
    }

    Json::Value& linesOf(const FW::Family& family, const std::string& key) {
        return lines_[family.key][key];
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

    // The fields in the order of FwRuleToIptablesArg().
    bool fill(const std::string& key, const FW::FWRULE& rule) {
        using Translator = FW::ZAMOFW_IPTABLES_RULES;
        if (!keeps_ || key != key_ || rule.adapterDirect != direct_) {
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
            if (!refill(chains_, &Translator::chainToIptablesArg, rule)) {
                return false;
            }
        }
        if ((!keeps_ || rule.table != table_) &&
            !refill(tables_, &Translator::tableToIptablesArg, rule)) {
            return false;
        }
        return (keeps_ && rule.policy == policy_) ||
               refill(policies_, &Translator::policyToIptablesArg, rule);
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
    Json::Value lines_;
    // Of the rule before, if it could be translated.
    bool keeps_ = false;
    std::string key_;
    std::int32_t direct_ = 0;
    std::set<std::string> chainList_;
    std::string table_;
    FW::FW_POLICY policy_ = FW::FW_POLICY_NONE;
};

// What becomes of packets of established connections.
struct Established {
    bool isAccepted = true;
    std::string exceptFrom;  // an address, or empty
};

class Planner {
  public:
    enum class Adapters { kPresent, kAll };

    Planner(bool mayHaveTunnel, Adapters adapters)
        : mayHaveTunnel_(mayHaveTunnel), adapters_(adapters) {}

    void addBuiltInLines(const Established& established) {
        Json::Value lines;
        (void)translator_.fwRulesToIptablesRules(
            established.isAccepted, {}, {}, lines, established.exceptFrom);
        const PlannedLine origin = {"", FW::kGlobalAdapter, LineKind::kBuiltIn, {}, ""};
        take(lines[FW::kIpv4.key][FW::kGlobalAdapter], v4_[FW::kGlobalAdapter], origin);
        take(lines[FW::kIpv6.key][FW::kGlobalAdapter], v6_[FW::kGlobalAdapter], origin);
    }

    void addAdapter(const std::string& adapter,
                    const std::vector<FW::FWRULE>& rules,
                    const FW::FW_POLICY* policy) {
        if (adapter == kNeverTranslated) {
            return;
        }
        const bool isPresent = translator_.adapterIsEnabled(adapter);
        if (!isPresent && adapters_ == Adapters::kPresent) {
            return;
        }
        isAbsentPppoe_ = !isPresent && adapter == FW::kPppoeAdapter;
        const std::optional<std::string> tunnel =
            isPresent ? tunnelOf(adapter) : std::optional<std::string>();
        std::size_t position = 0;
        for (const FW::FWRULE& rule : rules) {
            addStep(adapter, tunnel, {rule, LineKind::kRule, ++position});
        }
        if (policy != nullptr) {
            addStep(adapter, tunnel, {catchAllRule(*policy), LineKind::kDefault, std::nullopt});
        }
    }

    [[nodiscard]] std::vector<PlannedLine> takeV4() { return inOrder(std::move(v4_)); }
    [[nodiscard]] std::vector<PlannedLine> takeV6() { return inOrder(std::move(v6_)); }

  private:
    // The interface that gets a rule's IPv6 lines as well. The lines of a rule that matches
    // everything tell it.
    std::optional<std::string> tunnelOf(const std::string& adapter) {
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

    void addStep(const std::string& adapter,
                 const std::optional<std::string>& tunnel,
                 const Step& step) {
        if (!step.rule.enable || step.rule.policy == FW::FW_POLICY_NONE) {
            return;
        }
        const PlannedLine origin = {"", adapter, step.kind, step.position, step.rule.name};
        if (!translate(adapter, step.rule, origin)) {
            cannotTranslate(step.rule, origin);
        }
        if (tunnel) {
            FW::FWRULE rule = step.rule;
            rule.ipType = FW::FW_IP_TYPE_V6;
            (void)translate(*tunnel, rule, origin);
        }
    }

    // Files the lines of one rule under `key`, an interface or the name of one.
    bool translate(const std::string& key, const FW::FWRULE& rule, const PlannedLine& origin) {
        const std::string name = isAbsentPppoe_ ? kAbsentPppoe : key;
        if (!scratch_.translate(name, rule)) {
            return false;
        }
        take(scratch_.linesOf(FW::kIpv4, name), v4_[key], origin);
        take(scratch_.linesOf(FW::kIpv6, name), v6_[key], origin);
        return true;
    }

    void take(Json::Value& lines,
              std::vector<PlannedLine>& planned,
              const PlannedLine& origin) const {
        for (const Json::Value& line : lines) {
            planned.push_back(origin);
            planned.back().line = line.asString();
            if (isAbsentPppoe_) {
                boost::replace_first(planned.back().line, kAbsentPppoe, FW::kPppoeAdapter);
            }
        }
        if (!lines.empty()) {
            lines.clear();
        }
    }

    // The lines of no adapter run first, then those of the adapters in ascending order.
    static std::vector<PlannedLine> inOrder(LinesByKey lines) {
        std::vector<PlannedLine> ordered = std::move(lines[FW::kGlobalAdapter]);
        std::size_t count = ordered.size();
        for (const auto& entry : lines) {
            count += entry.second.size();
        }
        ordered.reserve(count);
        for (auto& [key, planned] : lines) {
            ordered.insert(ordered.end(),
                           std::make_move_iterator(planned.begin()),
                           std::make_move_iterator(planned.end()));
        }
        return ordered;
    }

    FW::ZAMOFW_IPTABLES_RULES translator_;
    bool mayHaveTunnel_;
    Adapters adapters_;
    bool isAbsentPppoe_ = false;  // the adapter that is being translated
    Scratch scratch_{translator_};
    LinesByKey v4_;
    LinesByKey v6_;
};

Plan planWith(Planner&& planner, const FW::FWPROFILE& profile, const Established& established) {
    using Policies = std::map<std::string, FW::FW_POLICY>;
    planner.addBuiltInLines(established);
    // An adapter with a policy alone has a list too.
    std::map<std::string, const FW::FW_POLICY*> adapters;
    for (const auto& [adapter, rules] : profile.rules) {
        adapters[adapter] = nullptr;
    }
    for (const Policies::value_type& entry : profile.adapterPolicyMap) {
        adapters[entry.first] = &entry.second;
    }
    const std::vector<FW::FWRULE> none;
    for (const auto& [adapter, policy] : adapters) {
        const auto rules = profile.rules.find(adapter);
        planner.addAdapter(adapter, rules == profile.rules.end() ? none : rules->second, policy);
    }
    return {profile.name, planner.takeV4(), planner.takeV6()};
}

}  // namespace

Plan planProfile(const FW::FWPROFILE& profile) {
    return planProfile(profile, mayHaveTunnel());
}

Plan planProfile(const FW::FWPROFILE& profile, bool mayHaveTunnel) {
    return planWith(Planner(mayHaveTunnel, Planner::Adapters::kPresent), profile, Established());
}

Plan planOfAllAdapters(const FW::FWPROFILE& profile) {
    return planWith(Planner(mayHaveTunnel(), Planner::Adapters::kAll), profile, Established());
}

Plan planTrial(const FW::FWPROFILE& profile, const std::optional<std::string>& client) {
    return planWith(Planner(mayHaveTunnel(), Planner::Adapters::kPresent),
                    profile,
                    {client.has_value(), client.value_or("")});
}

}  // namespace zamofw
