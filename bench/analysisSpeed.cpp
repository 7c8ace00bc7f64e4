// `zamofw check`, `matrix` and `diff --meaning` by the number of rules.

#include <algorithm>
#include <map>
#include <random>

#include "bench/firewall.h"
#include "bench/measure.h"
#include "zamofirewall/zamofirewall.h"

namespace {

constexpr int kSizes[] = {500, 1000, 2000, 4000};
constexpr int kRounds = 7;
constexpr double kDoubled = 2.5;

using Random = std::mt19937;

int upTo(Random& random, int last) {
    return std::uniform_int_distribution<int>(0, last)(random);
}

std::string host(Random& random) {
    return "10." + std::to_string(upTo(random, 3)) + "." + std::to_string(upTo(random, 255)) + "." +
           std::to_string(upTo(random, 255));
}

void addAddresses(Random& random, FW::FWRULE& rule) {
    rule.ipType = 0;
    rule.ipDirect = upTo(random, 19) == 0 ? 0 : 1;
    switch (upTo(random, 4)) {
        case 0:
            rule.ipGroup = 0;
            rule.ipList = {host(random)};
            break;
        case 1:
            rule.ipGroup = 1;
            rule.ipList = {host(random), std::to_string(16 + upTo(random, 14))};
            break;
        case 2: {
            const std::string begin = "10.9." + std::to_string(upTo(random, 255)) + ".";
            rule.ipGroup = 4;
            rule.ipList = {begin + std::to_string(upTo(random, 99)), begin + "200"};
            break;
        }
        case 3:
            rule.ipType = 1;
            rule.ipGroup = 0;
            rule.ipList = {"2001:db8::" + std::to_string(upTo(random, 9999))};
            break;
        default:
            rule.ipType = 2;
            rule.ipGroup = 5;
    }
}

// Hosts, networks, ranges and everybody; ports, lists and ranges of ports; allowed and denied.
FW::FWPROFILE mixedProfile(int rules, unsigned seed) {
    Random random(seed);
    FW::FWPROFILE profile = bench::profileWith(1);
    const FW::FWRULE model = profile.rules["eth0"].front();
    profile.rules["eth0"].clear();
    for (int i = 0; i < rules; ++i) {
        FW::FWRULE rule = model;
        rule.policy = upTo(random, 1) == 0 ? FW::FW_POLICY_ALLOW : FW::FW_POLICY_DENY;
        addAddresses(random, rule);
        rule.portGroup = 1;
        rule.protocol = 1 + upTo(random, 2);
        const int port = upTo(random, 9000);
        rule.portList = {std::to_string(port)};
        if (upTo(random, 3) == 0) {
            rule.portList = {std::to_string(port) + "-" + std::to_string(port + upTo(random, 900))};
        }
        profile.rules[i % 3 == 0 ? "eth1" : "eth0"].push_back(std::move(rule));
    }
    return profile;
}

// Ten rules of it changed places.
FW::FWPROFILE edited(FW::FWPROFILE profile) {
    Random random(7);
    auto& rules = profile.rules["eth0"];
    const int last = static_cast<int>(rules.size()) - 1;
    for (int i = 0; i < 10; ++i) {
        std::swap(rules[static_cast<std::size_t>(upTo(random, last))],
                  rules[static_cast<std::size_t>(upTo(random, last))]);
    }
    return profile;
}

std::string pathOf(const std::string& name, int rules) {
    return "/tmp/" + name + std::to_string(rules) + ".json";
}

void write(const FW::FWPROFILE& profile, const std::string& path) {
    Json::Value document;
    FW::ZAMOFW_JSON_DB().profileToJson(profile, document);
    bench::require(FW::jsonFileDump(document, path), "storing a profile");
}

// What the commands answer, with their exit statuses: a difference is no failure.
struct Work {
    std::string name;
    std::vector<std::string> words;
    int status;
};

std::vector<Work> worksWith(int rules) {
    const std::string before = pathOf("before", rules);
    return {{"check", {"check", before}, 0},
            {"matrix", {"matrix", before}, 0},
            {"diff --meaning of an edit", {"diff", "--meaning", before, pathOf("after", rules)}, 1},
            {"diff --meaning of unrelated profiles",
             {"diff", "--meaning", before, pathOf("other", rules)},
             1}};
}

double processorTime(const Work& work) {
    std::vector<std::string> command = {COMMAND};
    command.insert(command.end(), work.words.begin(), work.words.end());
    return bench::costOf([&] {
               bench::require(bench::startPlainly(command, /*read=*/true, work.status), work.name);
           })
        .processor;
}

using Times = std::map<std::string, std::map<int, bench::Samples>>;

Times measure() {
    Times times;
    for (int round = 0; round < kRounds; ++round) {
        for (const int rules : kSizes) {
            for (const Work& work : worksWith(rules)) {
                times[work.name][rules].push_back(processorTime(work));
            }
        }
    }
    return times;
}

void printRows(const std::string& name, const std::map<int, bench::Samples>& times) {
    const auto claim = [&name](int rules) {
        return "zamofw " + name + ", " + std::to_string(rules) + " rules";
    };
    bench::printRow(claim(1000), times.at(1000), "a second", {1000}, 1);
    for (const int rules : {1000, 2000, 4000}) {
        bench::printRow(
            claim(rules), times.at(rules), "half of them", times.at(rules / 2), kDoubled);
    }
}

}  // namespace

int main() {
    bench::store({bench::profileWith(1)});
    for (const int rules : kSizes) {
        const FW::FWPROFILE profile = mixedProfile(rules, 1);
        write(profile, pathOf("before", rules));
        write(edited(profile), pathOf("after", rules));
        write(mixedProfile(rules, 2), pathOf("other", rules));
    }
    Times times = measure();
    for (const Work& work : worksWith(kSizes[0])) {
        printRows(work.name, times[work.name]);
    }
}
