#include "command/answers/fileDamage.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <optional>
#include <thread>

#include "command/apply/kernelModules.h"
#include "command/apply/lockHolders.h"
#include "command/apply/programs.h"
#include "command/console.h"
#include "command/document/profileRecord.h"
#include "command/document/storedProfile.h"
#include "command/document/target.h"
#include "command/document/textFile.h"
#include "command/words/quoting.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLockDirectory = "/var/lock/firewall";
constexpr const char* kNetworkTool = "/usr/zamo/sbin/zamonetdtool";

std::vector<std::string> filesIn(const std::string& directory) {
    std::vector<std::string> paths;
    std::error_code error;
    for (fs::directory_iterator entry(directory, error);
         !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        paths.push_back(entry->path());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

Damage badFile(const std::string& message, const std::string& remedy) {
    return {"bad-file", message, remedy};
}

// A file that could not be opened, or that the library would not take.
std::optional<Damage> faultOf(const std::string& path) try {
    const Document document = readDocument(readText(path), path);
    (void)profileRecord(document);
    if (!nameIn(document)) {
        return badFile(path + " has no name, so that it is no profile",
                       "give it the member `name`, or delete it");
    }
    return std::nullopt;
} catch (const Failure& failure) {
    return badFile(failure.what(), "mend the file; `zamofw check --all` names every fault in it");
}

void addSettings(Damages& damages) {
    std::string name;
    try {
        name = profileNameInForce();
    } catch (const Failure& failure) {
        damages.push_back(badFile(failure.what(), failure.remedy()));
        return;
    }
    if (!findStored(name)) {
        damages.push_back({"no-default",
                           "the settings choose the profile " + shown(name) +
                               ", and none of this name is stored: a reload would fail",
                           "make it with `zamofw profile create " + shellQuoted({name}) +
                               "`, or choose another one with `zamofw profile use NAME`"});
    }
}

bool isLeftOver(const std::string& path) {
    struct stat file = {};
    return lstat(path.c_str(), &file) == 0 && S_ISREG(file.st_mode) && file.st_uid == geteuid() &&
           !isOpenElsewhere(path);
}

// "iptables_serv_mod_list.x7Ab2Q", as a replaced file is called before it has its name.
bool isReplacement(const std::string& path) {
    const std::string start = std::string(FW::kModuleNoteFile) + ".";
    return boost::starts_with(path, start) && path.size() == start.size() + 6 &&
           std::all_of(path.begin() + static_cast<std::ptrdiff_t>(start.size()),
                       path.end(),
                       [](unsigned char byte) { return std::isalnum(byte) != 0; });
}

std::vector<std::string> temporaryCandidates() {
    std::vector<std::string> paths;
    for (const char* const directory :
         {FW::kProfileDirectory, "/var/lib/zamofw", "/var/lib/zamofw/undo", "/var/log/zamofw"}) {
        for (const std::string& path : filesIn(directory)) {
            if (boost::ends_with(path, ".tmp")) {
                paths.push_back(path);
            }
        }
    }
    for (const std::string& path : filesIn("/tmp")) {
        if (isReplacement(path)) {
            paths.push_back(path);
        }
    }
    return paths;
}

bool isFresh(const std::string& path) {
    struct stat file = {};
    return lstat(path.c_str(), &file) == 0 && file.st_mtime + 5 > std::time(nullptr);
}

void waitForAMoment() {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
}

}  // namespace

Damages toolDamages() {
    Damages damages;
    std::vector<std::string> programs;
    for (const int family : {4, 6}) {
        programs.insert(programs.end(),
                        {tool(family), restoreProgram(family), saveProgram(family)});
    }
    programs.emplace_back(kNetworkTool);
    for (const std::string& program : programs) {
        if (access(program.c_str(), X_OK) != 0) {
            const bool isOurs = program == kNetworkTool;
            damages.push_back(
                {"tool-missing",
                 program + " cannot be run: " + std::strerror(errno),
                 isOurs ? "install the package again" : "install the package iptables"});
        }
    }
    return damages;
}

Damages storedDamages() {
    Damages damages;
    try {
        for (const std::string& path : profileFiles()) {
            if (std::optional<Damage> fault = faultOf(path)) {
                damages.push_back(std::move(*fault));
            }
        }
        addSettings(damages);
    } catch (const Failure& failure) {
        damages.push_back(badFile(failure.what(), failure.remedy()));
    }
    try {
        (void)firewallModules();
    } catch (const Failure& failure) {
        damages.push_back(badFile(failure.what(), failure.remedy()));
    }
    return damages;
}

std::vector<std::string> temporaryFiles() {
    std::vector<std::string> paths = temporaryCandidates();
    // A write that is under way gives its file another name within a moment.
    if (std::any_of(paths.begin(), paths.end(), isFresh)) {
        waitForAMoment();
    }
    paths.erase(
        std::remove_if(
            paths.begin(), paths.end(), [](const std::string& path) { return !isLeftOver(path); }),
        paths.end());
    return paths;
}

std::vector<std::string> trialCopies(long age) {
    std::vector<std::string> names;
    for (const std::string& path : filesIn(FW::kProfileDirectory)) {
        struct stat file = {};
        std::string text;
        if (!boost::ends_with(path, FW::kProfileExtension) || stat(path.c_str(), &file) != 0 ||
            !S_ISREG(file.st_mode) || file.st_mtime + age > std::time(nullptr) ||
            !readTextQuietly(path, text)) {
            continue;
        }
        const std::optional<std::string> name = nameIn(readDocument(std::move(text), path));
        if (name && isTrialCopy(*name)) {
            names.push_back(*name);
        }
    }
    return names;
}

Damages lockDamages() {
    std::vector<std::string> paths = filesIn(kLockDirectory);
    paths.emplace_back(kXtablesLock);
    Damages damages;
    for (const std::string& path : paths) {
        constexpr int kLooks = 10;
        std::string holders = lockHolders(path);
        for (int look = 1; look < kLooks && !holders.empty(); ++look) {
            waitForAMoment();
            holders = lockHolders(path);
        }
        if (!holders.empty()) {
            damages.push_back(
                {"lock-held",
                 "the lock " + path + " is not free" + holders + ": who needs it waits",
                 "wait until it ends, or end it if it hangs"});
        }
    }
    return damages;
}

}  // namespace zamofw
