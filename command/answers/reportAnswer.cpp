#include "command/answers/reportAnswer.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <ostream>

#include "command/answers/checkAnswer.h"
#include "command/answers/fileReplacement.h"
#include "command/answers/historyAnswers.h"
#include "command/answers/kernelComparison.h"
#include "command/answers/meaning.h"
#include "command/answers/ruleHits.h"
#include "command/answers/serviceCatalogue.h"
#include "command/answers/systemNames.h"
#include "command/document/profileRecord.h"
#include "command/document/storedProfile.h"
#include "command/document/storedSettings.h"
#include "command/document/textFile.h"
#include "command/history/changeLog.h"
#include "command/jsonLine.h"
#include "command/report/report.h"
#include "command/words/quoting.h"

namespace zamofw {
namespace {

using report::Part;
using report::Report;

constexpr std::size_t kChanges = 10;

// A part that cannot be had must not stand in the way of the others.
template <typename Make>
auto partOf(Make make) -> Part<decltype(make())> {
    std::string reason;
    try {
        return {make(), ""};
    } catch (const std::exception& problem) {
        reason = problem.what();
    }
    return {std::nullopt, reason.substr(0, reason.find('\n'))};
}

std::string hostName() {
    std::array<char, 256> name = {};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "this machine";
}

Document documentInForce(const std::string& profile) {
    std::optional<Document> document = findStored(profile);
    if (!document) {
        failed("the profile in force, " + shown(profile) + ", is not stored",
               "`zamofw profile list` shows those that are; choose one with `zamofw profile use "
               "NAME`");
    }
    return std::move(*document);
}

report::Counters countersOf(const FW::FWPROFILE& profile, bool isEnabled) {
    if (!isEnabled) {
        failed("the firewall is disabled");
    }
    requireRoot("reading the kernel's counters");
    const std::optional<RuleHits> hits = hitsOf(planProfile(profile), kernelChain);
    if (!hits) {
        failed("the kernel does not hold the rules of the profile");
    }
    report::Counters counters;
    for (const auto& [place, counted] : *hits) {
        counters[place] = {counted.packets, counted.bytes};
    }
    return counters;
}

report::Traffic trafficOf(const ServicePorts& service) {
    if (service.protocol != "tcp" && service.protocol != "udp" && service.protocol != "both") {
        return {{service.protocol, {{0, 0}}}};
    }
    analysis::Intervals ports;
    for (const std::string& entry : service.ports) {
        const std::optional<analysis::Interval> range = report::portRange(entry);
        if (range) {
            ports.push_back(*range);
        }
    }
    ports = analysis::normalized(std::move(ports));
    report::Traffic traffic;
    for (const char* const protocol : {"tcp", "udp"}) {
        if (!ports.empty() && (service.protocol == protocol || service.protocol == "both")) {
            traffic[protocol] = ports;
        }
    }
    return traffic;
}

report::ServiceMatrix matrixOf(const FW::FWPROFILE& profile) {
    std::map<std::string, report::Traffic> catalogue;
    for (const Service& service : serviceCatalogue()) {
        if (service.enabled && service.destination) {
            catalogue[service.name] = trafficOf(*service.destination);
        }
    }
    analysis::ModelReader reader(countryRanges());
    const auto meaning = meaningOf(profile, profile.name, reader);
    requireKnown(*meaning);
    std::vector<std::string> protocols;
    for (const analysis::NamedProtocol& protocol : analysis::namedProtocols({&meaning->model}, 4)) {
        protocols.push_back(protocol.name);
    }
    return report::serviceMatrix(
        analysis::matrix(meaning->model, {}), report::servicesOf(profile, catalogue), protocols);
}

std::vector<report::Change> lastChanges() {
    std::vector<report::Change> changes;
    for (const Json::Value& entry : loggedChanges(kChanges)) {
        std::vector<std::string> words = {"zamofw"};
        for (const Json::Value& word : entry["command"]) {
            words.push_back(word.isString() ? word.asString() : "?");
        }
        changes.push_back({entry["time"].asString(),
                           entry["user"].asString(),
                           entry["from"].isString() ? entry["from"].asString() : "",
                           resultText(entry["result"].asInt()),
                           shellQuoted(words)});
    }
    std::reverse(changes.begin(), changes.end());
    return changes;
}

Report collected() {
    const StoredSettings settings = storedSettings();
    const Document document = documentInForce(settings.profile);
    Report report;
    report.host = hostName();
    report.time = currentTime();
    report.isEnabled = settings.isEnabled;
    report.profile = settings.profile;
    report.file = document.file;
    report.findings =
        checkDocument(document, systemCheckContext(), clientOf(std::nullopt, std::nullopt));
    report.rules = partOf([&document] { return profileRecord(document); });
    if (report.rules.value) {
        const FW::FWPROFILE& profile = *report.rules.value;
        report.counters = partOf([&] { return countersOf(profile, settings.isEnabled); });
        report.matrix = partOf([&profile] { return matrixOf(profile); });
    } else {
        report.matrix.reason = report.rules.reason;
    }
    report.kernel = kernelComparison();
    report.changes = partOf(lastChanges);
    return report;
}

}  // namespace

Status reportAnswer(const Console& console, const std::string& file) {
    const bool isToStream = file == kStandardStream;
    if (isToStream && console.json) {
        wrongUse("a report is HTML, and --json has nothing to say about one on standard output",
                 "name a file, or leave --json out");
    }
    const Report report = collected();
    if (isToStream) {
        errno = 0;
        if (!(console.out << page(report) << std::flush)) {
            failed(std::string("the report cannot be written: ") + std::strerror(errno));
        }
        return Status::kDone;
    }
    replaceFile(file, page(report));
    if (console.json) {
        Json::Value json(Json::objectValue);
        json["file"] = file;
        json["profile"] = report.profile;
        json["findings"] = Json::UInt64{report.findings.size()};
        console.out << jsonLine(json) << "\n";
    } else if (!console.quiet) {
        console.out << "the report is written to " << shown(file) << "\n";
    }
    return Status::kDone;
}

}  // namespace zamofw
