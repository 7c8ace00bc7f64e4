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
    std::string profile;  // that is tried; the store holds the copy under trialCopyName()
    std::optional<std::string> file;  // where it came from, unless it is a stored one
    std::optional<std::string> client;
    std::optional<std::string> connection;
    std::string began;  // RFC 3339
    std::string until;
    pid_t timer = -1;  // the process that takes the trial back
    std::uint64_t timerStart = 0;
    std::string boot;             // as bootId() tells it; no trial outlives a start of the system
    std::int64_t deadline = 0;    // in nanosecondsSinceBoot(); the clock may be set
    std::uint64_t beganTick = 0;  // comparable with startOfProcess()
    Json::Value record;           // the whole object, with members that are not named here
};

// {"id":S,"profile":S,"file":S|null,"client":S|null,"connection":S|null,"began":RFC3339,
// "until":RFC3339,"timer":{"pid":N,"start":N},"boot":S,"deadline":N,"began_tick":N}. None when
// there is no trial. Throws Failure when the file cannot be read (kNotPermitted where only root
// may), or is no such object.
[[nodiscard]] std::optional<TrialState> readTrial();

// Puts it in the place of the one before, as a whole. Throws Failure when that is not possible.
void writeTrial(const TrialState& trial);

// The name under which the store holds the profile that is tried; such copies are no part of the
// configuration.
[[nodiscard]] std::string trialCopyName(const std::string& profile);

// Whether nobody will take the trial back any more: the system has been started since, or its timer
// has ended, or is overdue by more than the time that it may have to wait for a lock.
[[nodiscard]] bool isStale(const TrialState& trial);

// Removes the file, whatever it holds. Throws Failure unless it is gone afterwards.
void removeTrial();

// When a process began, in clock ticks since the start of the system; none when it has ended.
[[nodiscard]] std::optional<std::uint64_t> startOfProcess(pid_t process);

// Seconds since 1970 of an RFC 3339 time; none for any other text.
[[nodiscard]] std::optional<std::int64_t> secondsOf(const std::string& time);

}  // namespace zamofw

#endif
