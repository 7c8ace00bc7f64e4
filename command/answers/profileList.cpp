#include <json/value.h>

#include <ostream>
#include <set>

#include "command/answers/profileAnswers.h"
#include "command/answers/table.h"
#include "command/document/storedProfile.h"
#include "command/history/configuration.h"
#include "command/jsonLine.h"
#include "library/model/names.h"
#include "zamofirewall/controller.h"

namespace zamofw {
namespace {

struct ListedProfile {
    std::string name;
    bool inForce = false;
    std::size_t adapters = 0;
    std::size_t rules = 0;
};

ListedProfile listedProfile(const std::string& name, const std::string& inForce) {
    const FW::FWPROFILE profile = profileOf(readTarget({name, {}}));
    ListedProfile entry{name, name == inForce, 0, 0};
    std::set<std::string> adapters;
    for (const auto& [adapter, policy] : profile.adapterPolicyMap) {
        if (adapter != FW::kGlobalAdapter) {
            adapters.insert(adapter);
        }
    }
    for (const auto& [adapter, rules] : profile.rules) {
        entry.rules += rules.size();
        if (!rules.empty()) {
            adapters.insert(adapter);
        }
    }
    entry.adapters = adapters.size();
    return entry;
}

// A profile that cannot be read must not hide the others.
std::vector<ListedProfile> readableProfiles(const Console& console) {
    std::string inForce;
    (void)FW::ZAMOFW().fwProfileConfigGet(inForce);
    std::vector<ListedProfile> profiles;
    for (const std::string& name : storedProfileNames()) {
        try {
            profiles.push_back(listedProfile(name, inForce));
        } catch (const Failure& failure) {
            console.err << failure.what() << "\n";
        }
    }
    for (const std::string& fault : unnamedDocuments()) {
        console.err << fault << "\n";
    }
    return profiles;
}

}  // namespace

Status profileList(const Console& console) {
    requireStoreDirectory();
    Json::Value json(Json::objectValue);
    json["profiles"] = Json::Value(Json::arrayValue);
    std::vector<Row> rows;
    for (const ListedProfile& profile : readableProfiles(console)) {
        Json::Value entry(Json::objectValue);
        entry["name"] = profile.name;
        entry["in_force"] = profile.inForce;
        entry["adapters"] = static_cast<Json::UInt64>(profile.adapters);
        entry["rules"] = static_cast<Json::UInt64>(profile.rules);
        json["profiles"].append(entry);
        rows.push_back({profile.name,
                        profile.inForce ? "in force" : "-",
                        std::to_string(profile.adapters),
                        std::to_string(profile.rules)});
    }
    if (console.json) {
        console.out << jsonLine(json) << "\n";
    } else {
        printTable(console, {"PROFILE", "IN FORCE", "ADAPTERS", "RULES"}, rows);
    }
    return Status::kDone;
}

}  // namespace zamofw
