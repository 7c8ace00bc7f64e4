// The log of changes, /var/log/zamofw/changes.jsonl: one document a line.
#ifndef COMMAND_HISTORY_CHANGELOG_H
#define COMMAND_HISTORY_CHANGELOG_H

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "command/console.h"
#include "command/history/caller.h"

namespace zamofw {

struct LoggedChange {
    std::string time;  // RFC 3339
    Caller caller;
    std::vector<std::string> command;  // the words of the call
    Status result = Status::kFailed;
    std::string before;  // digests of the export
    std::string after;
    std::int64_t milliseconds = 0;  // that the change took
};

// RFC 3339, in UTC.
[[nodiscard]] std::string timeText(std::time_t time);
[[nodiscard]] std::string currentTime();

// Appends the change, and sends a line to the system log. False, with errno set, when the file
// could not be written; the line is sent all the same.
[[nodiscard]] bool logChange(const LoggedChange& change);

// The last `count` entries, or all of them, in the order of time; lines that are no entries are
// passed over. Throws Failure when the file cannot be read; a missing one has no entries.
[[nodiscard]] std::vector<Json::Value> loggedChanges(std::optional<std::size_t> count);

}  // namespace zamofw

#endif
