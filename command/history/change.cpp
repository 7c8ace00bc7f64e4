#include "command/history/change.h"

#include <zamo/core.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>
#include <iostream>
#include <optional>

#include "command/history/changeLog.h"
#include "command/history/configuration.h"
#include "command/history/digest.h"
#include "zamofirewall/lockedJson.h"

namespace zamofw {
namespace {

constexpr const char* kLockName = "zamofw_history";
constexpr int kLongestWait = 30;

bool isRecording = false;
int locksHeld = 0;
int lockFile = -1;

// A full disk must not keep anybody from opening or closing the firewall, so that this is said and
// no more.
void warn(const std::string& what, int error) {
    std::cerr << "warning: " << what << ": " << std::strerror(error) << "\n";
}

std::string digestNow() {
    return digestOf(exportText(readableConfiguration()));
}

// How a change ended.
struct End {
    Status status = Status::kFailed;
    std::exception_ptr problem;
    std::int64_t milliseconds = 0;

    Status result() const {
        if (problem != nullptr) {
            std::rethrow_exception(problem);
        }
        return status;
    }
};

End run(const std::function<Status()>& change) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point begin = Clock::now();
    End end;
    try {
        end.status = change();
    } catch (const Failure& failure) {
        end.status = failure.status();
        end.problem = std::current_exception();
    } catch (...) {
        end.problem = std::current_exception();
    }
    end.milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
    return end;
}

// The newest change that has changed anything. One that was killed before it did has left its
// snapshot.
std::optional<Snapshot> newestEffectiveSnapshot(const std::string& digest) {
    std::optional<Snapshot> newest = newestSnapshot();
    while (newest && digestOf(exportText(newest->configuration)) == digest) {
        const std::uint64_t number = newest->number;
        dropSnapshot(number);
        newest = newestSnapshot();
        if (newest && newest->number == number) {
            break;
        }
    }
    return newest;
}

LoggedChange begun(const std::vector<std::string>& words, const std::string& before) {
    LoggedChange logged;
    logged.time = currentTime();
    logged.caller = currentCaller();
    logged.command = words;
    logged.before = before;
    return logged;
}

void finish(LoggedChange& logged, const End& end) {
    logged.result = end.status;
    logged.milliseconds = end.milliseconds;
    logged.after = digestNow();
    if (!logChange(logged)) {
        warn("the change is not written to /var/log/zamofw/changes.jsonl", errno);
    }
}

// While this lives, a change inside a change belongs to the outer one.
class Recording {
  public:
    Recording() { isRecording = true; }
    ~Recording() { isRecording = false; }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
};

}  // namespace

ConfigurationLock::ConfigurationLock() {
    if (locksHeld == 0) {
        const std::string path = FW::getLockFile(kLockName);
        if (VLIBCFileLockTimeByFile(path.c_str(), /*exclusive=*/1, kLongestWait, &lockFile) != 1) {
            const int error = errno;
            failed(error == ETIMEDOUT
                       ? "another zamofw has been changing the configuration for half a minute"
                       : "the lock file " + path + " cannot be locked: " + std::strerror(error),
                   "wait until it has ended, and try again");
        }
    }
    ++locksHeld;
}

ConfigurationLock::~ConfigurationLock() {
    if (--locksHeld == 0) {
        (void)VLIBCFileUnlockByFile(lockFile);
    }
}

Status recordedChange(const std::vector<std::string>& words,
                      const std::function<Status()>& change) {
    if (isRecording) {
        return change();
    }
    requireStoreDirectory();
    const ConfigurationLock lock;
    const Recording recording;
    Snapshot snapshot;
    snapshot.configuration = readableConfiguration();
    LoggedChange logged = begun(words, digestOf(exportText(snapshot.configuration)));
    snapshot.time = logged.time;
    snapshot.command = words;
    // Before the change, so that one that is killed half-way can be taken back.
    const bool kept = keepSnapshot(snapshot);
    if (!kept) {
        warn(
            "`zamofw undo` will not know of this change, since /var/lib/zamofw/undo/ cannot be "
            "written to",
            errno);
    }
    const End end = run(change);
    finish(logged, end);
    if (kept && logged.after == logged.before) {
        dropSnapshot(snapshot.number);
    }
    dropOldSnapshots();
    return end.result();
}

Status recordedUndo(const std::vector<std::string>& words,
                    const std::function<Status(const Snapshot*)>& change) {
    requireStoreDirectory();
    const ConfigurationLock lock;
    const Recording recording;
    const std::string digest = digestNow();
    const std::optional<Snapshot> newest = newestEffectiveSnapshot(digest);
    if (!newest) {
        return change(nullptr);
    }
    LoggedChange logged = begun(words, digest);
    const End end = run([&] { return change(&*newest); });
    finish(logged, end);
    if (end.status == Status::kDone) {
        dropSnapshot(newest->number);
    }
    return end.result();
}

}  // namespace zamofw
