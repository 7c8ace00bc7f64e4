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

// One text for the two chains. A rule has its lines in FORWARD_FIREWALL and then as many in
// INPUT_FIREWALL; where the two halves differ, the lines stay whole.
Texts ruleTexts(const Texts& lines) {
    Texts texts;
    for (auto line = lines.begin(); line != lines.end();) {
        const auto half = std::find_if_not(line, lines.end(), [](const std::string& each) {
            return boost::starts_with(each, kForward);
        });
        const auto end = half + std::min(half - line, lines.end() - half);
        if (half == line ||
            !std::equal(line, half, half, end, [](const std::string& one, const std::string& two) {
                return kInput + one.substr(kForward.size()) == two;
            })) {
            texts.push_back("/ " + *line++);
            continue;
        }
        for (const char* separator = "/ "; line != half; ++line, separator = "& ") {
            texts.push_back(separator + line->substr(kForward.size()));
        }
        line = end;
    }
    return texts;
}

// Both families' texts in one list, each family's in its order. The families are named where they
// change.
std::string mergedText(const Texts& v4, const Texts& v6) {
    std::string merged;
    std::string families;
    const auto append = [&](const std::string& text, const std::string& of) {
        merged += " " + (of == families ? text : text.substr(0, 2) + of + ": " + text.substr(2));
        families = of;
    };
    auto six = v6.begin();
    for (const std::string& text : v4) {
        const auto same = std::find(six, v6.end(), text);
        if (same == v6.end()) {
            append(text, "4");
            continue;
        }
        std::for_each(six, same, [&](const std::string& other) { append(other, "6"); });
        append(text, "46");
        six = same + 1;
    }
    std::for_each(six, v6.end(), [&](const std::string& other) { append(other, "6"); });
    return merged;
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
    {std::regex("fwDB: Fail to read file from store/ "
                "! fwDB: Failed to create meta json from store/"),
     "empty store"},
    {std::regex("\\.cpp:[0-9]+"), ".cpp:LINE"},
};

bool isQuestion(const std::string& event) { return boost::starts_with(event, "tool "); }

bool isRule(const std::string& event) {
    return boost::contains(event, " -A INPUT_FIREWALL ") ||
           boost::contains(event, " -A FORWARD_FIREWALL ");
}

// Cuts the next thing to show off the events.
std::string takeEvent(Texts& events) {
    for (const auto& [name, run] : kKnownRuns) {
        if (boost::starts_with(events, run)) {
            events.erase(events.begin(), events.begin() + static_cast<long>(run.size()));
            return name;
        }
    }
    const auto isSame = isQuestion(events[0]) ? isQuestion : isRule;
    const auto end = std::find_if_not(events.begin(), events.end(), isSame);
    const long count = std::max(end - events.begin(), 1L);
    std::string text = events[0];
    if (count > 1) {
        text = std::to_string(count) + (isSame == isQuestion ? " questions" : " rules");
    }
    events.erase(events.begin(), events.begin() + count);
    return text;
}

}  // namespace

std::string lineText(const Json::Value& commands, const Json::Value& usual) {
    std::map<std::string, std::map<std::string, Texts>> adapters;
    for (const char* family : {"v4", "v6"}) {
        for (const std::string& adapter : commands[family].getMemberNames()) {
            adapters[adapter][family] =
                ruleTexts(unusualLines(commands[family][adapter], usual[family][adapter]));
        }
    }
    std::string text = mergedText(adapters["global"]["v4"], adapters["global"]["v6"]);
    adapters.erase("global");
    for (auto& [adapter, families] : adapters) {
        text += " | " + adapter + mergedText(families["v4"], families["v6"]);
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
