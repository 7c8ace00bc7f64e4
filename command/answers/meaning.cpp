#include "command/answers/meaning.h"

#include <map>
#include <memory>
#include <utility>

#include "command/analysis/boxSpace.h"
#include "command/console.h"
#include "command/words/quoting.h"
#include "command/words/values.h"
#include "zamofirewall/geoip.h"

namespace zamofw {
namespace {

using analysis::Interval;
using analysis::Intervals;

// What a line of text shows of a list.
constexpr std::size_t kMostShown = 8;

std::optional<Intervals> readCountry(const std::string& code, int family) {
    Json::Value ranges;
    if (!FW::FW_GEOIP().countryIPGet(code, family == 6, ranges)) {
        return std::nullopt;
    }
    Intervals intervals;
    for (const Json::Value& range : ranges) {
        const auto first = parseAddress(range["ip_begin"].asString());
        const auto last = parseAddress(range["ip_end"].asString());
        if (first && last && !(last->bytes < first->bytes)) {
            intervals.push_back({analysis::numberOf(*first), analysis::numberOf(*last)});
        }
    }
    return analysis::normalized(std::move(intervals));
}

template <typename Show>
std::string listText(const Intervals& intervals, Show show) {
    std::string text;
    std::size_t count = 0;
    for (const Interval& interval : intervals) {
        if (count++ == kMostShown) {
            return text + " and " + std::to_string(intervals.size() - kMostShown) + " more";
        }
        text += (text.empty() ? "" : ", ") + show(interval.first) +
                (interval.first == interval.last ? "" : "-" + show(interval.last));
    }
    return text;
}

unsigned plain(analysis::Number number) {
    return static_cast<unsigned>(number);
}

}  // namespace

analysis::CountryRanges countryRanges() {
    using Known = std::map<std::pair<std::string, int>, std::optional<Intervals>>;
    return [known = std::make_shared<Known>()](const std::string& code, int family) {
        const auto [entry, isNew] = known->try_emplace({code, family});
        if (isNew) {
            entry->second = readCountry(code, family);
        }
        return entry->second;
    };
}

std::unique_ptr<const Meaning> meaningOf(const FW::FWPROFILE& profile,
                                         const std::string& name,
                                         analysis::ModelReader& reader) {
    auto meaning = std::make_unique<Meaning>();
    meaning->profile = name;
    meaning->plan = planOfAllAdapters(profile);
    meaning->model = reader.read(meaning->plan);
    return meaning;
}

std::string unknownText(const analysis::UnknownLine& unknown) {
    return "the line " + shown(unknown.line->line) + " of " + originText(*unknown.line) +
           " is not understood";
}

void requireKnown(const Meaning& meaning) {
    if (!meaning.model.unknown.empty()) {
        failed(
            meaning.profile + ": " + unknownText(meaning.model.unknown.front()) +
                ", so that nothing can be said about all packets",
            "`zamofw check` says what is wrong with a rule; rules of other tables and chains are "
            "not followed");
    }
}

std::string originText(const analysis::Origin& origin) {
    switch (origin.kind) {
        case analysis::Origin::Kind::kBuiltIn:
            return "a built-in line";
        case analysis::Origin::Kind::kEnd:
            return "no rule";
        case analysis::Origin::Kind::kDefault:
            return "the default policy of " + origin.adapter;
        case analysis::Origin::Kind::kRule:
            break;
    }
    return "rule " + std::to_string(origin.position.value_or(0)) + " of " + origin.adapter +
           (origin.name.empty() ? "" : " (" + origin.name + ")");
}

const char* kindName(analysis::Origin::Kind kind) {
    switch (kind) {
        case analysis::Origin::Kind::kBuiltIn:
            return "built-in";
        case analysis::Origin::Kind::kRule:
            return "rule";
        case analysis::Origin::Kind::kDefault:
            return "default";
        case analysis::Origin::Kind::kEnd:
            return "end";
    }
    return "";
}

const char* verdictName(bool isAllowed) {
    return isAllowed ? "allow" : "deny";
}

const char* hookName(analysis::Hook hook) {
    return hook == analysis::Hook::kInput ? "INPUT" : "FORWARD";
}

Json::Value placeJson(const analysis::Origin& origin) {
    Json::Value place;
    place["adapter"] = origin.adapter;
    place["position"] =
        origin.position ? Json::Value(Json::UInt64{*origin.position}) : Json::Value();
    return place;
}

Json::Value addressesJson(const Intervals& addresses, int family) {
    Json::Value list(Json::arrayValue);
    for (const Interval& interval : addresses) {
        Json::Value& pair = list.append(Json::arrayValue);
        pair.append(analysis::addressText(interval.first, family));
        pair.append(analysis::addressText(interval.last, family));
    }
    return list;
}

Json::Value portsJson(const Intervals& ports) {
    Json::Value list(Json::arrayValue);
    for (const Interval& interval : ports) {
        Json::Value& pair = list.append(Json::arrayValue);
        pair.append(plain(interval.first));
        pair.append(plain(interval.last));
    }
    return list;
}

Json::Value placedPacketJson(const analysis::Packet& packet, const std::string& protocol) {
    const bool isForwarded = packet.hook == analysis::Hook::kForward;
    Json::Value json;
    json["source"] = analysis::addressText(packet.source, packet.family);
    json["destination"] = analysis::addressText(packet.destination, packet.family);
    json["protocol"] = protocol;
    if (analysis::hasPorts(packet.protocol)) {
        json["source_port"] = plain(packet.sourcePort);
        json["port"] = plain(packet.port);
    }
    json["hook"] = hookName(packet.hook);
    json["in"] = packet.in.value_or(analysis::Interfaces::kOther);
    json["out"] = isForwarded ? Json::Value(packet.out.value_or(analysis::Interfaces::kOther))
                              : Json::Value();
    return json;
}

std::string addressesText(const Intervals& addresses, int family) {
    if (addresses == Intervals{{0, analysis::lastAddress(family)}}) {
        return "any";
    }
    return listText(addresses, [family](analysis::Number number) {
        return analysis::addressText(number, family);
    });
}

std::string portsText(const Intervals& ports) {
    return listText(ports, [](analysis::Number number) { return std::to_string(plain(number)); });
}

Address addressOption(const std::string& option, const std::string& text) {
    const std::optional<Address> address = parseAddress(text);
    if (!address) {
        wrongValue(option,
                   text,
                   "this is no address",
                   "an address is written as 192.168.1.5 or "
                   "2001:db8::5");
    }
    return *address;
}

analysis::Number portOption(const std::string& option, const std::string& text) {
    const std::optional<unsigned long> port = numberFromText(text, 65535);
    if (!port) {
        wrongValue(option, text, "this is no port", "a port is a number from 0 to 65535");
    }
    return *port;
}

}  // namespace zamofw
