// A change of the stored configuration: what was there before is kept for `undo`, and who did what
// is written to the change log.
#ifndef COMMAND_HISTORY_CHANGE_H
#define COMMAND_HISTORY_CHANGE_H

#include <functional>
#include <string>
#include <vector>

#include "command/console.h"
#include "command/history/undoStore.h"

namespace zamofw {

// One zamofw at a time changes the configuration: who reads what it goes by and then changes it
// holds this all the while. Waits at most 30 seconds, then throws Failure. It may be taken again
// while it is held. Programs that use the library alone do not take it.
class ConfigurationLock {
  public:
    ConfigurationLock();
    ~ConfigurationLock();
    ConfigurationLock(const ConfigurationLock&) = delete;
    ConfigurationLock& operator=(const ConfigurationLock&) = delete;
};

// Runs a change between two looks at the configuration, with the words of the call: the export
// before it is kept for `undo` (the last 20), and a line is written to the system log and to
// /var/log/zamofw/changes.jsonl, also when the change fails. Gives back what the change gives.
//
// It holds the lock. A change inside a change belongs to the outer one. What leaves the
// configuration as it was is logged, but there is nothing for `undo` to take back.
[[nodiscard]] Status recordedChange(const std::vector<std::string>& words,
                                    const std::function<Status()>& change);

// The same for taking the newest change back: `change` is handed what was there before it, and
// nothing is kept. When it is done, the change before it is the newest.
[[nodiscard]] Status recordedUndo(const std::vector<std::string>& words,
                                  const std::function<Status(const Snapshot*)>& change);

}  // namespace zamofw

#endif
