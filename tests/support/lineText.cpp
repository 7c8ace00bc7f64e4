#include "tests/support/lineText.h"

#include <algorithm>
#include <boost/algorithm/string.hpp>
#include <map>
#include <regex>

namespace test {
namespace {

using Texts = std::vector<std::string>;

const std::string kForward = "-t filter -A FORWARD_FIREWALL ";
const std::string kInput = "-t filter -A INPUT_FIREWALL ";

// The lines without the usual ones, which come in their order. Between others, ".." is left of
// them; one that is missing is an error.
Texts unusualLines(const Json::Value& lines, const Json::Value& usual) {
    Texts unusual;
    Json::ArrayIndex next = 0;
    for (const Json::Value& line : lines) {
        if (next == usual.size() || line != usual[next]) {
            unusual.push_back(line.asString());
            continue;
        }
        ++next;
        if (!unusual.empty() && unusual.back() != "..") {
            unusual.emplace_back("..");
        }
    }
    if (next != usual.size()) {
        unusual.emplace_back("usual lines are missing");
    }
    return unusual;
}

// Each rule on its own. It has its lines in FORWARD_FIREWALL and then the same in INPUT_FIREWALL,
// so one text stands for both; where the two halves differ, the lines stay whole.
std::string ruleTexts(const Texts& lines) {
    std::string texts;
    for (auto line = lines.begin(); line != lines.end();) {
        Texts inputs;
        auto half = line;
        for (; half != lines.end() && boost::starts_with(*half, kForward); ++half) {
            inputs.push_back(kInput + half->substr(kForward.size()));
        }
        if (inputs.empty() || !boost::starts_with(Texts(half, lines.end()), inputs)) {
            texts += " / " + *line++;
            continue;
        }
        texts += " / " + boost::erase_all_copy(boost::join(inputs, " & "), kInput);
        line = half + (half - line);
    }
    return texts;
}

// " / -j DROP" of the family 4: " / 4: -j DROP".
std::string named(const std::string& families, const std::string& texts) {
    return texts.empty() ? "" : " / " + families + ": " + texts.substr(3);
}

Texts guard(const std::string& policy, const std::string& edit) {
    Texts lines;
    for (const std::string program : {"/sbin/iptables", "/sbin/ip6tables"}) {
        lines.push_back(program + " --policy INPUT " + policy);
        lines.push_back(program + " --policy FORWARD " + policy);
        lines.push_back(program + " " + edit +
                        " FIREWALL_RELOADING -m state --state ESTABLISHED,RELATED -j ACCEPT");
    }
    return lines;
}

const std::map<std::string, Texts> kKnownRuns = {
    {"close", guard("DROP", "-A")},
    {"open", guard("ACCEPT", "-D")},
    {"flush",
     {"/sbin/iptables -F INPUT_FIREWALL", "/sbin/ip6tables -F INPUT_FIREWALL",
      "/sbin/iptables -F FORWARD_FIREWALL", "/sbin/ip6tables -F FORWARD_FIREWALL"}},
    {"load",
     {"insert firewall: c1.ko c2.ko m1.ko v1.ko",
      "insert firewall: compat_xtables.ko xt_geoip.ko xt_mac.ko"}},
    {"unload",
     {"remove firewall: xt_mac.ko xt_geoip.ko compat_xtables.ko",
      "remove firewall: v1.ko m1.ko c2.ko c1.ko"}},
};

// Log lines that come together, as regular expressions, and what is shown for them.
const std::vector<std::pair<std::regex, const char*>> kSaidTogether = {
    {std::regex("/usr/zamo/etc/firewall\\.d/"), "store/"},
    {std::regex("zamoFW: Failed to execute (\\S+) ! zamoFW: Failed to execute (\"\\1 )"),
     "failed $2"},
    {std::regex(
         "utils: Failed to open json file (\\S+)\\.tmp ! fwDB: Failed to profileDbDump\\(\\)"),
     "unwritable profile $1"},
    {std::regex("utils: Failed to parse Json value of (store/firewall_settings.json) "
                "! zamoFW: Falied to configGet\\(\\)"),
     "unreadable $1"},
    {std::regex("utils: Failed to parse Json value of (\\S+) ! fwDB: Failed to load json from \\1"),
     "damaged $1"},
    {std::regex("zamoIptablesModule: Failed to VLIBIptablesMod(\\w+)\\(\\) "
                "! zamoIptablesModule: Failed to module\\1\\((\\w+), ([^)]*)\\)"),
     "failed $1 $2: $3"},
    {std::regex("fwDB: Fail to read file from store/ "
                "! fwDB: Failed to create meta json from store/"),
     "empty store"},
    {std::regex("\\.cpp:[0-9]+"), ".cpp:LINE"},
};

// What several events in a row are counted as.
std::string kindOf(const std::string& event) {
    static const std::regex rule(".* -A (INPUT|FORWARD)_FIREWALL .*");
    return boost::starts_with(event, "tool ") ? "questions"
           : std::regex_match(event, rule)    ? "rules"
                                              : event;
}

// Cuts the next thing to show off the events.
std::string takeEvent(Texts& events) {
    for (const auto& [name, run] : kKnownRuns) {
        if (boost::starts_with(events, run)) {
            events.erase(events.begin(), events.begin() + static_cast<long>(run.size()));
            return name;
        }
    }
    const std::string first = events[0];
    const std::string kind = kindOf(first);
    long count = 0;
    for (; !events.empty() && kindOf(events[0]) == kind; ++count) {
        events.erase(events.begin());
    }
    return count == 1 ? first : std::to_string(count) + " " + kind;
}

}  // namespace

std::string lineText(const Json::Value& commands, const Json::Value& usual) {
    std::map<std::string, std::map<std::string, std::string>> adapters;
    for (const char* family : {"v4", "v6"}) {
        for (const std::string& adapter : commands[family].getMemberNames()) {
            adapters[adapter == "global" ? "" : adapter][family] =
                ruleTexts(unusualLines(commands[family][adapter], usual[family][adapter]));
        }
    }
    std::string text;
    for (auto& [adapter, families] : adapters) {
        const std::string& v4 = families["v4"];
        const std::string& v6 = families["v6"];
        text += adapter.empty() ? "" : " | " + adapter;
        text += v4 == v6 ? named("46", v4) : named("4", v4) + named("6", v6);
    }
    return boost::replace_all_copy(text, "\n", "\\n");
}

std::string eventText(std::vector<std::string> events) {
    std::string text;
    while (!events.empty()) {
        text += " > " + takeEvent(events);
    }
    return boost::erase_all_copy(text, "net/firewall_");
}

std::string logText(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += " ! " + boost::replace_all_copy(line, "\n", "\\n");
    }
    for (const auto& [together, name] : kSaidTogether) {
        text = std::regex_replace(text, together, name);
    }
    return text;
}

}  // namespace test
