// The multiplication of a rule's fragments into lines.
//
// A Source has the fragments: RuleSource those of a translated rule, and an argument set of a
// caller those that it holds. A Source has the ranges tables(), chains(), adapters(),
// addresses(family) and ports(), a target(), and for the elements text(element) and
// isFor(port, family). Elements are read only when a line needs them, because those of an argument
// set may have a wrong type and throw; the lines before it are then made all the same.
#ifndef LIBRARY_TRANSLATE_LINES_H
#define LIBRARY_TRANSLATE_LINES_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "library/model/line.h"
#include "library/translate/fragment.h"
#include "library/translate/ruleFields.h"

namespace FW {

// Takes lines in the order of execution.
using LineSink = std::function<void(const std::vector<Line>& lines)>;

// What the lines of one rule have in common.
struct LineContext {
    const FWRULE& rule;
    std::string key;
    LineOrigin origin;
};

class RuleSource {
  public:
    explicit RuleSource(const RuleFragments& fragments) : fragments_(fragments) {}

    std::vector<std::string> tables() const { return {fragments_.table}; }
    const std::vector<std::string>& chains() const { return fragments_.chains; }
    const std::vector<std::string>& adapters() const { return fragments_.adapters; }
    std::vector<std::string> addresses(AddressFamily family) const {
        std::vector<std::string> texts;
        for (const AddressFragment& address : fragments_.addresses) {
            if (address.family == family) {
                texts.push_back(address.text);
            }
        }
        return texts;
    }
    const std::vector<PortFragment>& ports() const { return fragments_.ports; }
    std::string target() const { return fragments_.target; }

    static const std::string& text(const std::string& fragment) { return fragment; }
    static const std::string& text(const PortFragment& fragment) { return fragment.text; }
    static bool isFor(const PortFragment& port, AddressFamily family) {
        return !port.onlyFor || *port.onlyFor == family;
    }

  private:
    const RuleFragments& fragments_;
};

inline void appendPart(std::string& line, const std::string& part) {
    if (!part.empty()) {
        line += ' ';
        line += part;
    }
}

// The lines of one table, chain and family. `head` is "-t table -A chain".
template <typename Source>
std::vector<Line> familyLines(const Source& source,
                              const std::string& head,
                              const std::string& target,
                              AddressFamily family,
                              const LineContext& context) {
    std::vector<Line> lines;
    for (const auto& adapter : source.adapters()) {
        for (const auto& address : source.addresses(family)) {
            for (const auto& port : source.ports()) {
                if (!Source::isFor(port, family)) {
                    continue;
                }
                const auto& adapterText = Source::text(adapter);
                const auto& addressText = Source::text(address);
                const auto& portText = Source::text(port);
                std::string match;
                // With the blanks.
                match.reserve(head.size() + adapterText.size() + addressText.size() +
                              portText.size() + target.size() + 4);
                match += head;
                appendPart(match, adapterText);
                appendPart(match, addressText);
                appendPart(match, portText);
                if (context.rule.blLog) {
                    lines.push_back({family, context.key, match + " -j LOG", context.origin});
                }
                // Without a target the line ends in the blank.
                match += ' ';
                match += target;
                lines.push_back({family, context.key, std::move(match), context.origin});
            }
        }
    }
    return lines;
}

template <typename Source>
void multiply(const Source& source, const LineContext& context, const LineSink& sink) {
    const std::string target = source.target();
    for (const auto& table : source.tables()) {
        for (const auto& chain : source.chains()) {
            const std::string head = Source::text(table) + " " + Source::text(chain);
            for (const AddressFamily family : familiesOf(context.rule)) {
                sink(familyLines(source, head, target, family, context));
            }
        }
    }
}

}  // namespace FW

#endif
