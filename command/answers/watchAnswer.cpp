#include "command/answers/watchAnswer.h"

#include <json/value.h>

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <exception>
#include <ostream>

#include "command/answers/profileInForce.h"
#include "command/answers/reloadAnswer.h"
#include "command/apply/adapterEvents.h"
#include "command/apply/adapterState.h"
#include "command/apply/lastReload.h"
#include "command/apply/runNote.h"
#include "command/apply/trialState.h"
#include "command/document/target.h"
#include "command/serviceManager.h"

namespace zamofw {
namespace {

using std::chrono::milliseconds;

constexpr const char* kNote = "watch.json";
constexpr const char* kAdapters = "adapters";
constexpr const char* kByCommand = "by_command";
constexpr const char* kByLibrary = "by_library";

constexpr milliseconds kShortestRetry{1000};
constexpr milliseconds kLongestRetry{60000};
constexpr milliseconds kUntilNextLookAtTrial{2000};

// The adapters that the rules in force were made for, as far as it is known.
using Known = std::optional<AdapterState>;

void keep(const AdapterState& state) {
    const RulesMark mark = rulesMark();
    Json::Value note;
    note[kByCommand] = Json::Int64{mark.byCommand};
    note[kByLibrary] = Json::Int64{mark.byLibrary};
    note[kAdapters] = Json::objectValue;
    for (const auto& [adapter, lines] : state) {
        Json::Value& list = note[kAdapters][adapter] = Json::arrayValue;
        for (const std::string& line : lines) {
            list.append(line);
        }
    }
    // Without it, the next watch begins with a reload.
    (void)writeRunNote(kNote, note);
}

// An update of the package starts a new watch. It must not put a profile into force that somebody
// has stored and not yet reloaded.
Known kept() {
    const Json::Value note = readRunNote(kNote);
    if (!note[kAdapters].isObject() || !note[kByCommand].isInt64() || !note[kByLibrary].isInt64() ||
        !(rulesMark() == RulesMark{note[kByCommand].asInt64(), note[kByLibrary].asInt64()})) {
        return std::nullopt;
    }
    AdapterState state;
    for (const std::string& adapter : note[kAdapters].getMemberNames()) {
        for (const Json::Value& line : note[kAdapters][adapter]) {
            state[adapter].push_back(line.asString());
        }
    }
    return state;
}

// Nobody takes back a trial whose record cannot be read: there is no end to wait for.
bool isTrialUnderWay() try {
    const std::optional<TrialState> trial = readTrial();
    return trial && !isStale(*trial);
} catch (const Failure&) {
    return false;
}

class Watch {
  public:
    explicit Watch(const Console& console) : console_(console) {}

    // Gives back when to look again even if nothing happens.
    std::optional<milliseconds> look() try {
        AdapterState state = adapterState();
        if (!isFirewallEnabled()) {
            return settled(std::move(state));
        }
        const std::set<std::string> named = namedAdapters(profileOf(readTarget({})));
        const std::set<std::string> changed =
            known_ ? changedAdapters(*known_, state, named) : named;
        if (known_ && changed.empty()) {
            return settled(std::move(state));
        }
        // A trial begins and ends under this lock.
        const ExecutionLock lock;
        if (isTrialUnderWay()) {
            return waitForTrial();
        }
        isWaitingForTrial_ = false;
        return reload(std::move(state), changed, lock);
    } catch (const Failure& failure) {
        return retryAfter(std::string(failure.what()) + "\n  " + failure.remedy());
    } catch (const std::exception& problem) {
        // A lock file that cannot be opened, for instance.
        return retryAfter(problem.what());
    }

  private:
    std::optional<milliseconds> settled(AdapterState state) {
        known_ = std::move(state);
        retry_ = kShortestRetry;
        isWaitingForTrial_ = false;
        keep(*known_);
        return std::nullopt;
    }

    std::optional<milliseconds> waitForTrial() {
        if (!isWaitingForTrial_) {
            console_.err << "the rules are put into force when the trial has ended\n";
        }
        isWaitingForTrial_ = true;
        return kUntilNextLookAtTrial;
    }

    std::optional<milliseconds> reload(AdapterState state,
                                       const std::set<std::string>& changed,
                                       const ExecutionLock& lock) {
        if (known_) {
            console_.err << "came, went or changed: " << boost::algorithm::join(changed, ", ")
                         << "\n";
        }
        const InForce result = putIntoForce(console_, Errors::kShow, lock);
        (void)showInForce(console_, result);
        return result.isEnabled && !result.outcome.applied ? retry() : settled(std::move(state));
    }

    std::optional<milliseconds> retryAfter(const std::string& problem) {
        console_.err << "zamofw: " << problem << "\n";
        return retry();
    }

    std::optional<milliseconds> retry() {
        const milliseconds time = retry_;
        retry_ = std::min(retry_ * 2, kLongestRetry);
        console_.err << "trying again in " << time.count() / 1000 << " s\n";
        return time;
    }

    const Console& console_;
    Known known_ = kept();
    milliseconds retry_ = kShortestRetry;
    bool isWaitingForTrial_ = false;
};

}  // namespace

Status watchAnswer(const Console& console) {
    using Event = AdapterEvents::Event;
    requireRoot("watching the network interfaces");
    AdapterEvents events;
    Watch watch(console);
    std::optional<milliseconds> next = watch.look();
    console.out.flush();
    tellServiceManager("READY=1");
    while (true) {
        Event event = events.wait(next);
        if (event == Event::kAdapters) {
            event = events.waitForQuiet();
        }
        if (event == Event::kStop) {
            break;
        }
        next = watch.look();
        console.out.flush();
    }
    tellServiceManager("STOPPING=1");
    return Status::kDone;
}

}  // namespace zamofw
