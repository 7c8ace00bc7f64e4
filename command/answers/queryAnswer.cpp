#include "command/answers/queryAnswer.h"

#include <json/value.h>

#include <map>
#include <ostream>
#include <set>

#include "command/answers/serviceCatalogue.h"
#include "command/answers/systemNames.h"
#include "command/answers/table.h"
#include "command/document/target.h"
#include "command/jsonLine.h"
#include "command/words/ports.h"
#include "command/words/quoting.h"
#include "command/words/suggestion.h"
#include "zamofirewall/controller.h"

namespace zamofw {
namespace {

using Answers = std::map<std::string, FW::FW_POLICY>;

std::string wordFor(FW::FW_POLICY answer) {
    switch (answer) {
        case FW::FW_POLICY_ALLOW:
            return "allow";
        case FW::FW_POLICY_DENY:
            return "deny";
        case FW::FW_POLICY_NONE:
            return "none";
        case FW::FW_POLICY_PARTIAL:
        case FW::FW_POLICY_PARTIAL_ALLOW:
        case FW::FW_POLICY_PARTIAL_DENY:
            return "partial";
    }
    return "none";
}

// Those of the profile in force, and those that rules may use now.
std::set<std::string> knownAdapters() {
    const FW::FWPROFILE profile = profileOf(readTarget({}));
    std::set<std::string> adapters;
    (void)FW::ZAMOFW().fwAdapterEnum(adapters);
    for (const auto& [name, rules] : profile.rules) {
        adapters.insert(name);
    }
    for (const auto& [name, policy] : profile.adapterPolicyMap) {
        adapters.insert(name);
    }
    return adapters;
}

void requireAdapter(const std::string& adapter) {
    const std::set<std::string> known = knownAdapters();
    if (known.count(adapter) == 0) {
        const std::string near = suggestion(adapter, {known.begin(), known.end()});
        wrongUse("there is no adapter " + shown(adapter) + (near.empty() ? "" : ": " + near),
                 "`zamofw adapter list` shows them");
    }
}

std::int32_t protocolOf(const std::optional<std::string>& word) {
    static const std::map<std::string, std::int32_t> kProtocols = {
        {"tcp", FW::FW_PROTOCOL_TCP}, {"udp", FW::FW_PROTOCOL_UDP}, {"both", FW::FW_PROTOCOL_BOTH}};
    const auto found = kProtocols.find(word.value_or("both"));
    if (found == kProtocols.end()) {
        const std::string near = suggestion(*word, {"tcp", "udp", "both"});
        wrongUse(shown(*word) + " is no protocol with ports" + (near.empty() ? "" : ": " + near),
                 "say tcp, udp or both");
    }
    return found->second;
}

std::string portOf(const std::string& word, const std::string& adapter) {
    if (systemVocabulary().services.count(word) != 0) {
        wrongUse(shown(word) + " is a service and no port",
                 "ask with `zamofw query service " + shellQuoted({adapter, word}) + "`");
    }
    const std::vector<std::string> ports = portsFromText("PORT", word);
    if (ports.size() != 1) {
        wrongUse(shown(word) + " is more than one port", "ask for one port or range at a time");
    }
    return ports.front();
}

Status answerQuery(const Console& console, const Answers& answers) {
    Json::Value json(Json::objectValue);
    json["answers"] = Json::Value(Json::objectValue);
    std::vector<Row> rows;
    bool isOpen = true;
    for (const auto& [adapter, answer] : answers) {
        json["answers"][adapter] = wordFor(answer);
        rows.push_back({adapter, wordFor(answer)});
        isOpen = isOpen && (answer == FW::FW_POLICY_ALLOW || answer == FW::FW_POLICY_NONE);
    }
    if (console.json) {
        console.out << jsonLine(json) << "\n";
    } else {
        printTable(console, {"ADAPTER", "ANSWER"}, rows);
    }
    return isOpen ? Status::kDone : Status::kNo;
}

[[noreturn]] void cannotAnswer() {
    failed("the profile in force cannot be asked", "`zamofw check` shows what is wrong with it");
}

}  // namespace

Status queryPort(const Console& console, const PortQuery& query) {
    FW::PortCompareST port;
    port.port = portOf(query.port, query.adapter);
    port.protocol = protocolOf(query.protocol);
    port.portDirect = query.source ? 1 : 0;
    requireAdapter(query.adapter);
    Answers answers;
    if (!FW::ZAMOFW().fwPortIsBlocked(port, query.adapter, answers)) {
        cannotAnswer();
    }
    return answerQuery(console, answers);
}

Status queryService(const Console& console, const std::string& adapter, const std::string& name) {
    const Service service = requiredService(name);
    requireAdapter(adapter);
    Answers answers;
    if (!FW::ZAMOFW().fwServIsBlocked(name, adapter, answers)) {
        cannotAnswer();
    }
    if (answers.empty()) {
        failed("the service " + shown(name) +
                   (service.enabled ? " has no ports that could be open or closed"
                                    : " is switched off in the catalogue"),
               "`zamofw service show " + shellQuoted({name}) + "` shows what it is");
    }
    return answerQuery(console, answers);
}

}  // namespace zamofw
