#include "command/answers/metricsAnswer.h"

#include <fcntl.h>
#include <json/value.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ostream>

#include "command/answers/kernelMatch.h"
#include "command/answers/metricsText.h"
#include "command/answers/profileInForce.h"
#include "command/apply/lastReload.h"
#include "command/apply/trialState.h"
#include "command/document/target.h"
#include "command/history/changeLog.h"
#include "command/plan/plan.h"
#include "command/words/quoting.h"
#include "posix/descriptor.h"
#include "posix/file.h"

namespace zamofw {
namespace {

constexpr mode_t kReadableByAll = 0644;

using Seconds = std::chrono::duration<double>;

std::optional<ChangeFigures> lastChange() {
    const std::vector<Json::Value> changes = loggedChanges(1);
    const std::optional<std::int64_t> time =
        changes.empty() ? std::nullopt : secondsOf(changes.front()["time"].asString());
    if (!time) {
        return std::nullopt;
    }
    const Json::Value& change = changes.front();
    ChangeFigures figures = {static_cast<double>(*time), {}, change["result"].asInt()};
    if (change["milliseconds"].isIntegral()) {
        constexpr double kMilliseconds = 1000;
        figures.duration = change["milliseconds"].asDouble() / kMilliseconds;
    }
    return figures;
}

std::optional<ReloadFigures> reloadFigures() {
    const std::optional<LastReload> last = lastReload();
    if (!last) {
        return std::nullopt;
    }
    return ReloadFigures{Seconds(last->begin.time_since_epoch()).count(),
                         Seconds(last->duration).count(),
                         last->isApplied};
}

// The kernel counts only rules that it has.
void addHits(const FW::FWPROFILE& profile, Metrics& metrics) {
    const std::optional<RuleHits> hits = hitsOf(planProfile(profile), kernelChain);
    if (!hits) {
        return;
    }
    for (const auto& [place, counted] : *hits) {
        const auto& [adapter, position] = place;
        const auto rules = profile.rules.find(adapter);
        const bool isThere = rules != profile.rules.end() && position <= rules->second.size();
        const std::string name = isThere ? rules->second[position - 1].name : "";
        metrics.hits.push_back({adapter, position, name, counted});
    }
}

void addRules(Metrics& metrics) {
    const FW::FWPROFILE profile = profileOf(readTarget({}));
    std::size_t count = 0;
    for (const auto& [adapter, rules] : profile.rules) {
        count += rules.size();
    }
    metrics.rules = count;
    if (metrics.isEnabled) {
        addHits(profile, metrics);
    }
}

Metrics gathered(const Console& console) {
    Metrics metrics;
    metrics.isEnabled = isFirewallEnabled();
    metrics.profile = profileNameInForce();
    metrics.kernel = kernelAnswer().answer;
    metrics.lastChange = lastChange();
    metrics.lastReload = reloadFigures();
    try {
        addRules(metrics);
    } catch (const Failure& problem) {
        // The figures that there are tell that something is wrong.
        console.err << "zamofw: the figures of the rules are missing: " << problem.what() << "\n";
    }
    return metrics;
}

[[noreturn]] void cannotWrite(const std::string& file) {
    failed(shown(file) + " cannot be written: " + std::strerror(errno),
           "see that the directory is there and the disk is not full");
}

// Under a name that no collector reads, in a directory that may belong to another user.
void writeMetrics(const std::string& path, const std::string& text) {
    const std::string temporary = path + "." + std::to_string(getpid());
    (void)unlink(temporary.c_str());
    posix::Descriptor file =
        posix::openFile(temporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, kReadableByAll);
    if (!file) {
        cannotWrite(path);
    }
    if (!posix::writeWhole(file.get(), text) || fchmod(file.get(), kReadableByAll) != 0 ||
        !file.close() || std::rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno;
        (void)unlink(temporary.c_str());
        errno = error;
        cannotWrite(path);
    }
}

}  // namespace

Status metricsAnswer(const Console& console, const std::optional<std::string>& file) {
    requireRoot("reading the kernel's counters");
    const std::string text = metricsText(gathered(console));
    if (file) {
        writeMetrics(*file, text);
    } else {
        console.out << text;
    }
    return Status::kDone;
}

}  // namespace zamofw
