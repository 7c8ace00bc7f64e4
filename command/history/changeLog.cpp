#include "command/history/changeLog.h"

#include <fcntl.h>
#include <json/reader.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <deque>
#include <fstream>

#include "command/history/privateDirectory.h"
#include "command/jsonLine.h"
#include "command/systemLog.h"
#include "command/words/quoting.h"
#include "posix/file.h"

namespace zamofw {
namespace {

constexpr const char* kBase = "/var/log";
constexpr const char* kDirectory = "zamofw";
constexpr const char* kFile = "changes.jsonl";
constexpr const char* kPath = "/var/log/zamofw/changes.jsonl";

Json::Value jsonOf(const LoggedChange& change) {
    Json::Value json(Json::objectValue);
    json["time"] = change.time;
    json["user"] = change.caller.user;
    json["from"] = change.caller.from ? Json::Value(*change.caller.from) : Json::Value();
    json["command"] = Json::Value(Json::arrayValue);
    for (const std::string& word : change.command) {
        json["command"].append(word);
    }
    json["result"] = static_cast<int>(change.result);
    json["before"] = change.before;
    json["after"] = change.after;
    json["milliseconds"] = Json::Int64{change.milliseconds};
    return json;
}

std::string lineOf(const LoggedChange& change) {
    return jsonLine(jsonOf(change)) + "\n";
}

// One write, so that lines of several commands do not mix.
bool append(const std::string& line) {
    const posix::Descriptor directory = openPrivateDirectory(kBase, {kDirectory});
    if (!directory) {
        return false;
    }
    const posix::Descriptor file = openPrivateFile(directory, kFile, O_WRONLY | O_APPEND | O_CREAT);
    return file && posix::writeWhole(file.get(), line);
}

bool isEntry(const Json::Value& json) {
    return json.isObject() && json["time"].isString() && json["user"].isString() &&
           json["command"].isArray() && json["result"].isInt();
}

bool parseEntry(const std::string& line, Json::Value& entry) {
    try {
        return Json::Reader().parse(line, entry) && isEntry(entry);
    } catch (const Json::Exception&) {
        return false;
    }
}

}  // namespace

std::string timeText(std::time_t time) {
    std::tm parts = {};
    std::array<char, 32> text = {};
    (void)gmtime_r(&time, &parts);
    (void)std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text.data();
}

std::string currentTime() {
    return timeText(std::time(nullptr));
}

bool logChange(const LoggedChange& change) {
    logUnseen(LOG_NOTICE,
              shown(change.caller.user) +
                  (change.caller.from ? " from " + shown(*change.caller.from) : "") + ": zamofw " +
                  shellQuoted(change.command) + " (exit status " +
                  std::to_string(static_cast<int>(change.result)) + ")");
    return append(lineOf(change));
}

std::vector<Json::Value> loggedChanges(std::optional<std::size_t> count) {
    if (access(kPath, R_OK) != 0) {
        if (errno == ENOENT) {
            return {};
        }
        if (errno == EACCES) {
            requireRoot("reading the log of changes");
        }
        failed(std::string(kPath) + " cannot be read: " + std::strerror(errno));
    }
    std::deque<std::string> lines;
    std::ifstream file(kPath);
    for (std::string line; std::getline(file, line);) {
        lines.push_back(std::move(line));
        if (count && lines.size() > *count) {
            lines.pop_front();
        }
    }
    std::vector<Json::Value> entries;
    for (const std::string& line : lines) {
        Json::Value entry;
        if (parseEntry(line, entry)) {
            entries.push_back(std::move(entry));
        }
    }
    return entries;
}

}  // namespace zamofw
