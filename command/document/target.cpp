#include "command/document/target.h"

#include <unistd.h>

#include <exception>
#include <filesystem>
#include <utility>

#include "command/console.h"
#include "command/document/profileRecord.h"
#include "command/document/storedProfile.h"
#include "command/document/textFile.h"
#include "command/words/quoting.h"
#include "command/words/suggestion.h"
#include "library/model/names.h"
#include "zamofirewall/controller.h"

namespace zamofw {
namespace {

[[noreturn]] void settingsUnreadable() {
    const std::string what =
        "the profile in force is unknown: cannot read " + std::string(FW::kSettingsFile);
    if (geteuid() != 0) {
        throw Failure(Status::kNotPermitted, what, "run it as root, or name a profile");
    }
    failed(what, "mend the file, or choose a profile with `zamofw profile use NAME`");
}

Target stored(const std::string& name) {
    std::optional<Document> document = findStored(name);
    if (!document) {
        unknownProfile(name);
    }
    return {std::move(*document), name, true};
}

[[noreturn]] void inForceIsMissing(const std::string& name) {
    // A document that cannot be read may be the one.
    const std::vector<std::string> damages = unnamedDocuments();
    if (!damages.empty()) {
        failed("the profile in force, " + shown(name) +
                   ", is not found, and a profile has faults:\n" + damages.front(),
               "mend the file, or take the last change back with `zamofw undo`");
    }
    failed("the profile in force, " + shown(name) + ", is not stored",
           "make it with `zamofw profile create " + shellQuoted({name}) +
               "`, or choose another one with `zamofw profile use NAME`");
}

Target fromFile(const std::string& path) {
    Document document = readDocument(readText(path), path);
    std::string name = nameIn(document).value_or(path);
    return {std::move(document), std::move(name), false};
}

}  // namespace

std::string profileNameInForce() {
    std::string name;
    try {
        if (!FW::ZAMOFW().fwProfileConfigGet(name)) {
            settingsUnreadable();
        }
    } catch (const Failure&) {
        throw;
    } catch (const std::exception&) {
        // The lock file cannot be opened.
        settingsUnreadable();
    }
    return name;
}

void unknownProfile(const std::string& name) {
    const std::vector<std::string> names = storedProfileNames();
    const std::string near = suggestion(name, names);
    std::string remedy = "`zamofw profile list` shows the names";
    std::error_code error;
    if (std::filesystem::is_regular_file(name, error)) {
        remedy = "for the file of that name write ./" + name;
    } else if (names.empty()) {
        remedy = "none is stored: make one with `zamofw profile create NAME`";
    }
    wrongUse("there is no profile " + shown(name) + (near.empty() ? "" : ": " + near), remedy);
}

bool isPath(const std::string& word) {
    return word == kStandardStream || word.find('/') != std::string::npos;
}

Target readTarget(const TargetWords& words) {
    if (words.profile && words.file) {
        wrongUse("both a profile and --file are given: `" + *words.profile + "` and `" +
                     *words.file + "`",
                 "leave one of them out");
    }
    if (words.file) {
        return fromFile(*words.file);
    }
    if (!words.profile) {
        return targetInForce(profileNameInForce());
    }
    return isPath(*words.profile) ? fromFile(*words.profile) : stored(*words.profile);
}

Target targetInForce(const std::string& name) {
    std::optional<Document> document = findStored(name);
    if (!document) {
        inForceIsMissing(name);
    }
    return {std::move(*document), name, true};
}

FW::FWPROFILE profileOf(const Target& target) {
    return profileRecord(target.document);
}

}  // namespace zamofw
