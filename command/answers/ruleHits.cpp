#include "command/answers/ruleHits.h"

#include <zamo/core.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>

#include "command/console.h"
#include "command/startsWith.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

// What tells a line from its neighbours, however the program writes the matches between.
struct LineShape {
    std::string chain;
    std::string interface;
    std::string target;

    bool operator==(const LineShape& other) const {
        return chain == other.chain && interface == other.interface && target == other.target;
    }
};

struct CountedLine {
    LineShape shape;
    Hits hits;
};

CountedLine parseLine(const std::string& line) {
    CountedLine result;
    std::istringstream words(line);
    for (std::string word; words >> word;) {
        if (word == "-A") {
            words >> result.shape.chain;
        } else if (word == "-i" || word == "-o") {
            words >> result.shape.interface;
            result.shape.interface = word + result.shape.interface;
        } else if (word == "-j") {
            words >> result.shape.target;
        } else if (word == "-c") {
            words >> result.hits.packets >> result.hits.bytes;
        }
    }
    return result;
}

std::vector<CountedLine> rulesOf(const std::vector<std::string>& listing) {
    std::vector<CountedLine> rules;
    for (const std::string& line : listing) {
        if (startsWith(line, "-A ")) {
            rules.push_back(parseLine(line));
        }
    }
    return rules;
}

// Pairs the lines of one chain, and adds what they counted to their rules.
bool addHits(const std::vector<PlannedLine>& lines,
             const std::string& chain,
             const std::vector<CountedLine>& counted,
             RuleHits& hits) {
    std::size_t next = 0;
    for (const PlannedLine& line : lines) {
        const LineShape shape = parseLine(line.line).shape;
        if (shape.chain != chain) {
            continue;
        }
        if (next == counted.size() || !(counted[next].shape == shape)) {
            return false;
        }
        if (line.kind == LineKind::kRule && line.position && shape.target != "LOG") {
            Hits& sum = hits[{line.adapter, *line.position}];
            sum.packets += counted[next].hits.packets;
            sum.bytes += counted[next].hits.bytes;
        }
        ++next;
    }
    return next == counted.size();
}

struct LineBuffer {
    char* text = nullptr;
    std::size_t size = 0;
    ~LineBuffer() { std::free(text); }
};

}  // namespace

std::optional<RuleHits> hitsOf(const Plan& plan, const ChainListing& listing) {
    RuleHits hits;
    for (const char* const chain : FW::kFirewallChains) {
        if (!addHits(plan.v4, chain, rulesOf(listing(4, chain)), hits) ||
            !addHits(plan.v6, chain, rulesOf(listing(6, chain)), hits)) {
            return std::nullopt;
        }
    }
    return hits;
}

std::vector<std::string> kernelChain(int family, const std::string& chain) {
    const std::string program = (family == 4 ? FW::kIpv4 : FW::kIpv6).program;
    const char* const argv[] = {program.c_str(), "-w", "20", "-v", "-S", chain.c_str(), nullptr};
    std::FILE* const stream = VLIBCPopen("r", argv);
    if (stream == nullptr) {
        failed(program + " could not be started", "install iptables");
    }
    std::vector<std::string> lines;
    LineBuffer buffer;
    for (ssize_t length = getline(&buffer.text, &buffer.size, stream); length > 0;
         length = getline(&buffer.text, &buffer.size, stream)) {
        lines.emplace_back(buffer.text, static_cast<std::size_t>(length));
    }
    if (VLIBCPclose(stream) != 0) {
        failed(program + " could not list the chain " + chain,
               "its own words stand above; `zamofw-chains` makes the chains");
    }
    return lines;
}

}  // namespace zamofw
