#include "command/apply/trialState.h"

#include <fcntl.h>
#include <json/reader.h>
#include <json/writer.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <memory>
#include <sstream>

#include "command/apply/bootTime.h"
#include "command/console.h"
#include "command/history/privateDirectory.h"
#include "posix/descriptor.h"

namespace zamofw {
namespace {

constexpr std::size_t kLargestFile = 64U << 10U;
// For the execution lock and the xtables lock, which the timer may have to wait for.
constexpr std::int64_t kSecondsForLocks = 60;
constexpr std::int64_t kNanoseconds = 1'000'000'000;

[[noreturn]] void badFile(const std::string& why) {
    failed(std::string(kTrialFile) + " " + why,
           "`zamofw doctor --repair` ends the trial that it stands for");
}

[[noreturn]] void cannotRead(int error) {
    const std::string what = std::string("cannot read ") + kTrialFile + ": " + std::strerror(error);
    if (error == EACCES && geteuid() != 0) {
        throw Failure(Status::kNotPermitted, what, "run it as root, for instance with sudo");
    }
    badFile(std::string("cannot be read: ") + std::strerror(error));
}

// Without blocking, so that a pipe of that name holds nobody up.
posix::Descriptor openTrialFile() {
    posix::Descriptor file =
        posix::openFile(kTrialFile, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    if (!file) {
        if (errno != ENOENT && errno != ENOTDIR) {
            cannotRead(errno);
        }
        return {};
    }
    struct stat status = {};
    if (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        badFile("is no plain file");
    }
    if (status.st_uid != 0 || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        badFile("is not root's own");
    }
    return file;
}

std::string recordText(const posix::Descriptor& file) {
    std::string text(kLargestFile + 1, '\0');
    std::size_t size = 0;
    while (size < text.size()) {
        const ssize_t count = read(file.get(), &text[size], text.size() - size);
        if (count < 0 && errno != EINTR) {
            cannotRead(errno);
        }
        if (count == 0) {
            text.resize(size);
            return text;
        }
        size += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    badFile("is larger than 64 KiB");
}

std::optional<std::string> optionalText(const Json::Value& record, const char* member) {
    const Json::Value& value = record[member];
    return value.isNull() ? std::nullopt : std::optional(value.asString());
}

TrialState stateOf(const Json::Value& record) {
    TrialState trial;
    trial.id = record["id"].asString();
    trial.profile = record["profile"].asString();
    trial.file = optionalText(record, "file");
    trial.client = optionalText(record, "client");
    trial.connection = optionalText(record, "connection");
    trial.began = record["began"].asString();
    trial.until = record["until"].asString();
    trial.timer = record["timer"]["pid"].asInt();
    trial.timerStart = record["timer"]["start"].asUInt64();
    trial.boot = record["boot"].asString();
    trial.deadline = record["deadline"].asInt64();
    trial.beganTick = record["began_tick"].asUInt64();
    trial.record = record;
    return trial;
}

// "0000-00-00T00:00:00" with digits in place of the zeros.
bool hasForm(const std::string& text, const char* form) {
    for (std::size_t i = 0; form[i] != '\0'; ++i) {
        const bool isDigit =
            i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])) != 0;
        if (i >= text.size() || (form[i] == '0' ? !isDigit : text[i] != form[i])) {
            return false;
        }
    }
    return true;
}

int numberAt(const std::string& text, std::size_t begin, std::size_t length) {
    return std::atoi(text.substr(begin, length).c_str());
}

// Seconds east of Greenwich: "Z" or "+02:00".
std::optional<std::int64_t> offsetOf(const std::string& zone) {
    if (zone == "Z" || zone == "z") {
        return 0;
    }
    const bool isWest = zone.substr(0, 1) == "-";
    if (zone.size() != 6 || !hasForm(zone, isWest ? "-00:00" : "+00:00")) {
        return std::nullopt;
    }
    const std::int64_t seconds = numberAt(zone, 1, 2) * 3600 + numberAt(zone, 4, 2) * 60;
    return isWest ? -seconds : seconds;
}

}  // namespace

std::optional<TrialState> readTrial() {
    const posix::Descriptor file = openTrialFile();
    if (!file) {
        return std::nullopt;
    }
    const std::string text = recordText(file);
    Json::Value record;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    try {
        if (reader->parse(text.data(), text.data() + text.size(), &record, nullptr) &&
            record.isObject()) {
            return stateOf(record);
        }
    } catch (const Json::Exception&) {
    }
    badFile("is not the record of a trial");
}

bool isStale(const TrialState& trial) {
    const bool isOfThisBoot = trial.boot.empty() || trial.boot == bootId();
    if (!isOfThisBoot || trial.timer <= 0 || startOfProcess(trial.timer) != trial.timerStart) {
        return true;
    }
    if (trial.deadline > 0) {
        return nanosecondsSinceBoot() > trial.deadline + kSecondsForLocks * kNanoseconds;
    }
    // A record that does not say it is judged by the clock.
    const std::optional<std::int64_t> until = secondsOf(trial.until);
    return !until || *until + kSecondsForLocks < std::time(nullptr);
}

void writeTrial(const TrialState& trial) {
    Json::Value record;
    record["id"] = trial.id;
    record["profile"] = trial.profile;
    record["file"] = trial.file ? Json::Value(*trial.file) : Json::Value();
    record["client"] = trial.client ? Json::Value(*trial.client) : Json::Value();
    record["connection"] = trial.connection ? Json::Value(*trial.connection) : Json::Value();
    record["began"] = trial.began;
    record["until"] = trial.until;
    record["timer"]["pid"] = trial.timer;
    record["timer"]["start"] = Json::UInt64{trial.timerStart};
    record["boot"] = trial.boot;
    record["deadline"] = Json::Int64{trial.deadline};
    record["began_tick"] = Json::UInt64{trial.beganTick};
    const posix::Descriptor directory = openStateDirectory();
    if (!directory ||
        !replacePrivateFile(directory, "trial.json", Json::FastWriter().write(record))) {
        failed(std::string("cannot write ") + kTrialFile + ": " + std::strerror(errno),
               "see that /var/lib/zamofw/ belongs to root and its disk is not full or mounted "
               "read-only");
    }
}

std::string trialCopyName(const std::string& profile) {
    return ".test_" + profile;
}

void removeTrial() {
    if (unlink(kTrialFile) != 0 && errno != ENOENT && errno != ENOTDIR) {
        failed(std::string("cannot remove ") + kTrialFile + ": " + std::strerror(errno));
    }
}

std::optional<std::uint64_t> startOfProcess(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line);
    // The program's name may hold blanks and brackets; behind it come the state and 18 numbers.
    const std::size_t end = line.rfind(')');
    if (end == std::string::npos) {
        return std::nullopt;
    }
    constexpr int kNumbersBefore = 18;
    std::istringstream rest(line.substr(end + 1));
    std::string state;
    rest >> state;
    std::int64_t skipped = 0;
    for (int i = 0; i < kNumbersBefore; ++i) {
        rest >> skipped;
    }
    std::uint64_t start = 0;
    return rest >> start && state != "Z" && state != "X" ? std::optional(start) : std::nullopt;
}

std::optional<std::int64_t> secondsOf(const std::string& time) {
    constexpr const char* kForm = "0000-00-00T00:00:00";
    if (!hasForm(time, kForm)) {
        return std::nullopt;
    }
    std::size_t zone = std::strlen(kForm);
    if (time.substr(zone, 1) == ".") {
        zone = time.find_first_not_of("0123456789", zone + 1);
    }
    const auto offset = zone < time.size() ? offsetOf(time.substr(zone)) : std::nullopt;
    if (!offset) {
        return std::nullopt;
    }
    std::tm parts = {};
    parts.tm_year = numberAt(time, 0, 4) - 1900;
    parts.tm_mon = numberAt(time, 5, 2) - 1;
    parts.tm_mday = numberAt(time, 8, 2);
    parts.tm_hour = numberAt(time, 11, 2);
    parts.tm_min = numberAt(time, 14, 2);
    parts.tm_sec = numberAt(time, 17, 2);
    return std::int64_t{timegm(&parts)} - *offset;
}

}  // namespace zamofw
