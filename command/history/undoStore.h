// What was there before each of the last changes, in /var/lib/zamofw/undo/.
#ifndef COMMAND_HISTORY_UNDOSTORE_H
#define COMMAND_HISTORY_UNDOSTORE_H

#include <json/value.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zamofw {

struct Snapshot {
    std::uint64_t number = 0;
    std::string time;                  // of the change
    std::vector<std::string> command;  // that changed it
    Json::Value configuration;         // before it, as exported
};

// Keeps it as the newest, and sets its number. False, with errno set, when it cannot be written.
[[nodiscard]] bool keepSnapshot(Snapshot& snapshot);

// Those before the last 20.
void dropOldSnapshots();

void dropSnapshot(std::uint64_t number);

// The newest one. Throws Failure when it cannot be read.
[[nodiscard]] std::optional<Snapshot> newestSnapshot();

}  // namespace zamofw

#endif
