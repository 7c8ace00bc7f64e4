// From the texts of lines to typed matches.

#include "command/analysis/model.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "command/words/values.h"
#include "library/model/names.h"

namespace zamofw::analysis {
namespace {

constexpr unsigned long kLastPort = 65535;

using Texts = std::vector<std::string_view>;

Texts splitAt(std::string_view text, char separator) {
    Texts parts;
    for (std::size_t begin = 0;;) {
        const std::size_t end = text.find(separator, begin);
        parts.push_back(text.substr(begin, end - begin));
        if (end == std::string_view::npos) {
            return parts;
        }
        begin = end + 1;
    }
}

Texts wordsOf(std::string_view line) {
    Texts words = splitAt(line, ' ');
    words.erase(std::remove(words.begin(), words.end(), std::string_view()), words.end());
    return words;
}

std::optional<Number> addressOf(std::string_view text, int family) {
    const std::optional<Address> address = parseAddress(std::string(text));
    if (!address || address->family != family) {
        return std::nullopt;
    }
    return numberOf(*address);
}

std::optional<NumberSet> hostOrSubnet(std::string_view text, int family) {
    const std::size_t slash = text.find('/');
    const std::optional<Number> address = addressOf(text.substr(0, slash), family);
    if (!address || slash == std::string_view::npos) {
        return address ? std::optional(NumberSet{{{*address, *address}}, std::nullopt})
                       : std::nullopt;
    }
    const int bits = family == 4 ? 32 : 128;
    const std::string suffix(text.substr(slash + 1));
    if (const auto length = numberFromText(suffix, static_cast<unsigned long>(bits))) {
        const int zeros = bits - static_cast<int>(*length);
        const Number all = lastAddress(family);
        const Number mask = zeros == bits ? 0 : all >> zeros << zeros;
        return maskedSet(*address, mask, bits);
    }
    const std::optional<Number> mask = addressOf(suffix, family);
    return mask ? std::optional(maskedSet(*address, *mask, bits)) : std::nullopt;
}

std::optional<NumberSet> addressRange(std::string_view text, int family) {
    const std::size_t dash = text.find('-');
    if (dash == std::string_view::npos) {
        return std::nullopt;
    }
    const auto first = addressOf(text.substr(0, dash), family);
    const auto last = addressOf(text.substr(dash + 1), family);
    if (!first || !last) {
        return std::nullopt;
    }
    // iptables takes one that ends before it begins, with a warning: it holds nothing.
    return *last < *first ? NumberSet() : NumberSet{{{*first, *last}}, std::nullopt};
}

std::optional<NumberSet> portList(std::string_view text) {
    Intervals intervals;
    for (const std::string_view part : splitAt(text, ',')) {
        const std::size_t colon = part.find(':');
        const auto first = numberFromText(std::string(part.substr(0, colon)), kLastPort);
        const auto last = colon == std::string_view::npos
                              ? first
                              : numberFromText(std::string(part.substr(colon + 1)), kLastPort);
        if (!first || !last || *last < *first) {
            return std::nullopt;
        }
        intervals.push_back({*first, *last});
    }
    return NumberSet{normalized(std::move(intervals)), std::nullopt};
}

std::optional<std::uint8_t> protocolOf(std::string_view text, int family) {
    static const std::map<std::string_view, std::uint8_t> names = {
        {"tcp", kTcp}, {"udp", kUdp}, {"igmp", kIgmp}};
    const auto name = names.find(text);
    if (name != names.end()) {
        return name->second;
    }
    if (text == (family == 4 ? "icmp" : "icmpv6")) {
        return icmpOf(family);
    }
    const auto number = numberFromText(std::string(text), 255);
    // 0 would be every protocol.
    return number && *number != 0 ? std::optional(static_cast<std::uint8_t>(*number))
                                  : std::nullopt;
}

}  // namespace

// The sets that lines name, each made once.
class ModelReader::Sets {
  public:
    explicit Sets(CountryRanges countries) : countries_(std::move(countries)) {}

    // Null when the text says no set.
    SetPointer addresses(std::string_view text, int family) {
        return known('a', text, family, [&] { return hostOrSubnet(text, family); });
    }
    SetPointer range(std::string_view text, int family) {
        return known('r', text, family, [&] { return addressRange(text, family); });
    }
    SetPointer countries(std::string_view text, int family) {
        return known('c', text, family, [&] { return rangesOf(text, family); });
    }
    SetPointer ports(std::string_view text) {
        return known('p', text, 0, [&] { return portList(text); });
    }

  private:
    template <typename Make>
    SetPointer known(char kind, std::string_view text, int family, Make make) {
        std::string key = {kind, static_cast<char>('0' + family)};
        key += text;
        const auto [entry, isNew] = sets_.try_emplace(std::move(key));
        if (isNew) {
            if (std::optional<NumberSet> made = make()) {
                entry->second = std::make_shared<const NumberSet>(std::move(*made));
            }
        }
        return entry->second;
    }

    std::optional<NumberSet> rangesOf(std::string_view codes, int family) const {
        Intervals intervals;
        for (const std::string_view code : splitAt(codes, ',')) {
            const std::optional<Intervals> ranges = countries_(std::string(code), family);
            if (!ranges) {
                return std::nullopt;
            }
            intervals.insert(intervals.end(), ranges->begin(), ranges->end());
        }
        return NumberSet{normalized(std::move(intervals)), std::nullopt};
    }

    CountryRanges countries_;
    std::unordered_map<std::string, SetPointer> sets_;
};

namespace {

// One line under reading.
template <typename Sets>
class LineReader {
  public:
    LineReader(std::string_view text, const PlannedLine& line, int family, Sets& sets)
        : words_(wordsOf(text)), family_(family), sets_(sets) {
        match_.line = &line;
    }

    // None for a line that is not one of ours.
    std::optional<LineMatch> read() {
        while (next_ < words_.size()) {
            if (!readOption()) {
                return std::nullopt;
            }
        }
        const bool hasPortMatch = match_.port != nullptr || match_.sourcePort != nullptr;
        if (!hasChain_ || !hasTarget_ ||
            (hasPortMatch && !(match_.protocol && hasPorts(*match_.protocol)))) {
            return std::nullopt;
        }
        return std::move(match_);
    }

  private:
    std::string_view take() { return next_ < words_.size() ? words_[next_++] : ""; }

    bool readOption() {
        const std::string_view option = take();
        const std::string_view value = take();
        if (option.size() == 2) {
            return readShort(option[1], value);
        }
        return option == "--dport"   ? readPorts(value, 1, match_.port)
               : option == "--sport" ? readPorts(value, 1, match_.sourcePort)
                                     : false;
    }

    bool readShort(char option, std::string_view value) {
        switch (option) {
            case 't':
                return value == "filter";
            case 'A':
                return readChain(value);
            case 'i':
                return readName(value, match_.in);
            case 'o':
                return readName(value, match_.out);
            case 's':
                return readSet(sets_.addresses(value, family_), match_.source);
            case 'd':
                return readSet(sets_.addresses(value, family_), match_.destination);
            case 'p':
                match_.protocol = protocolOf(value, family_);
                return match_.protocol.has_value();
            case 'm':
                return readModule(value);
            case 'j':
                return readTarget(value);
            default:
                // `--icmpv6-type` comes with a longer name.
                return false;
        }
    }

    bool readChain(std::string_view name) {
        hasChain_ = true;
        match_.hook = name == FW::kInputChain ? Hook::kInput : Hook::kForward;
        return name == FW::kInputChain || name == FW::kForwardChain;
    }

    static bool readName(std::string_view value, std::string& name) {
        const bool isFirst = name.empty();
        name = value;
        return isFirst && !name.empty();
    }

    static bool readSet(SetPointer made, SetPointer& set) {
        const bool isFirst = set == nullptr;
        set = std::move(made);
        return isFirst && set != nullptr;
    }

    bool readPorts(std::string_view value, std::size_t most, SetPointer& set) {
        const Texts entries = splitAt(value, ',');
        return entries.size() <= most && readSet(sets_.ports(value), set);
    }

    bool readModule(std::string_view module) {
        const std::string_view option = take();
        const std::string_view value = take();
        if (module == "multiport") {
            return option == "--dports"   ? readPorts(value, kMostPorts, match_.port)
                   : option == "--sports" ? readPorts(value, kMostPorts, match_.sourcePort)
                                          : false;
        }
        if (module == "iprange") {
            return option == "--src-range" ? readSet(sets_.range(value, family_), match_.source)
                   : option == "--dst-range"
                       ? readSet(sets_.range(value, family_), match_.destination)
                       : false;
        }
        if (module == "geoip") {
            return option == "--source-country"
                       ? readSet(sets_.countries(value, family_), match_.source)
                   : option == "--destination-country"
                       ? readSet(sets_.countries(value, family_), match_.destination)
                       : false;
        }
        match_.isForEstablished = true;
        return module == "state" && option == "--state" && value == "ESTABLISHED,RELATED";
    }

    bool readTarget(std::string_view target) {
        const bool isFirst = !std::exchange(hasTarget_, true);
        match_.effect = target == "LOG"    ? Effect::kLog
                        : target == "DROP" ? Effect::kDeny
                                           : Effect::kAllow;
        const bool isBuiltIn = match_.line->kind == LineKind::kBuiltIn;
        return isFirst && (target == "LOG" || target == "DROP" || target == "RETURN" ||
                           (isBuiltIn && target == "ACCEPT"));
    }

    static constexpr std::size_t kMostPorts = 15;

    Texts words_;
    int family_;
    Sets& sets_;
    std::size_t next_ = 0;
    bool hasChain_ = false;
    bool hasTarget_ = false;
    LineMatch match_;
};

// A built-in line for some types of ICMPv6 messages, without its type.
std::optional<std::string> withoutMessageType(const PlannedLine& line) {
    constexpr std::string_view kOption = " --icmpv6-type ";
    const std::size_t begin = line.line.find(kOption);
    if (line.kind != LineKind::kBuiltIn || begin == std::string::npos) {
        return std::nullopt;
    }
    std::string rest = line.line;
    const std::size_t end = rest.find(' ', begin + kOption.size());
    return rest.erase(begin, end - begin);
}

}  // namespace

ModelReader::ModelReader(CountryRanges countries)
    : sets_(std::make_unique<Sets>(std::move(countries))) {}
ModelReader::~ModelReader() = default;

Model ModelReader::read(const Plan& plan) {
    Model model;
    for (FamilyModel* const part : {&model.v4, &model.v6}) {
        for (const PlannedLine& line : part->family == 4 ? plan.v4 : plan.v6) {
            const std::optional<std::string> plain = withoutMessageType(line);
            std::optional<LineMatch> match =
                LineReader(plain ? *plain : line.line, line, part->family, *sets_).read();
            if (!match) {
                model.unknown.push_back({part->family, &line});
                continue;
            }
            match->isForMessageTypes = plain.has_value();
            part->lines.push_back(std::move(*match));
        }
    }
    return model;
}

bool operator==(const Origin& one, const Origin& other) {
    return one.kind == other.kind && one.adapter == other.adapter && one.position == other.position;
}

Origin originOf(const PlannedLine& line) {
    const Origin::Kind kind = line.kind == LineKind::kBuiltIn ? Origin::Kind::kBuiltIn
                              : line.kind == LineKind::kRule  ? Origin::Kind::kRule
                                                              : Origin::Kind::kDefault;
    return {kind, line.adapter, line.position, line.name};
}

bool haveOneOrigin(const PlannedLine& one, const PlannedLine& other) {
    return one.kind == other.kind && one.position == other.position && one.adapter == other.adapter;
}

bool namesInterface(const std::string& pattern, const std::string& interface) {
    if (pattern.empty() || pattern.back() != '+') {
        return pattern == interface;
    }
    return interface.compare(0, pattern.size() - 1, pattern, 0, pattern.size() - 1) == 0;
}

std::set<std::string> interfacesOf(const Model& model) {
    std::set<std::string> names;
    for (const FamilyModel* const part : {&model.v4, &model.v6}) {
        for (const LineMatch& line : part->lines) {
            if (line.line->kind != LineKind::kBuiltIn) {
                names.insert(line.in);
                names.insert(line.out);
            }
        }
    }
    names.erase("");
    names.erase("+");  // every interface
    return names;
}

std::string protocolName(std::uint8_t protocol, int family) {
    if (protocol == icmpOf(family)) {
        return "icmp";
    }
    switch (protocol) {
        case kTcp:
            return "tcp";
        case kUdp:
            return "udp";
        case kIgmp:
            return "igmp";
        default:
            return std::to_string(protocol);
    }
}

}  // namespace zamofw::analysis
