#include "command/apply/startNote.h"

#include <json/reader.h>
#include <json/value.h>
#include <json/writer.h>
#include <unistd.h>

#include "command/apply/bootTime.h"
#include "command/history/privateDirectory.h"

namespace zamofw {
namespace {

constexpr const char* kFile = "start.json";
constexpr const char* kPath = "/var/lib/zamofw/start.json";

}  // namespace

void writeStartNote(const StartNote& note) {
    Json::Value json;
    json["boot"] = bootId();
    json["time"] = note.time;
    json["last_rules"] = note.hasLastRules;
    json["cause"] = note.cause;
    const posix::Descriptor directory = openStateDirectory();
    if (directory) {
        (void)replacePrivateFile(directory, kFile, Json::FastWriter().write(json));
    }
}

std::optional<StartNote> readStartNote() try {
    if (access(kPath, R_OK) != 0) {
        return std::nullopt;
    }
    const posix::Descriptor directory = openStateDirectory();
    const std::optional<std::string> text =
        directory ? readPrivateFile(directory, kFile) : std::nullopt;
    Json::Value json;
    if (!text || !Json::Reader().parse(*text, json) || json["boot"].asString() != bootId()) {
        return std::nullopt;
    }
    return StartNote{
        json["time"].asString(), json["last_rules"].asBool(), json["cause"].asString()};
} catch (const Json::Exception&) {
    return std::nullopt;
}

void dropStartNote() {
    (void)unlink(kPath);
}

}  // namespace zamofw
