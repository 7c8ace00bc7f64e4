// An exported configuration:
//
//   { "config_profiles": { "1700000000.json": profile, ... },
//     "config_firewall_settings": { "profile": text, "status": flag, ... }, "config_version": 1 }

#include <map>

#include "command/document/check.h"
#include "command/document/findingList.h"
#include "command/document/memberCheck.h"
#include "command/document/profileCheck.h"
#include "command/document/textCheck.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

// The longest file name, less the longest of the endings that the store puts behind it.
constexpr std::size_t kLongestKey = 255 - 5;

bool endsIn(std::string_view text, std::string_view end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool isSettingsFile(std::string_view key) {
    return std::string(FW::kProfileDirectory).append(key) == FW::kSettingsFile;
}

// Why the store would not find a profile in a file of this name; null when it would.
const char* badKeyReason(std::string_view key) {
    if (key.find('/') != std::string::npos) {
        return "has a slash in it, and the import leaves it out";
    }
    if (key.size() > kLongestKey) {
        return "is too long for a file name";
    }
    if (!endsIn(key, FW::kProfileExtension) || key[0] == '.') {
        return "is not of the form NAME.json, so that the store would not see the file";
    }
    return isSettingsFile(key) ? "is the name of the settings file, which it would replace"
                               : nullptr;
}

void checkKey(const Member& profile, const Location& where, FindingList& findings) {
    const std::string_view key = profile.name;
    if (hasControl(key)) {
        findings.error(profile.nameOffset,
                       where,
                       {"blank-in-text",
                        "the file name " + quoted(key) + " has a control character in it",
                        "Use a name such as \"1700000000.json\"."});
        return;
    }
    const char* const reason = badKeyReason(key);
    if (reason != nullptr) {
        findings.error(profile.nameOffset,
                       where,
                       {"missing-name",
                        "the file name " + quoted(key) + ' ' + reason,
                        "Use a name such as \"1700000000.json\"."});
    }
}

// The file of each profile name; the first file of a name is the one that the store finds.
std::map<std::string_view, std::string_view> filesByName(
    const std::vector<const Member*>& profiles) {
    std::map<std::string_view, std::string_view> files;
    for (const Member* profile : profiles) {
        if (const Node* const name = profileNameIn(profile->value)) {
            const auto [known, isNew] = files.emplace(name->text(), profile->name);
            if (!isNew && profile->name < known->second) {
                known->second = profile->name;
            }
        }
    }
    return files;
}

void checkExportedProfiles(const Node& node,
                           const Location& where,
                           const CheckContext& context,
                           FindingList& findings) {
    const std::vector<const Member*> profiles = checkFreeMembers(node, where, findings);
    const std::map<std::string_view, std::string_view> files = filesByName(profiles);
    for (const Member* profile : profiles) {
        const Location place(where, profile->name);
        checkKey(*profile, place, findings);
        checkProfileValue(profile->value, place, context, findings);
        const Node* const name = profileNameIn(profile->value);
        if (name != nullptr && files.at(name->text()) != profile->name) {
            findings.warning(name->offset,
                             {place, profileTable()[profileField::kName].name},
                             duplicateName(name->text(), files.at(name->text())));
        }
    }
}

// A firewall that is on needs the profile that its settings name.
void checkProfileInForce(const Members& settings,
                         const Location& where,
                         const Node& profiles,
                         FindingList& findings) {
    const Node* const inForce = settings.find(settingsField::kProfile);
    if (inForce == nullptr || !settings.flag(settingsField::kStatus)) {
        return;
    }
    for (const Member& profile : profiles.members()) {
        const Node* const name = profileNameIn(profile.value);
        if (name != nullptr && name->text() == inForce->text()) {
            return;
        }
    }
    findings.error(inForce->offset,
                   {where, settingsTable()[settingsField::kProfile].name},
                   {"missing-values",
                    "the firewall is on with the profile " + quoted(inForce->text()) +
                        ", which this export does not have",
                    "Name a profile of `config_profiles`, or set `status` to false."});
}

void checkExportValue(const Node& root, const CheckContext& context, FindingList& findings) {
    const Location top;
    if (!checkType(root, top, "an export", MemberType::kObject, findings)) {
        return;
    }
    const Members members = checkMembers(root, top, exportTable(), "an export", true, findings);
    const Node* const profiles = members.find(exportField::kProfiles);
    if (profiles != nullptr) {
        const Location where(top, exportTable()[exportField::kProfiles].name);
        checkExportedProfiles(*profiles, where, context, findings);
    } else if (members.isSound(exportField::kProfiles)) {
        findings.error(root.offset,
                       top,
                       {"missing-values",
                        "the export has no `config_profiles`, so that an import would leave no "
                        "profile at all",
                        "Is this an export? `zamofw export` writes one."});
    }
    const Node* const settings = members.find(exportField::kSettings);
    if (settings != nullptr) {
        const Location where(top, exportTable()[exportField::kSettings].name);
        const Members values =
            checkMembers(*settings, where, settingsTable(), "the settings", false, findings);
        if (profiles != nullptr) {
            checkProfileInForce(values, where, *profiles, findings);
        }
    }
}

}  // namespace

Findings checkExport(const Document& document, const CheckContext& context) {
    FindingList findings(document);
    if (document.fault) {
        findings.error(document.fault->offset, {}, syntaxFault(*document.fault));
    } else {
        checkExportValue(document.root, context, findings);
    }
    return findings.take();
}

}  // namespace zamofw
