#include "command/answers/profileStore.h"

#include <json/reader.h>
#include <json/writer.h>
#include <unistd.h>

#include <cstring>
#include <ctime>

#include "command/console.h"
#include "command/document/storedProfile.h"
#include "command/history/configuration.h"
#include "command/words/plainText.h"
#include "command/words/quoting.h"
#include "library/model/names.h"
#include "zamofirewall/lockedJson.h"
#include "zamofirewall/profile.h"
#include "zamofirewall/profileDatabase.h"

namespace zamofw {
namespace {

constexpr std::size_t kLongestName = 255;

// The library's own choice of a file name needs a profile that is there already. It draws one of
// the next hundred numbers, so that none of these can be drawn at the same time.
std::string newPath() {
    std::time_t number = std::time(nullptr) + 100;
    std::string path;
    do {
        path = FW::kProfileDirectory + std::to_string(number++) + FW::kProfileExtension;
    } while (access(path.c_str(), F_OK) == 0);
    return path;
}

}  // namespace

bool isStoredProfile(const std::string& name) {
    requireStoreDirectory();
    return !name.empty() && FW::ZAMOFW_JSON_DB().profileExist(name);
}

void requireStoredProfile(const std::string& name) {
    if (isPath(name)) {
        wrongUse(shown(name) + " is a file, and the name of a stored profile is needed",
                 "`zamofw profile list` shows the names");
    }
    if (!isStoredProfile(name) || isTrialCopy(name)) {
        unknownProfile(name);
    }
}

void requireFitName(const std::string& name) {
    const bool isFit = !name.empty() && name.size() <= kLongestName && !isPath(name) &&
                       name.front() != '-' && !isTrialCopy(name) && isPlainText(name);
    if (!isFit) {
        wrongUse(shown(name) + " cannot be the name of a profile",
                 "a name has no slash and no control character in it, does not begin with a dash "
                 "or with .test_, and has at most 255 bytes");
    }
}

void requireFreeName(const std::string& name) {
    requireFitName(name);
    if (isStoredProfile(name)) {
        wrongUse("there is a profile " + shown(name) + " already",
                 "choose another name; `zamofw profile set` replaces a profile");
    }
}

Json::Value jsonOfDocument(const Document& document) {
    Json::Value json;
    bool isRead = false;
    try {
        isRead = !document.fault &&
                 Json::Reader().parse(document.text, json, /*collectComments=*/false) &&
                 json.isObject();
    } catch (const Json::Exception&) {
        isRead = false;
    }
    if (!isRead) {
        failed(document.fault
                   ? faultText(document)
                   : placeText(document, document.root.offset) + ": this is no JSON object",
               "mend the document; `zamofw check` shows every fault");
    }
    return json;
}

std::string renamedDocument(const Document& document, const std::string& name) {
    Json::Value json = jsonOfDocument(document);
    json["name"] = name;
    return Json::StyledWriter().write(json);
}

FW::FWPROFILE readableProfile(const Target& target) {
    try {
        return profileOf(target);
    } catch (const Failure& failure) {
        throw Failure(Status::kNo, failure.what(), failure.remedy());
    }
}

std::string documentText(const FW::FWPROFILE& profile) {
    Json::Value json;
    FW::ZAMOFW_JSON_DB().profileToJson(profile, json);
    return Json::StyledWriter().write(json);
}

void storeDocument(const std::string& name, const std::string& text) {
    Json::Value json;
    std::string path = FW::ZAMOFW_JSON_DB().profilePathGet(name);
    path = path.empty() ? newPath() : path;
    if (!Json::Reader().parse(text, json) || !FW::jsonFileDump(json, path)) {
        failed("the profile " + shown(name) + " could not be written to " + path,
               "see that its disk is not full or mounted read-only");
    }
}

void storeProfile(const FW::FWPROFILE& profile) {
    if (!FW::ZAMOFW_PROFILE().profileSet(profile.name, profile)) {
        failed("the profile " + shown(profile.name) + " could not be stored in " +
                   FW::kProfileDirectory,
               "see that the directory exists and its disk is not full or mounted read-only");
    }
}

std::size_t ruleCount(const Json::Value& profile) {
    std::size_t count = 0;
    if (profile.isObject() && profile["rules"].isObject()) {
        for (const Json::Value& rules : profile["rules"]) {
            count += rules.isArray() ? rules.size() : 0;
        }
    }
    return count;
}

}  // namespace zamofw
