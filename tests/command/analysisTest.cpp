// Sets of packets against an evaluator that goes line by line, packet by packet, with the packets
// at every boundary of every line.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "command/analysis/difference.h"
#include "command/analysis/explanation.h"
#include "command/analysis/idleRules.h"
#include "command/analysis/intents.h"
#include "command/analysis/matrix.h"
#include "command/answers/assertAnswer.h"
#include "command/answers/meaning.h"
#include "tests/support/fakePlatform.h"
#include "tests/support/store.h"

namespace zamofw::analysis {
namespace {

using Texts = std::vector<std::string>;

Number number(const std::string& address) { return numberOf(parseAddress(address).value()); }

struct Country {
    const char* code;
    int family;
    const char* first;
    const char* last;
};
constexpr Country kCountries[] = {{"AA", 4, "10.0.1.0", "10.0.1.127"},
                                  {"AA", 4, "10.0.3.0", "10.0.3.255"},
                                  {"BB", 4, "10.0.1.64", "10.0.2.255"},
                                  {"AA", 6, "fd00::10", "fd00::1f"}};

// A line, read as plainly as can be: one condition per option.
class Line {
  public:
    Line(const PlannedLine& planned, int family) : planned_(&planned), last_(lastAddress(family)) {
        std::istringstream stream(planned.line);
        Texts words;
        for (std::string word; stream >> word;) {
            words.push_back(word);
        }
        target_ = words.back();
        for (std::size_t i = 0; i + 1 < words.size(); ++i) {
            read(words[i], words[i + 1], family);
        }
    }

    [[nodiscard]] const PlannedLine& planned() const { return *planned_; }
    [[nodiscard]] bool isLog() const { return target_ == "LOG"; }
    [[nodiscard]] bool isAllowed() const { return target_ != "DROP"; }
    [[nodiscard]] bool holds(const Packet& packet) const {
        return std::all_of(conditions_.begin(), conditions_.end(),
                           [&packet](const auto& condition) { return condition(packet); });
    }

    // The first and last numbers that the line says something about.
    std::set<Number> sources, destinations, ports, sourcePorts;

  private:
    using Condition = std::function<bool(const Packet&)>;
    using Test = std::function<bool(Number)>;

    void read(const std::string& option, const std::string& value, int family) {
        if (option == "-A") {
            const bool isForward = value == "FORWARD_FIREWALL";
            add([=](const Packet& packet) { return (packet.hook == Hook::kForward) == isForward; });
        } else if (option == "-i") {
            add([=](const Packet& packet) { return packet.in == value; });
        } else if (option == "-o") {
            add([=](const Packet& packet) {
                return packet.hook == Hook::kForward && packet.out == value;
            });
        } else if (option == "-p") {
            const bool isNumber = value.find_first_not_of("0123456789") == std::string::npos;
            const std::map<std::string, int> names = {
                {"tcp", 6}, {"udp", 17}, {"icmp", 1}, {"icmpv6", 58}, {"igmp", 2}};
            const int protocol = isNumber ? std::stoi(value) : names.at(value);
            add([=](const Packet& packet) { return packet.protocol == protocol; });
        } else if (option == "--state") {
            add([](const Packet& packet) { return packet.isEstablished; });
        } else if (option == "--icmpv6-type") {
            add([](const Packet&) { return false; });
        } else if (option == "-s" || option == "--src-range" || option == "--source-country") {
            add([test = addressTest(option, value, family, sources)](const Packet& packet) {
                return test(packet.source);
            });
        } else if (option == "-d" || option == "--dst-range" || option == "--destination-country") {
            add([test = addressTest(option, value, family, destinations)](const Packet& packet) {
                return test(packet.destination);
            });
        } else if (option == "--dport" || option == "--dports") {
            add([test = portTest(value, ports)](const Packet& packet) {
                return test(packet.port);
            });
        } else if (option == "--sport" || option == "--sports") {
            add([test = portTest(value, sourcePorts)](const Packet& packet) {
                return test(packet.sourcePort);
            });
        }
    }

    void add(Condition condition) { conditions_.push_back(std::move(condition)); }

    Test addressTest(const std::string& option, const std::string& value, int family,
                     std::set<Number>& bounds) const {
        if (option.find("country") != std::string::npos) {
            return countryTest(value, family, bounds);
        }
        const std::size_t dash = value.find('-');
        if (dash != std::string::npos) {
            return between(number(value.substr(0, dash)), number(value.substr(dash + 1)), bounds);
        }
        const std::size_t slash = value.find('/');
        Number mask = last_;
        if (slash != std::string::npos) {
            const std::string text = value.substr(slash + 1);
            const auto address = parseAddress(text);
            const int zeros = address ? 0 : (family == 4 ? 32 : 128) - std::stoi(text);
            mask = address ? numberOf(*address) : last_ >> zeros << zeros;
        }
        const Number base = number(value.substr(0, slash)) & mask;
        bounds.insert({base, base | (last_ & ~mask)});
        return [=](Number address) { return (address & mask) == base; };
    }

    static Test between(Number first, Number last, std::set<Number>& bounds) {
        bounds.insert({first, last});
        return [=](Number value) { return first <= value && value <= last; };
    }

    static Test anyOf(const std::vector<Test>& tests) {
        return [=](Number value) {
            return std::any_of(tests.begin(), tests.end(),
                               [value](const Test& test) { return test(value); });
        };
    }

    static Test portTest(const std::string& value, std::set<Number>& bounds) {
        std::istringstream parts(value);
        std::vector<Test> tests;
        for (std::string part; std::getline(parts, part, ',');) {
            const std::size_t colon = part.find(':');
            tests.push_back(between(
                std::stoul(part),
                std::stoul(colon == std::string::npos ? part : part.substr(colon + 1)), bounds));
        }
        return anyOf(tests);
    }

    static Test countryTest(const std::string& codes, int family, std::set<Number>& bounds) {
        std::vector<Test> tests;
        for (const Country& country : kCountries) {
            if (codes.find(country.code) != std::string::npos && country.family == family) {
                tests.push_back(between(number(country.first), number(country.last), bounds));
            }
        }
        return anyOf(tests);
    }

    const PlannedLine* planned_;
    Number last_;
    std::string target_;
    std::vector<Condition> conditions_;
};

void writeCountries() {
    for (const Country& country : kCountries) {
        std::ofstream file(std::string("/usr/share/xt_geoip/") + country.code +
                               (country.family == 4 ? ".iv4" : ".iv6"),
                           std::ios::app | std::ios::binary);
        for (const char* const end : {country.first, country.last}) {
            const Address address = parseAddress(end).value();
            for (std::size_t word = 0; word < address.size(); word += 4) {
                for (std::size_t byte = 4; byte-- > 0;) {
                    file.put(static_cast<char>(address.bytes[word + byte]));
                }
            }
        }
    }
}

// The lines of one family of a plan.
class Oracle {
  public:
    Oracle(const Plan& plan, int family) {
        for (const PlannedLine& line : family == 4 ? plan.v4 : plan.v6) {
            lines_.emplace_back(line, family);
        }
    }

    [[nodiscard]] const std::vector<Line>& lines() const { return lines_; }

    // The index of the line that decides; none at the end.
    [[nodiscard]] std::optional<std::size_t> deciding(const Packet& packet,
                                                      const Origin* without = nullptr) const {
        for (std::size_t i = 0; i < lines_.size(); ++i) {
            const bool isLeftOut = without != nullptr && originOf(lines_[i].planned()) == *without;
            if (!lines_[i].isLog() && !isLeftOut && lines_[i].holds(packet)) {
                return i;
            }
        }
        return std::nullopt;
    }

    [[nodiscard]] bool isAllowed(const Packet& packet, const Origin* without = nullptr) const {
        const std::optional<std::size_t> line = deciding(packet, without);
        return !line || lines_[*line].isAllowed();
    }

    // The bounds of the rules' lines, and the numbers beside them.
    void collect(std::set<Number> Line::*field, Number last, std::set<Number>& numbers) const {
        for (const Line& line : lines_) {
            if (line.planned().kind != LineKind::kBuiltIn) {
                for (const Number& bound : line.*field) {
                    numbers.insert(
                        {bound == 0 ? 0 : bound - 1, bound, bound == last ? last : bound + 1});
                }
            }
        }
    }

  private:
    std::vector<Line> lines_;
};

Number unnamedAddress(int family) { return number(family == 4 ? "203.0.113.8" : "2001:db8::77"); }

constexpr std::uint8_t kGre = 47;
constexpr std::uint8_t kNamedByNone = 132;

// New packets at all boundaries.
std::vector<Packet> packetsAround(const std::vector<const Oracle*>& oracles, int family) {
    const auto collected = [&](std::set<Number> Line::*field, Number last, Number unnamed) {
        std::set<Number> numbers = {unnamed};
        for (const Oracle* const oracle : oracles) {
            oracle->collect(field, last, numbers);
        }
        return numbers;
    };
    const Number unnamed = unnamedAddress(family);
    const Number last = lastAddress(family);
    std::set<Number> sources = collected(&Line::sources, last, unnamed);
    std::set<Number> destinations = collected(&Line::destinations, last, unnamed);
    const std::set<Number> ports = collected(&Line::ports, 65535, 40000);
    const std::set<Number> sourcePorts = collected(&Line::sourcePorts, 65535, 40000);
    const bool hasPattern = std::any_of(oracles.begin(), oracles.end(), [](const Oracle* oracle) {
        return std::any_of(oracle->lines().begin(), oracle->lines().end(), [](const Line& line) {
            const std::string& text = line.planned().line;
            return text.find("/::ff ") != std::string::npos ||
                   text.find("/0.0.0.255 ") != std::string::npos ||
                   text.find("/255.0.255.255 ") != std::string::npos;
        });
    });
    if (hasPattern) {
        for (std::set<Number>* const numbers : {&sources, &destinations}) {
            for (const Number& bound : std::set<Number>(*numbers)) {
                numbers->insert({(bound & ~Number{255}) | 9, bound ^ Number{1} << 8});
            }
        }
    }
    std::vector<Packet> packets;
    for (const std::uint8_t protocol : {kTcp, kUdp, icmpOf(family), kIgmp, kGre, kNamedByNone}) {
        for (const Number& source : sources) {
            for (const Number& destination : destinations) {
                for (const Number& port : hasPorts(protocol) ? ports : std::set<Number>{0}) {
                    for (const Number& from :
                         hasPorts(protocol) ? sourcePorts : std::set<Number>{0}) {
                        for (const char* const in : {"eth0", "gone", "eth1", "global"}) {
                            for (const char* const out : {"", "eth0", "gone", "global"}) {
                                Packet packet;
                                packet.family = family;
                                packet.in = in;
                                packet.hook = *out == '\0' ? Hook::kInput : Hook::kForward;
                                packet.out = out;
                                packet.protocol = protocol;
                                packet.source = source;
                                packet.destination = destination;
                                packet.port = port;
                                packet.sourcePort = from;
                                packets.push_back(packet);
                            }
                        }
                    }
                }
            }
        }
    }
    return packets;
}

// Few values, so that rules overlap.
class Generator {
  public:
    explicit Generator(unsigned seed) : random_(seed) {}

    FW::FWPROFILE profile() {
        FW::FWPROFILE profile;
        profile.name = "home";
        for (const char* const adapter : {"eth0", "global", "gone"}) {
            for (std::size_t rules = number(4); rules > 0; --rules) {
                profile.rules[adapter].push_back(rule());
            }
            if (oneIn(2)) {
                profile.adapterPolicyMap[adapter] = static_cast<FW::FW_POLICY>(number(3));
            }
        }
        return profile;
    }

    // Changes a rule or two.
    void change(FW::FWPROFILE& profile) {
        for (auto& [adapter, rules] : profile.rules) {
            if (!rules.empty() && oneIn(2)) {
                FW::FWRULE& changed = rules[number(rules.size())];
                changed = oneIn(2) ? rule() : rules[number(rules.size())];
            }
        }
        if (oneIn(3)) {
            profile.adapterPolicyMap["eth0"] = static_cast<FW::FW_POLICY>(number(3));
        }
    }

    FW::FWRULE rule() {
        FW::FWRULE rule;
        rule.enable = !oneIn(9);
        rule.adapterDirect = oneIn(6) ? 0 : 1;
        rule.policy = static_cast<FW::FW_POLICY>(number(2));
        rule.blLog = oneIn(5);
        rule.chainList = oneIn(6) ? std::set<std::string>{"INPUT_FIREWALL"} : rule.chainList;
        rule.ipDirect = oneIn(4) ? 0 : 1;
        const bool v6 = oneIn(3);
        rule.ipType = v6 ? FW::FW_IP_TYPE_V6 : FW::FW_IP_TYPE_V4;
        switch (number(6)) {
            case 0:
                rule.ipList = {v6 ? "fd00::17" : "10.0.1.9"};
                break;
            case 1:
                rule.ipGroup = FW::FW_IP_GROUP_SUBNET;
                rule.ipList = v6 ? pick({{"fd00::", "64"}, {"fd00::10", "124"}, {"::9", "::ff"}})
                                 : pick({{"10.0.0.0", "16"},
                                         {"10.0.1.0", "255.255.255.0"},
                                         {"0.0.0.9", "0.0.0.255"},
                                         {"10.0.0.9", "255.0.255.255"}});
                break;
            case 2:
                rule.ipGroup = FW::FW_IP_GROUP_RANGE;
                rule.ipList = v6 ? Texts{"fd00::8", "fd00::18"}
                                 : pick({{"10.0.1.9", "10.0.2.20"},
                                         {"0.0.0.0", "10.0.1.64"},
                                         {"10.0.2.2", "10.0.2.1"}});
                break;
            case 3:
                rule.ipGroup = FW::FW_IP_GROUP_COUNTRY;
                rule.ipList = pick({{"AA"}, {"BB"}, {"AA", "BB"}, {"AA", "CC"}});
                break;
            default:
                rule.ipGroup = FW::FW_IP_GROUP_ALL;
                rule.ipType = static_cast<std::int32_t>(number(3));
        }
        rule.portGroup = FW::FW_PORT_GROUP_PORT;
        rule.portDirect = oneIn(4) ? 1 : 0;
        rule.protocol = std::vector<std::int32_t>{1, 2, 3, 3, 4, 32}[number(6)];
        rule.portList = pick({{"22"}, {"22", "80-90"}, {"0-65535"}, {"85"}, {"22-22", "86-443"}});
        if (oneIn(4)) {
            rule.portGroup = FW::FW_PORT_GROUP_ALL;
        } else if (oneIn(8)) {
            rule.portGroup = FW::FW_PORT_GROUP_SERVICE;
            rule.portList = pick({{"ssh"}, {"vpn_server_pptp"}, {"dhcp"}});
        }
        rule.name = "rule " + std::to_string(count_++);
        return rule;
    }

    std::size_t number(std::size_t below) { return random_() % below; }
    bool oneIn(std::size_t count) { return number(count) == 0; }

  private:
    Texts pick(const std::vector<Texts>& lists) { return lists[number(lists.size())]; }

    std::mt19937 random_;
    int count_ = 0;
};

class Analysis : public testing::Test {
  protected:
    void SetUp() override {
        test::clearFiles();
        test::clearPlatform();
        test::platform().interfaces = {"eth0", "eth1"};
        test::writeServices();
        writeCountries();
    }

    std::unique_ptr<const Meaning> meaning(const FW::FWPROFILE& profile) {
        auto made = meaningOf(profile, profile.name, reader_);
        EXPECT_TRUE(made->model.unknown.empty());
        return made;
    }

    ModelReader reader_{countryRanges()};
};

// A longer run is built with more of them.
#ifndef ANALYSIS_ROUNDS
#define ANALYSIS_ROUNDS 4
#define ANALYSIS_SEED 1
#endif

std::string textOf(const Packet& packet) {
    std::ostringstream text;
    text << "in " << *packet.in << " out " << *packet.out << " protocol "
         << unsigned{packet.protocol} << " " << addressText(packet.source, packet.family) << " "
         << static_cast<unsigned>(packet.sourcePort) << " -> "
         << addressText(packet.destination, packet.family) << " "
         << static_cast<unsigned>(packet.port);
    return text.str();
}

void expectExplained(const Model& model, const Oracle& oracle, const Packet& packet) {
    const Explanation answer = explain(
        model, {packet, true, packet.source, packet.destination, packet.sourcePort, packet.port});
    const std::optional<std::size_t> line = oracle.deciding(packet);
    ASSERT_EQ(answer.decider, line ? originOf(oracle.lines()[*line].planned()) : Origin())
        << textOf(packet);
    EXPECT_EQ(answer.isAllowed, oracle.isAllowed(packet));
    std::vector<Origin> log;
    std::vector<Origin> next;
    for (std::size_t i = 0; i < oracle.lines().size(); ++i) {
        const Line& other = oracle.lines()[i];
        const bool isBefore = !line || i < *line;
        if (other.holds(packet) &&
            (other.isLog() ? isBefore : !isBefore && other.isAllowed() != answer.isAllowed)) {
            std::vector<Origin>& list = other.isLog() ? log : next;
            if (std::find(list.begin(), list.end(), originOf(other.planned())) == list.end()) {
                list.push_back(originOf(other.planned()));
            }
        }
    }
    EXPECT_EQ(answer.log, log);
    EXPECT_EQ(answer.next, next);
}

// Which rules each packet reaches and what would become of it without them.
struct Found {
    std::vector<Origin> rules;
    std::vector<Origin> reached;
    std::vector<Origin> needed;
    std::vector<std::pair<Origin, std::vector<Origin>>> deciders;
};

void addOnce(const Origin& origin, std::vector<Origin>& list) {
    if (std::find(list.begin(), list.end(), origin) == list.end()) {
        list.push_back(origin);
    }
}

void study(const Oracle& oracle, const std::vector<Packet>& packets, Found& found) {
    for (const Line& line : oracle.lines()) {
        const Origin origin = originOf(line.planned());
        if (origin.kind == Origin::Kind::kRule) {
            addOnce(origin, found.rules);
        }
    }
    for (const Packet& packet : packets) {
        const std::optional<std::size_t> line = oracle.deciding(packet);
        if (!line) {
            continue;
        }
        const Origin decider = originOf(oracle.lines()[*line].planned());
        if (decider.kind == Origin::Kind::kRule) {
            addOnce(decider, found.reached);
            if (std::find(found.needed.begin(), found.needed.end(), decider) ==
                    found.needed.end() &&
                oracle.isAllowed(packet) != oracle.isAllowed(packet, &decider)) {
                found.needed.push_back(decider);
            }
        }
        for (std::size_t i = *line + 1; i < oracle.lines().size(); ++i) {
            const Origin later = originOf(oracle.lines()[i].planned());
            if (!(later == decider) && !oracle.lines()[i].isLog() &&
                oracle.lines()[i].holds(packet)) {
                const auto entry =
                    std::find_if(found.deciders.begin(), found.deciders.end(),
                                 [&later](const auto& known) { return known.first == later; });
                std::vector<Origin>& by =
                    entry == found.deciders.end()
                        ? found.deciders.emplace_back(later, std::vector<Origin>()).second
                        : entry->second;
                addOnce(decider, by);
            }
        }
    }
}

bool has(const std::vector<Origin>& list, const Origin& origin) {
    return std::find(list.begin(), list.end(), origin) != list.end();
}

void expectIdle(const IdleRules& idle, const Found& found) {
    for (const Origin& rule : found.rules) {
        const auto shadowed =
            std::find_if(idle.shadowed.begin(), idle.shadowed.end(),
                         [&rule](const ShadowedRule& entry) { return entry.rule == rule; });
        ASSERT_EQ(shadowed == idle.shadowed.end(), has(found.reached, rule)) << originText(rule);
        if (shadowed == idle.shadowed.end()) {
            ASSERT_EQ(has(idle.redundant, rule), !has(found.needed, rule)) << originText(rule);
            continue;
        }
        std::size_t deciders = 0;
        for (const auto& [later, by] : found.deciders) {
            if (later == rule) {
                deciders = by.size();
                for (const Origin& origin : by) {
                    EXPECT_TRUE(has(shadowed->by, origin)) << originText(origin);
                }
            }
        }
        EXPECT_EQ(shadowed->by.size(), deciders) << originText(rule);
    }
}

TEST_F(Analysis, ExplainsEveryPacketAndFindsIdleRules) {
    Generator generator(ANALYSIS_SEED);
    std::size_t shadowed = 0;
    std::size_t redundant = 0;
    for (int round = 0; round < ANALYSIS_ROUNDS; ++round) {
        const auto judged = meaning(generator.profile());
        Found found;
        for (const int family : {4, 6}) {
            const Oracle oracle(judged->plan, family);
            const std::vector<Packet> packets = packetsAround({&oracle}, family);
            for (std::size_t i = 0; i < packets.size(); i += 1 + packets.size() / 300) {
                Packet packet = packets[i];
                packet.isEstablished = generator.oneIn(8);
                expectExplained(judged->model, oracle, packet);
            }
            study(oracle, packets, found);
        }
        const IdleRules idle = idleRules(judged->model);
        ASSERT_NO_FATAL_FAILURE(expectIdle(idle, found)) << planLinesWithOrigins(judged->plan);
        shadowed += idle.shadowed.size();
        redundant += idle.redundant.size();
    }
    EXPECT_GT(shadowed, 0U);
    EXPECT_GT(redundant, 0U);
}

// GRE is a protocol of its own only where a line names it.
std::string nameOf(const Packet& packet, const std::string& lines) {
    const bool isNamed = packet.protocol != kNamedByNone &&
                         (packet.protocol != kGre || lines.find("-p 47 ") != std::string::npos);
    return isNamed ? protocolName(packet.protocol, packet.family) : "other";
}

bool allows(const SourceClass& entry, const Packet& packet, const std::string& protocolName) {
    return std::any_of(entry.allowed.begin(), entry.allowed.end(),
                       [&](const AllowedProtocol& protocol) {
                           return protocol.name == protocolName &&
                                  (!protocol.ports || contains(*protocol.ports, packet.port));
                       });
}

TEST_F(Analysis, MatrixCoversEverySourceOnce) {
    Generator generator(ANALYSIS_SEED + 1);
    std::size_t listed = 0;
    for (int round = 0; round < ANALYSIS_ROUNDS; ++round) {
        const auto judged = meaning(generator.profile());
        std::vector<SourceClass> classes;
        try {
            classes = matrix(judged->model, {});
        } catch (const Failure&) {
            continue;  // of a mask that leaves too many ranges
        }
        ++listed;
        const std::string lines = planLines(judged->plan);
        std::set<std::string> names = interfacesOf(judged->model);
        names.insert("global");
        for (const int family : {4, 6}) {
            const Oracle oracle(judged->plan, family);
            for (const Packet& packet : packetsAround({&oracle}, family)) {
                const bool isOther = packet.hook == Hook::kInput || packet.out == "global";
                if (!isOther || packet.sourcePort % 40000 != 0 || packet.in == "eth1" ||
                    packet.destination != unnamedAddress(family)) {
                    continue;
                }
                std::vector<const SourceClass*> holding;
                for (const SourceClass& entry : classes) {
                    if (entry.in == packet.in && entry.hook == packet.hook &&
                        entry.family == family && contains(entry.sources, packet.source)) {
                        holding.push_back(&entry);
                    }
                }
                if (holding.empty() && names.count(*packet.in) == 0) {
                    continue;
                }
                ASSERT_EQ(holding.size(), 1U) << textOf(packet);
                ASSERT_EQ(allows(*holding[0], packet, nameOf(packet, lines)),
                          oracle.isAllowed(packet))
                    << textOf(packet) << "\n"
                    << planLines(judged->plan);
            }
        }
    }
    EXPECT_GT(listed, 0U);
}

bool holds(const Change& change, const Packet& packet, const std::string& protocol) {
    const auto isIn = [](const analysis::SharedIntervals& set, Number value) {
        return !set || contains(*set, value);
    };
    return change.family == packet.family && change.in == packet.in && change.hook == packet.hook &&
           change.out == *packet.out && change.protocol == protocol &&
           contains(*change.sources, packet.source) &&
           isIn(change.destinations, packet.destination) &&
           isIn(change.sourcePorts, packet.sourcePort) && isIn(change.ports, packet.port);
}

TEST_F(Analysis, DifferenceHoldsEachChangedPacketOnce) {
    Generator generator(ANALYSIS_SEED + 2);
    std::size_t changed = 0;
    for (int round = 0; round < ANALYSIS_ROUNDS; ++round) {
        FW::FWPROFILE profile = generator.profile();
        const auto before = meaning(profile);
        generator.change(profile);
        const auto after = meaning(profile);
        std::vector<Change> changes;
        try {
            changes = difference(before->model, after->model);
        } catch (const Failure&) {
            continue;
        }
        const std::string lines = planLines(before->plan) + planLines(after->plan);
        std::set<std::string> names = interfacesOf(before->model);
        names.merge(interfacesOf(after->model));
        for (const int family : {4, 6}) {
            const Oracle one(before->plan, family);
            const Oracle other(after->plan, family);
            const auto isNamedInterface = [&names](const std::string& name) {
                return name.empty() || name == "global" || names.count(name) != 0;
            };
            for (const Packet& packet : packetsAround({&one, &other}, family)) {
                if (!isNamedInterface(*packet.in) || !isNamedInterface(*packet.out)) {
                    continue;
                }
                const std::string protocol = nameOf(packet, lines);
                std::vector<const Change*> holding;
                for (const Change& change : changes) {
                    if (holds(change, packet, protocol)) {
                        holding.push_back(&change);
                    }
                }
                const bool isAllowed = other.isAllowed(packet);
                ASSERT_EQ(holding.size(), one.isAllowed(packet) != isAllowed ? 1U : 0U)
                    << textOf(packet) << "\n"
                    << planLines(before->plan) << "\n"
                    << planLines(after->plan);
                ASSERT_TRUE(holding.empty() || holding[0]->isAllowedAfter == isAllowed);
            }
            for (const Change& change : changes) {
                if (change.family == family) {
                    ++changed;
                    EXPECT_TRUE(holds(change, change.witness, change.protocol));
                    EXPECT_EQ(other.isAllowed(change.witness), change.isAllowedAfter);
                    EXPECT_NE(one.isAllowed(change.witness), change.isAllowedAfter);
                }
            }
        }
    }
    EXPECT_GT(changed, 0U);
}

TEST_F(Analysis, IntentsHoldForEveryPacketOrFailWithOne) {
    Generator generator(ANALYSIS_SEED + 3);
    std::size_t broken = 0;
    std::size_t kept = 0;
    for (int round = 0; round < ANALYSIS_ROUNDS; ++round) {
        const auto judged = meaning(generator.profile());
        FW::FWPROFILE wanted;
        std::vector<Intent> intents;
        for (int i = 0; i < 2; ++i) {
            FW::FWRULE rule = generator.rule();
            rule.enable = true;
            rule.adapterDirect = 1;
            rule.chainList = {"FORWARD_FIREWALL", "INPUT_FIREWALL"};
            wanted.rules["global"].push_back(rule);
            Intent intent;
            intent.isAllowed = generator.oneIn(2);
            if (generator.oneIn(2)) {
                intent.in = generator.oneIn(2) ? "eth0" : "eth1";
            }
            if (generator.oneIn(3)) {
                intent.out = generator.oneIn(2) ? "gone" : "eth0";
            }
            intents.push_back(intent);
        }
        const auto intended = meaning(wanted);
        const auto found = violations(judged->model, intended->model, intents);
        std::vector<bool> isBroken(intents.size());
        for (const int family : {4, 6}) {
            const Oracle oracle(judged->plan, family);
            const Oracle meant(intended->plan, family);
            for (const Packet& packet : packetsAround({&oracle, &meant}, family)) {
                const bool isAllowed = oracle.isAllowed(packet);
                for (const Line& line : meant.lines()) {
                    const std::size_t i = line.planned().position.value_or(0) - 1;
                    if (i < intents.size() && !isBroken[i] && isAllowed != intents[i].isAllowed &&
                        (!intents[i].in || intents[i].in == packet.in) &&
                        (!intents[i].out ||
                         (packet.hook == Hook::kForward && intents[i].out == packet.out)) &&
                        line.holds(packet)) {
                        isBroken[i] = true;
                    }
                }
            }
            for (std::size_t i = 0; i < intents.size(); ++i) {
                if (found[i] && found[i]->witness.family == family) {
                    Packet witness = found[i]->witness;
                    witness.out = witness.out.value_or("");
                    EXPECT_NE(oracle.isAllowed(witness), intents[i].isAllowed) << textOf(witness);
                    EXPECT_TRUE(std::any_of(
                        meant.lines().begin(), meant.lines().end(), [&](const Line& line) {
                            return line.planned().position == i + 1 && line.holds(witness);
                        }));
                }
            }
        }
        for (std::size_t i = 0; i < intents.size(); ++i) {
            ASSERT_EQ(found[i].has_value(), isBroken[i]) << i << "\n"
                                                         << planLines(judged->plan) << "\n"
                                                         << planLines(intended->plan);
            ++(isBroken[i] ? broken : kept);
        }
    }
    EXPECT_GT(broken, 0U);
    EXPECT_GT(kept, 0U);
}

// The least named source and port are both taken, and so is every other source: what reaches the
// last rule is found only by looking at both halves of what the first rule leaves.
TEST_F(Analysis, LooksAtBothHalvesOfWhatARuleLeaves) {
    const auto rule = [](const char* first, const char* last, const char* ports) {
        FW::FWRULE made = test::portRule(FW::FW_POLICY_DENY, {ports});
        made.ipType = FW::FW_IP_TYPE_V4;
        made.ipGroup = FW::FW_IP_GROUP_RANGE;
        made.ipList = {first, last};
        return made;
    };
    const char* const high = "50001-65535";
    FW::FWPROFILE profile;
    std::vector<FW::FWRULE>& rules = profile.rules["eth0"];
    rules = {rule("10.0.0.0", "10.255.255.255", "0-50000"),
             rule("0.0.0.0", "9.255.255.255", high),
             rule("0.0.0.0", "9.255.255.255", "0-65535"),
             rule("11.0.0.0", "255.255.255.255", high),
             rule("11.0.0.0", "255.255.255.255", "0-65535"),
             rule("0.0.0.0", "255.255.255.255", "0-65535")};
    EXPECT_TRUE(idleRules(meaning(profile)->model).shadowed.empty());

    rules.insert(rules.begin(), rule("10.0.0.0", "10.255.255.255", high));
    const IdleRules idle = idleRules(meaning(profile)->model);
    ASSERT_EQ(idle.shadowed.size(), 1U);
    EXPECT_EQ(idle.shadowed[0].rule.position, 7U);
    EXPECT_EQ(idle.shadowed[0].by.size(), 6U);
}

// One address is all that the rules share, at one end of a range or at the other.
TEST_F(Analysis, NeedsARuleForTheLastAddressOfItsRange) {
    for (const char* const shared : {"10.0.0.5", "10.0.0.6", "10.0.0.8"}) {
        FW::FWRULE range = test::portRule(FW::FW_POLICY_ALLOW, {"22"});
        range.ipType = FW::FW_IP_TYPE_V4;
        range.ipGroup = FW::FW_IP_GROUP_RANGE;
        range.ipList = {"10.0.0.5", "10.0.0.8"};
        FW::FWRULE host = range;
        host.policy = FW::FW_POLICY_DENY;
        host.ipList = {shared, shared};
        FW::FWPROFILE profile;
        profile.rules["eth0"] = {range, host};
        EXPECT_TRUE(idleRules(meaning(profile)->model).redundant.empty()) << shared;
    }
}

TEST_F(Analysis, LeavesOutWhatItDoesNotKnow) {
    const auto unknownOf = [this](const std::string& line) {
        const Plan plan = {"home", {{line, "eth0", LineKind::kRule, 1, ""}}, {}};
        return reader_.read(plan).unknown.size();
    };
    const std::string head = "-t filter -A INPUT_FIREWALL ";
    EXPECT_EQ(unknownOf(head + "-i eth0 -s 10.0.0.0/8 -p tcp -m multiport --dports 1,2:3 -j DROP"),
              0U);
    EXPECT_EQ(unknownOf(head + "-m iprange --src-range 10.0.0.2-10.0.0.1 -j DROP"), 0U);
    for (const char* const line : {
             "-t nat -A INPUT_FIREWALL -j DROP",
             "-t filter -A INPUT -j DROP",
             "-t filter -A INPUT_FIREWALL -j ACCEPT",
             "-t filter -A INPUT_FIREWALL -i eth0 ",
             "-t filter -A INPUT_FIREWALL -s 10.0.0.1,10.0.0.2 -j DROP",
             "-t filter -A INPUT_FIREWALL -s nas.example -j DROP",
             "-t filter -A INPUT_FIREWALL -s fd00::1 -j DROP",
             "-t filter -A INPUT_FIREWALL ! -s 10.0.0.1 -j DROP",
             "-t filter -A INPUT_FIREWALL -s 10.0.0.1/33 -j DROP",
             "-t filter -A INPUT_FIREWALL -s 10.0.0.1 -s 10.0.0.2 -j DROP",
             "-t filter -A INPUT_FIREWALL -m geoip --source-country ZZ -j DROP",
             "-t filter -A INPUT_FIREWALL -p tcp --dport 010 -j DROP",
             "-t filter -A INPUT_FIREWALL -p tcp --dport 1,2 -j DROP",
             "-t filter -A INPUT_FIREWALL -p tcp -m multiport --dports 9:1 -j DROP",
             "-t filter -A INPUT_FIREWALL -p 47 --dport 1 -j DROP",
             "-t filter -A INPUT_FIREWALL -m limit --limit 1 -j DROP",
         }) {
        EXPECT_EQ(unknownOf(line), 1U) << line;
    }
}

TEST(Intents, AreReadWithAndWithoutDashes) {
    const Vocabulary vocabulary = {{{"ssh", FW::FW_PROTOCOL_TCP}}, {}};
    const auto intents = intentsFromText(
        "# the door\n\n"
        "allow tcp 22,80 from 192.168.1.0/24 in eth0 # for the LAN\n"
        "deny --port 3306 in eth1 out eth2\n"
        "deny service ssh --from=any\n",
        "intents", vocabulary);
    ASSERT_EQ(intents.size(), 3U);
    EXPECT_EQ(intents[0].line, 3U);
    EXPECT_EQ(intents[0].text, "allow tcp 22,80 from 192.168.1.0/24 in eth0");
    EXPECT_TRUE(intents[0].intent.isAllowed);
    EXPECT_EQ(intents[0].intent.in, "eth0");
    EXPECT_EQ(intents[0].rule.portList, (Texts{"22", "80"}));
    EXPECT_EQ(intents[0].rule.protocol, FW::FW_PROTOCOL_TCP);
    EXPECT_EQ(intents[0].rule.ipList, (Texts{"192.168.1.0", "24"}));
    EXPECT_EQ(intents[1].intent.out, "eth2");
    EXPECT_EQ(intents[1].rule.protocol, FW::FW_PROTOCOL_BOTH);
    EXPECT_EQ(intents[2].rule.portList, Texts{"ssh"});
    for (const char* const wrong :
         {"reject tcp 22", "allow tcp 22 in", "allow tcp 22 in a in b", "allow fromm 10.0.0.1",
          "allow --log", "none", "allow port x"}) {
        EXPECT_THROW((void)intentsFromText(wrong, "intents", vocabulary), Failure) << wrong;
    }
}

}  // namespace
}  // namespace zamofw::analysis
