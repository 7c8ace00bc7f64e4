#include "command/apply/adapterState.h"

#include "command/console.h"
#include "command/plan/plan.h"
#include "library/model/names.h"
#include "zamofirewall/controller.h"

namespace zamofw {
namespace {

void addLines(const char* family, const std::vector<PlannedLine>& lines, AdapterState& state) {
    for (const PlannedLine& line : lines) {
        if (line.kind == LineKind::kDefault) {
            state[line.adapter].push_back(family + line.line);
        }
    }
}

}  // namespace

// The planner itself is asked, with a profile that has a default for every adapter.
AdapterState adapterState() {
    std::set<std::string> adapters;
    if (!FW::ZAMOFW().fwAdapterEnum(adapters)) {
        failed("the system does not tell its network interfaces",
               "the log lines above say why; see that /usr/zamo is complete");
    }
    adapters.insert({FW::kPppoeAdapter, FW::kVpnAdapter});
    adapters.erase(FW::kGlobalAdapter);
    FW::FWPROFILE probe;
    for (const std::string& adapter : adapters) {
        probe.adapterPolicyMap[adapter] = FW::FW_POLICY_DENY;
    }
    const Plan plan = planProfile(probe);
    AdapterState state;
    addLines("4 ", plan.v4, state);
    addLines("6 ", plan.v6, state);
    return state;
}

std::set<std::string> namedAdapters(const FW::FWPROFILE& profile) {
    std::set<std::string> adapters;
    for (const auto& [adapter, rules] : profile.rules) {
        adapters.insert(adapter);
    }
    for (const auto& [adapter, policy] : profile.adapterPolicyMap) {
        adapters.insert(adapter);
    }
    adapters.erase(FW::kGlobalAdapter);
    return adapters;
}

std::set<std::string> changedAdapters(const AdapterState& before,
                                      const AdapterState& after,
                                      const std::set<std::string>& adapters) {
    std::set<std::string> changed;
    for (const std::string& adapter : adapters) {
        const auto old = before.find(adapter);
        const auto now = after.find(adapter);
        const bool isSame = old == before.end() || now == after.end()
                                ? (old == before.end()) == (now == after.end())
                                : old->second == now->second;
        if (!isSame) {
            changed.insert(adapter);
        }
    }
    return changed;
}

}  // namespace zamofw
