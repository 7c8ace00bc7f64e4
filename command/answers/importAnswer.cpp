#include <json/value.h>

#include <boost/algorithm/string/join.hpp>
#include <map>
#include <ostream>

#include "command/answers/assertAnswer.h"
#include "command/answers/changeAnswer.h"
#include "command/answers/configurationExchange.h"
#include "command/answers/meaningAnswer.h"
#include "command/answers/profileStore.h"
#include "command/answers/systemNames.h"
#include "command/answers/table.h"
#include "command/answers/transferAnswers.h"
#include "command/document/check.h"
#include "command/document/textFile.h"
#include "command/history/change.h"
#include "command/history/configuration.h"
#include "command/jsonLine.h"
#include "command/words/quoting.h"

namespace zamofw {
namespace {

using Names = std::vector<std::string>;

struct Exchange {
    Names added;
    Names replaced;
    Names deleted;
    Names settings;
    std::size_t lostRules = 0;  // of profiles that are replaced or deleted

    bool isEmpty() const {
        return added.empty() && replaced.empty() && deleted.empty() && settings.empty();
    }
};

// By name. Of two files with the same name the first one is the profile.
std::map<std::string, Json::Value> profilesIn(const Json::Value& configuration) {
    std::map<std::string, Json::Value> profiles;
    for (const Json::Value& profile : configuration[kExportedProfiles]) {
        if (profile.isObject() && profile["name"].isString()) {
            profiles.emplace(profile["name"].asString(), profile);
        }
    }
    return profiles;
}

Exchange exchangeBetween(const Json::Value& from, const Json::Value& to) {
    Exchange found;
    const auto before = profilesIn(from);
    const auto after = profilesIn(to);
    for (const auto& [name, profile] : after) {
        const auto old = before.find(name);
        if (old == before.end()) {
            found.added.push_back(name);
        } else if (exportText(old->second) != exportText(profile)) {
            found.replaced.push_back(name);
            found.lostRules += ruleCount(old->second);
        }
    }
    for (const auto& [name, profile] : before) {
        if (after.count(name) == 0) {
            found.deleted.push_back(name);
            found.lostRules += ruleCount(profile);
        }
    }
    const Json::Value& settings = to[kExportedSettings];
    for (const std::string& name : settings.getMemberNames()) {
        if (exportText(settings[name]) != exportText(from[kExportedSettings][name])) {
            found.settings.push_back(name);
        }
    }
    return found;
}

// What an import makes of the stored configuration: settings that the document does not have stay.
Json::Value merged(const Json::Value& stored, const Json::Value& imported) {
    Json::Value result(Json::objectValue);
    result["config_version"] = 1;
    result[kExportedProfiles] = imported[kExportedProfiles].isObject()
                                    ? imported[kExportedProfiles]
                                    : Json::Value(Json::objectValue);
    result[kExportedSettings] = stored[kExportedSettings];
    const Json::Value& settings = imported[kExportedSettings];
    if (settings.isObject()) {
        for (const std::string& name : settings.getMemberNames()) {
            result[kExportedSettings][name] = settings[name];
        }
    }
    return result;
}

// The profile that an import would have in force must not break what is asserted.
void checkIntents(const Json::Value& configuration) {
    if (const std::optional<FW::FWPROFILE> profile = profileInForceOf(configuration)) {
        refuseBrokenIntents([&profile] { return *profile; });
    }
}

// Which packets get another verdict; null when the profiles in force cannot be compared.
Json::Value changesJson(const Json::Value& stored, const Json::Value& wanted) {
    const std::optional<FW::FWPROFILE> before = profileInForceOf(stored);
    const std::optional<FW::FWPROFILE> after = profileInForceOf(wanted);
    return before && after ? meaningJson(*before, *after) : Json::Value();
}

Json::Value jsonOf(const Names& names) {
    Json::Value json(Json::arrayValue);
    for (const std::string& name : names) {
        json.append(name);
    }
    return json;
}

void showPlan(const Console& console,
              const Exchange& found,
              const Json::Value& stored,
              const Json::Value& wanted) {
    if (console.json) {
        Json::Value json(Json::objectValue);
        json["added"] = jsonOf(found.added);
        json["replaced"] = jsonOf(found.replaced);
        json["deleted"] = jsonOf(found.deleted);
        json["settings"] = jsonOf(found.settings);
        json["changes"] = changesJson(stored, wanted);
        console.out << jsonLine(json) << "\n";
        return;
    }
    std::vector<Row> rows;
    const auto add = [&rows](const char* what, const Names& names) {
        for (const std::string& name : names) {
            rows.push_back({what, name});
        }
    };
    add("added", found.added);
    add("replaced", found.replaced);
    add("deleted", found.deleted);
    add("setting", found.settings);
    if (!rows.empty()) {
        printTable(console, {"CHANGE", "PROFILE OR SETTING"}, rows);
        showExchange(console, stored, wanted);
    }
}

std::string lossText(const Exchange& found) {
    Names gone = found.replaced;
    gone.insert(gone.end(), found.deleted.begin(), found.deleted.end());
    return "the import replaces or deletes " + boost::algorithm::join(gone, ", ") + " with " +
           counted(found.lostRules, "rule") + "; go on?";
}

}  // namespace

Status importAnswer(const Console& console,
                    const std::vector<std::string>& call,
                    const ImportRequest& request) {
    if (!request.planOnly) {
        requireRoot("importing a configuration");
    }
    const Document document = readDocument(readText(request.file), request.file);
    const CheckContext context = systemCheckContext();
    if (!isAccepted(console, checkExport(document, context), request.force)) {
        return request.planOnly ? Status::kNo : refusedChange(console);
    }
    const Json::Value imported = jsonOfDocument(document);
    const Json::Value stored = readableConfiguration();
    const Json::Value wanted = merged(stored, imported);
    const Exchange found = exchangeBetween(stored, wanted);
    if (request.planOnly) {
        showPlan(console, found, stored, wanted);
        return found.isEmpty() ? Status::kDone : Status::kNo;
    }
    if (found.isEmpty()) {
        answerChange(console, false, "nothing to change: all of it is stored like this");
        return Status::kDone;
    }
    if (!request.force) {
        checkIntents(wanted);
    }
    showExchange(console, stored, wanted);
    if (found.lostRules > 0 && !console.confirm(lossText(found))) {
        return refusedChange(console);
    }
    return recordedChange(call, [&] {
        exchangeConfiguration(console, wanted, Errors::kKnown);
        answerChange(console,
                     true,
                     "imported: " + counted(found.added.size(), "profile") + " added, " +
                         std::to_string(found.replaced.size()) + " replaced, " +
                         std::to_string(found.deleted.size()) + " deleted");
        return Status::kDone;
    });
}

}  // namespace zamofw
