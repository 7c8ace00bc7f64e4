// A profile's command list, each line with the rule that it came from.

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include "command/plan/plan.h"
#include "command/plan/planner.h"
#include "command/plan/tunnelLook.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

// The lines of one family by the name that they run under.
using LinesByKey = std::map<std::string, std::vector<PlannedLine>>;

class LineList : public LineTaker {
  public:
    void take(const Step& step,
              int family,
              const std::string& key,
              const Json::Value& lines) override {
        std::vector<PlannedLine>& planned = (family == 4 ? v4_ : v6_)[key];
        const PlannedLine origin = originOf(step);
        for (const Json::Value& line : lines) {
            planned.push_back(origin);
            planned.back().line = line.asString();
        }
    }

    [[nodiscard]] std::vector<PlannedLine> takeV4() { return inOrder(std::move(v4_)); }
    [[nodiscard]] std::vector<PlannedLine> takeV6() { return inOrder(std::move(v6_)); }

  private:
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

    LinesByKey v4_;
    LinesByKey v6_;
};

Plan planWith(bool mayHaveTunnel,
              Planner::Adapters which,
              const FW::FWPROFILE& profile,
              const Established& established = {}) {
    LineList lines;
    Planner planner(mayHaveTunnel, which, lines);
    planner.addBuiltInLines(established);
    for (const PlannedAdapter& adapter : adaptersOf(profile)) {
        (void)planner.addAdapter(adapter);
    }
    return {profile.name, lines.takeV4(), lines.takeV6()};
}

}  // namespace

std::vector<PlannedAdapter> adaptersOf(const FW::FWPROFILE& profile) {
    std::map<std::string, PlannedAdapter> adapters;
    // An adapter with a policy alone has a list too.
    for (const auto& [name, policy] : profile.adapterPolicyMap) {
        adapters[name] = {name, policy, [](const RuleVisitor&) { return true; }};
    }
    for (const auto& entry : profile.rules) {
        PlannedAdapter& adapter = adapters[entry.first];
        adapter.name = entry.first;
        adapter.visitRules = [rules = &entry.second](const RuleVisitor& visit) {
            std::for_each(rules->begin(), rules->end(), visit);
            return true;
        };
    }
    std::vector<PlannedAdapter> ordered;
    ordered.reserve(adapters.size());
    for (auto& entry : adapters) {
        ordered.push_back(std::move(entry.second));
    }
    return ordered;
}

Plan planProfile(const FW::FWPROFILE& profile) {
    return planProfile(profile, mayHaveTunnel());
}

Plan planProfile(const FW::FWPROFILE& profile, bool mayHaveTunnel) {
    return planWith(mayHaveTunnel, Planner::Adapters::kPresent, profile);
}

Plan planOfAllAdapters(const FW::FWPROFILE& profile) {
    return planWith(mayHaveTunnel(), Planner::Adapters::kAll, profile);
}

Plan planTrial(const FW::FWPROFILE& profile, const std::optional<std::string>& client) {
    return planWith(mayHaveTunnel(),
                    Planner::Adapters::kPresent,
                    profile,
                    {client.has_value(), client.value_or("")});
}

}  // namespace zamofw
