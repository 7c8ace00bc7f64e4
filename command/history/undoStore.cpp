#include "command/history/undoStore.h"

#include <json/reader.h>
#include <json/writer.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "command/console.h"
#include "command/document/textFile.h"
#include "command/history/configuration.h"
#include "command/history/privateDirectory.h"
#include "command/words/values.h"

namespace zamofw {
namespace {

constexpr std::size_t kMostSnapshots = 20;
constexpr const char* kUndoPath = "/var/lib/zamofw/undo/";
constexpr const char* kExtension = ".json";
constexpr std::uint64_t kLargestNumber = 1000000000000;

posix::Descriptor openStore() {
    return openPrivateDirectory("/var/lib", {"zamofw", "undo"});
}

std::string fileName(std::uint64_t number) {
    return std::to_string(number) + kExtension;
}

// In ascending order.
std::vector<std::uint64_t> numbers() {
    std::vector<std::uint64_t> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(kUndoPath, error);
         !error && entry != std::filesystem::directory_iterator();
         entry.increment(error)) {
        const auto number = numberFromText(entry->path().stem(), kLargestNumber);
        if (number && entry->path().extension() == kExtension) {
            found.push_back(*number);
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::string textOf(const Snapshot& snapshot) {
    Json::Value json(Json::objectValue);
    json["time"] = snapshot.time;
    json["command"] = Json::Value(Json::arrayValue);
    for (const std::string& word : snapshot.command) {
        json["command"].append(word);
    }
    json["configuration"] = snapshot.configuration;
    return Json::FastWriter().write(json);
}

bool parse(const std::string& text, Snapshot& snapshot) {
    try {
        Json::Value json;
        if (!Json::Reader().parse(text, json) || !json["time"].isString() ||
            !json["configuration"].isObject()) {
            return false;
        }
        snapshot.time = json["time"].asString();
        for (const Json::Value& word : json["command"]) {
            snapshot.command.push_back(word.asString());
        }
        snapshot.configuration = json["configuration"];
        return true;
    } catch (const Json::Exception&) {
        return false;
    }
}

}  // namespace

bool keepSnapshot(Snapshot& snapshot) {
    const posix::Descriptor store = openStore();
    if (!store) {
        return false;
    }
    const std::vector<std::uint64_t> kept = numbers();
    snapshot.number = kept.empty() ? 1 : kept.back() + 1;
    // It must be there when a power cut ends the change, whose files are on the disk one by one.
    return replacePrivateFile(store, fileName(snapshot.number), textOf(snapshot), OnDisk::kNow);
}

void dropOldSnapshots() {
    const std::vector<std::uint64_t> kept = numbers();
    for (std::size_t i = 0; i + kMostSnapshots < kept.size(); ++i) {
        dropSnapshot(kept[i]);
    }
}

void dropSnapshot(std::uint64_t number) {
    const posix::Descriptor store = openStore();
    if (store) {
        (void)unlinkat(store.get(), fileName(number).c_str(), 0);
    }
}

std::optional<Snapshot> newestSnapshot() {
    const std::vector<std::uint64_t> kept = numbers();
    if (kept.empty()) {
        return std::nullopt;
    }
    const posix::Descriptor store = openStore();
    if (!store) {
        failed(std::string(kUndoPath) + " cannot be used: " + std::strerror(errno),
               "it must be a directory that root alone may write to");
    }
    Snapshot snapshot;
    snapshot.number = kept.back();
    const std::string path = kUndoPath + fileName(snapshot.number);
    if (!parse(readText(path), snapshot)) {
        failed(path + " does not hold what was there before a change",
               "remove the file to go on with the change before it");
    }
    return snapshot;
}

}  // namespace zamofw
