#include "command/apply/lockHolders.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <memory>
#include <vector>

#include "command/startsWith.h"

namespace zamofw {
namespace {

std::string nameOf(const std::string& process) {
    std::ifstream file("/proc/" + process + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

std::vector<std::string> entriesOf(const std::string& directory) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(directory.c_str()), closedir);
    if (stream == nullptr) {
        return names;
    }
    while (const dirent* const entry = readdir(stream.get())) {
        names.emplace_back(entry->d_name);
    }
    return names;
}

// The numbers under which a process has this file open.
std::vector<std::string> openNumbers(const std::string& process, const struct stat& file) {
    std::vector<std::string> numbers;
    for (const std::string& number : entriesOf("/proc/" + process + "/fd")) {
        struct stat open = {};
        if (stat(("/proc/" + process + "/fd/" + number).c_str(), &open) == 0 &&
            open.st_ino == file.st_ino && open.st_dev == file.st_dev) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

// Whether an open file of the process bears a lock on this file. /proc/locks does not serve: it
// names the process that took the lock, and no process at all for some kinds of locks.
bool holdsLock(const std::string& process, const struct stat& file) {
    for (const std::string& number : openNumbers(process, file)) {
        std::ifstream facts("/proc/" + process + "/fdinfo/" + number);
        for (std::string line; std::getline(facts, line);) {
            if (startsWith(line, "lock:")) {
                return true;
            }
        }
    }
    return false;
}

std::vector<std::string> otherProcesses() {
    std::vector<std::string> processes;
    for (const std::string& process : entriesOf("/proc")) {
        if (std::isdigit(static_cast<unsigned char>(process.front())) != 0 &&
            process != std::to_string(getpid())) {
            processes.push_back(process);
        }
    }
    return processes;
}

}  // namespace

std::string lockHolders(const std::string& path) {
    struct stat file = {};
    if (stat(path.c_str(), &file) != 0) {
        return "";
    }
    std::string holders;
    for (const std::string& process : otherProcesses()) {
        if (holdsLock(process, file)) {
            holders +=
                (holders.empty() ? " (held by " : ", ") + nameOf(process) + ", process " + process;
        }
    }
    return holders.empty() ? "" : holders + ")";
}

bool isOpenElsewhere(const std::string& path) {
    struct stat file = {};
    if (stat(path.c_str(), &file) != 0) {
        return false;
    }
    const std::vector<std::string> processes = otherProcesses();
    return std::any_of(processes.begin(), processes.end(), [&file](const std::string& process) {
        return !openNumbers(process, file).empty();
    });
}

}  // namespace zamofw
