#include <json/value.h>
#include <sys/random.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <ostream>

#include "command/answers/meaningFindings.h"
#include "command/answers/profileInForce.h"
#include "command/answers/profileStore.h"
#include "command/answers/refusalText.h"
#include "command/answers/table.h"
#include "command/answers/trialAnswers.h"
#include "command/answers/trialEnd.h"
#include "command/apply/bootTime.h"
#include "command/apply/kernelModules.h"
#include "command/apply/transaction.h"
#include "command/apply/trial.h"
#include "command/apply/trialTimer.h"
#include "command/document/check.h"
#include "command/document/findingText.h"
#include "command/document/textFile.h"
#include "command/history/changeLog.h"
#include "command/history/configuration.h"
#include "command/history/connection.h"
#include "command/jsonLine.h"
#include "command/plan/plan.h"
#include "command/systemLog.h"
#include "command/words/addresses.h"
#include "command/words/quoting.h"
#include "command/words/values.h"

namespace zamofw {
namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;

std::string newId() {
    std::array<unsigned char, 8> bytes = {};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        failed("the kernel gives no random numbers");
    }
    constexpr const char* kDigits = "0123456789abcdef";
    std::string id;
    for (const unsigned char byte : bytes) {
        id += kDigits[byte >> 4U];
        id += kDigits[byte & 0x0fU];
    }
    return id;
}

unsigned long secondsOf(const TryRequest& request) {
    if (!request.seconds) {
        return kTrialSeconds;
    }
    const auto seconds = numberFromText(*request.seconds, kMostTrialSeconds);
    if (!seconds || *seconds == 0) {
        wrongUse("`--seconds " + *request.seconds + "`: a trial takes 1 to " +
                     std::to_string(kMostTrialSeconds) + " seconds",
                 "leave it out for " + std::to_string(kTrialSeconds));
    }
    return *seconds;
}

std::optional<std::string> clientOf(const TryRequest& request, const Connection& connection) {
    if (request.client && !parseAddress(*request.client)) {
        wrongUse("`--client " + *request.client + "`: this is no IPv4 or IPv6 address",
                 "say the address that you come from, such as 192.0.2.7");
    }
    const std::optional<std::string> client = request.client ? request.client : connection.client();
    return client && parseAddress(*client) ? client : std::nullopt;
}

// The time is that of the clock, for people; the deadline is what counts.
void setTimes(TrialState& trial, unsigned long seconds) {
    const std::time_t now = std::time(nullptr);
    trial.began = timeText(now);
    trial.until = timeText(now + static_cast<std::time_t>(seconds));
    trial.deadline = nanosecondsSinceBoot() + static_cast<std::int64_t>(seconds) * kNanoseconds;
}

TrialState newTrial(const Target& target,
                    const std::optional<std::string>& client,
                    const Connection& connection,
                    unsigned long seconds) {
    TrialState trial;
    trial.id = newId();
    trial.profile = target.name;
    if (!target.isStored) {
        trial.file = target.document.file;
    }
    trial.client = client;
    trial.connection = connection.ssh;
    trial.boot = bootId();
    trial.timer = 0;
    setTimes(trial, seconds);
    return trial;
}

// A trial that nobody ends any more does not stand in the way.
void requireNoTrial(const Console& console, const ExecutionLock& lock) {
    std::optional<TrialState> trial;
    try {
        trial = readTrial();
        if (!trial) {
            return;
        }
    } catch (const Failure&) {
    }
    if (trial && !isStale(*trial)) {
        throw Failure(Status::kNo,
                      "a trial of " + shown(trial->profile) + " is under way until " + trial->until,
                      "say `zamofw confirm` over a new connection, or `zamofw revert`");
    }
    if (trial && trial->boot != bootId()) {
        forgetTrial(trial);
        return;
    }
    console.err << "an earlier trial had no timer any more: "
                << takeBackTrial(console, trial, Patience::kWait, lock) << "\n";
}

// Where memory runs out nobody knows whether the rules are in force: the record stays then, and the
// timer takes them back.
Outcome applyWithTimer(TrialState& trial, const Plan& plan, const ExecutionLock& lock) {
    try {
        trial.timer = startTrialTimer(trial.id);
        trial.timerStart = startOfProcess(trial.timer).value_or(0);
        return applyForNow(plan, lock);
    } catch (const Failure&) {
        forgetTrial(trial);
        throw;
    }
}

// From the record on, somebody takes back whatever becomes of this process.
Outcome begin(const Console& console,
              TrialState& trial,
              const Plan& plan,
              unsigned long seconds,
              const ExecutionLock& lock) {
    writeTrial(trial);
    Outcome outcome = applyWithTimer(trial, plan, lock);
    if (!outcome.applied) {
        forgetTrial(trial);
        return outcome;
    }
    try {
        setTimes(trial, seconds);
        trial.beganTick = ticksSinceBoot();
        writeTrial(trial);
    } catch (const Failure&) {
        // On a full disk, say. Should this fail as well, the timer has the first record.
        (void)takeBackTrial(console, trial, Patience::kWait, lock);
        throw;
    }
    return outcome;
}

void refuseLockout(const Console& console, const Document& document, const Client& client) {
    const Findings findings = lockoutFindings(document, client);
    console.err << findingsText(findings);
    if (!findings.empty()) {
        throw Failure(
            Status::kNo,
            "the profile locks out the client " + client.address + ", and nothing was changed",
            "add a rule that lets it in, or say --allow-lockout; --client names another one");
    }
}

Status show(const Console& console, const TrialState& trial, unsigned long seconds) {
    if (console.json) {
        Json::Value json;
        json["profile"] = trial.profile;
        json["client"] = trial.client ? Json::Value(*trial.client) : Json::Value();
        json["until"] = trial.until;
        console.out << jsonLine(json) << "\n";
        return Status::kDone;
    }
    console.out << "profile " << shown(trial.profile) << " is on trial for " << seconds
                << (seconds == 1 ? " second" : " seconds") << ", until " << trial.until
                << (trial.client ? ", for the client " + *trial.client : "") << "\n";
    if (!console.quiet) {
        console.out << "  make a new connection and say `zamofw confirm` there to keep it; "
                       "otherwise it is taken back\n";
    }
    return Status::kDone;
}

}  // namespace

Status tryAnswer(const Console& console, const TryRequest& request) {
    requireRoot("trying a profile");
    const unsigned long seconds = secondsOf(request);
    const Connection connection = currentConnection();
    const std::optional<std::string> client = clientOf(request, connection);
    requireStoreDirectory();
    const Target target = readTarget(request.target);
    showFindings(console, target, request.errors);
    requireFitName(target.name);
    const std::optional<Client> known = clientOf(client, std::nullopt);
    if (known && !request.allowsLockout) {
        refuseLockout(console, target.document, *known);
    }
    Plan plan = planTrial(readableProfile(target), client);
    plan.profile = target.name;

    const ExecutionLock lock;
    requireNoTrial(console, lock);
    loadKernelModules();
    saveRulesBeforeTrial();
    const std::string copy = trialCopyName(target.name);
    storeDocument(copy, renamedDocument(target.document, copy));
    TrialState trial = newTrial(target, client, connection, seconds);
    const Outcome outcome = begin(console, trial, plan, seconds, lock);
    if (!outcome.applied) {
        failed(refusalsText(outcome.refused) + "the rules that were in force still are",
               "mend the rule, for instance with `zamofw rule replace`");
    }
    logUnseen(LOG_NOTICE,
              "a trial of " + shown(trial.profile) + " begins" +
                  (client ? " for the client " + *client : "") + ", until " + trial.until);
    return show(console, trial, seconds);
}

}  // namespace zamofw
