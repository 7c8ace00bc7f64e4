// The trial that is under way, as its timer's file tells.
#ifndef COMMAND_APPLY_TRIALSTATE_H
#define COMMAND_APPLY_TRIALSTATE_H

#include <json/value.h>
#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>

namespace zamofw {

// Root's own, mode 0600, in a directory with mode 0700.
constexpr const char* kTrialFile = "/var/lib/zamofw/trial.json";

struct TrialState {
    std::string id;
    std::string profile;  // the name of the copy that is tried
    std::optional<std::string> file;
    std::optional<std::string> client;
    std::optional<std::string> connection;
    std::string began;  // RFC 3339
    std::string until;
    pid_t timer = -1;  // the process that takes the trial back
    std::uint64_t timerStart = 0;
    Json::Value record;  // the whole object, with members that are not named here
};

// {"id":S,"profile":S,"file":S|null,"client":S|null,"connection":S|null,"began":RFC3339,
// "until":RFC3339,"timer":{"pid":N,"start":N}} and more members. None when there is no trial.
// Throws Failure when the file cannot be read (kNotPermitted where only root may), or is no such
// object.
[[nodiscard]] std::optional<TrialState> readTrial();

// Whether nobody will take the trial back any more: its timer has ended, or is overdue by more than
// the time that it may have to wait for a lock.
[[nodiscard]] bool isStale(const TrialState& trial);

// Removes the file, whatever it holds. Throws Failure unless it is gone afterwards.
void removeTrial();

// When a process began, in clock ticks since the start of the system; none when it has ended.
[[nodiscard]] std::optional<std::uint64_t> startOfProcess(pid_t process);

// Seconds since 1970 of an RFC 3339 time; none for any other text.
[[nodiscard]] std::optional<std::int64_t> secondsOf(const std::string& time);

}  // namespace zamofw

#endif
