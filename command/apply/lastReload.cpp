#include "command/apply/lastReload.h"

#include <json/value.h>
#include <sys/stat.h>

#include <exception>

#include "command/apply/runNote.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

using std::chrono::nanoseconds;
using std::chrono::system_clock;

constexpr const char* kNote = "reload.json";
constexpr const char* kBegin = "begin";
constexpr const char* kDuration = "duration";
constexpr const char* kApplied = "applied";

std::int64_t sinceEpoch(system_clock::time_point time) {
    return std::chrono::duration_cast<nanoseconds>(time.time_since_epoch()).count();
}

}  // namespace

ReloadRecord::ReloadRecord()
    : begin_(system_clock::now()), start_(std::chrono::steady_clock::now()) {}

// Without it, figures are missing, and the watch reloads once more than it has to.
ReloadRecord::~ReloadRecord() {
    try {
        write();
    } catch (const std::exception&) {
        return;
    }
}

void ReloadRecord::write() const {
    Json::Value note;
    note[kBegin] = Json::Int64{sinceEpoch(begin_)};
    note[kDuration] = Json::Int64{
        std::chrono::duration_cast<nanoseconds>(std::chrono::steady_clock::now() - start_).count()};
    note[kApplied] = isApplied_;
    (void)writeRunNote(kNote, note);
}

std::optional<LastReload> lastReload() {
    const Json::Value note = readRunNote(kNote);
    if (!note[kBegin].isInt64() || !note[kDuration].isInt64() || !note[kApplied].isBool()) {
        return std::nullopt;
    }
    return LastReload{system_clock::time_point(nanoseconds(note[kBegin].asInt64())),
                      nanoseconds(note[kDuration].asInt64()),
                      note[kApplied].asBool()};
}

RulesMark rulesMark() {
    RulesMark mark;
    if (const std::optional<LastReload> last = lastReload()) {
        mark.byCommand = sinceEpoch(last->begin);
    }
    // The library touches it whenever it rebuilds the rules.
    struct stat file = {};
    if (lstat(FW::kExecutionLockFile, &file) == 0) {
        constexpr std::int64_t kNanoseconds = 1000000000;
        mark.byLibrary = file.st_mtim.tv_sec * kNanoseconds + file.st_mtim.tv_nsec;
    }
    return mark;
}

}  // namespace zamofw
