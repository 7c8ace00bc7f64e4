#include "command/document/storedProfile.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>
#include <utility>

#include "command/console.h"
#include "command/document/profileRecord.h"
#include "command/document/textFile.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

bool isProfileFile(const std::filesystem::directory_entry& entry) {
    std::error_code error;
    const std::string name = entry.path().filename();
    // The settings lie in the same directory.
    return name.front() != '.' && entry.path().extension() == FW::kProfileExtension &&
           entry.path() != FW::kSettingsFile && entry.is_regular_file(error);
}

// Whether reading the document is worth while: a name without escapes stands in it as it is.
bool mayHold(const std::string& text, const std::string& name) {
    return text.find(name) != std::string::npos || text.find('\\') != std::string::npos;
}

}  // namespace

bool isTrialCopy(const std::string& profile) {
    return profile.rfind(".test_", 0) == 0;
}

void missingStoreDirectory() {
    failed(std::string("there is no directory ") + FW::kProfileDirectory,
           std::string("make it with `mkdir -p ") + FW::kProfileDirectory +
               "`, or install the package again");
}

std::vector<std::string> profileFiles() {
    std::vector<std::string> paths;
    std::error_code error;
    std::filesystem::directory_iterator entry(FW::kProfileDirectory, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        if (isProfileFile(*entry)) {
            paths.push_back(entry->path());
        }
    }
    if (error == std::errc::no_such_file_or_directory) {
        missingStoreDirectory();
    }
    if (error == std::errc::permission_denied) {
        throw Failure(Status::kNotPermitted,
                      "cannot read " + std::string(FW::kProfileDirectory) + ": " + error.message(),
                      "run it as root, for instance with sudo");
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::optional<Document> findStored(const std::string& name) {
    std::optional<Document> broken;
    std::string unreadable;
    for (const std::string& path : profileFiles()) {
        std::string text;
        if (!readTextQuietly(path, text)) {
            unreadable = errno == EACCES && unreadable.empty() ? path : unreadable;
            continue;
        }
        if (!mayHold(text, name)) {
            continue;
        }
        Document document = readDocument(std::move(text), path);
        if (nameIn(document) != name) {
            continue;
        }
        if (isReadByLibrary(document)) {
            return document;
        }
        broken = broken ? std::move(broken) : std::move(document);
    }
    if (!broken && !unreadable.empty()) {
        (void)readText(unreadable);  // says why it cannot be read
    }
    return broken;
}

std::vector<std::string> storedProfileNames() {
    std::set<std::string> names;
    for (const std::string& path : profileFiles()) {
        std::string text;
        if (readTextQuietly(path, text)) {
            const std::optional<std::string> name = nameIn(readDocument(std::move(text), path));
            if (name && !isTrialCopy(*name)) {
                names.insert(*name);
            }
        }
    }
    return {names.begin(), names.end()};
}

std::vector<std::string> unnamedDocuments() {
    std::vector<std::string> faults;
    for (const std::string& path : profileFiles()) {
        std::string text;
        if (readTextQuietly(path, text)) {
            const Document document = readDocument(std::move(text), path);
            if (document.fault && !nameIn(document)) {
                faults.push_back(faultText(document));
            }
        }
    }
    return faults;
}

}  // namespace zamofw
