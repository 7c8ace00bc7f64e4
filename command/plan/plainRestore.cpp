// Input for the restore programs without a plan.

#include <algorithm>
#include <boost/container/small_vector.hpp>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "command/console.h"
#include "command/plan/plan.h"
#include "command/plan/planner.h"
#include "command/plan/restoreLine.h"
#include "command/plan/tunnelLook.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

using Texts = boost::container::small_vector<std::string_view, 8>;

Texts textsIn(const Json::Value& list) {
    Texts texts;
    const auto last = list.end();
    for (auto text = list.begin(); text != last; ++text) {
        const char* begin = nullptr;
        const char* end = nullptr;
        (void)text->getString(&begin, &end);
        texts.emplace_back(begin, static_cast<std::size_t>(end - begin));
    }
    return texts;
}

// What the lines of a rule are made of.
struct Fragments {
    Texts tables;
    Texts chains;
    Texts adapters;
    Texts v4;
    Texts v6;
    Texts ports;
    Texts policies;

    explicit Fragments(const Json::Value& arguments) {
        // Looking up each member would take longer than all else.
        const auto last = arguments.end();
        for (auto member = arguments.begin(); member != last; ++member) {
            const char* end = nullptr;
            const char* const begin = member.memberName(&end);
            const std::string_view name(begin, static_cast<std::size_t>(end - begin));
            if (name == "ip") {
                v4 = textsIn((*member)[FW::kIpv4.key]);
                v6 = textsIn((*member)[FW::kIpv6.key]);
            } else if (Texts* const texts = textsOf(name); texts != nullptr) {
                *texts = textsIn(*member);
            }
        }
    }

    // Whether nothing in a line can need a closer look.
    [[nodiscard]] bool arePlain() const {
        // Such a match is of one family alone.
        const bool hasIcmp = std::any_of(ports.begin(), ports.end(), [](std::string_view port) {
            return port.find("icmp") != std::string_view::npos;
        });
        return !hasIcmp && tables.size() == 1 && tables[0] == "-t filter" && policies.size() == 1 &&
               areAllPlain(chains) && areAllPlain(adapters) && areAllPlain(v4) && areAllPlain(v6) &&
               areAllPlain(ports) && areAllPlain(policies);
    }

  private:
    Texts* textsOf(std::string_view name) {
        return name == "table"     ? &tables
               : name == "chain"   ? &chains
               : name == "adapter" ? &adapters
               : name == "port"    ? &ports
               : name == "policy"  ? &policies
                                   : nullptr;
    }
    // A line has five of them.
    static bool areAllPlain(const Texts& texts) {
        return std::all_of(texts.begin(), texts.end(), [](std::string_view text) {
            return text.size() <= kSurelyShort / 5 - 1 && !hasSpecial(text);
        });
    }
};

class TextTaker : public LineTaker {
  public:
    explicit TextTaker(std::size_t expectedSize) {
        begin(texts_.v4, 4, expectedSize);
        begin(texts_.v6, 6, expectedSize);
    }

    bool takeArguments(const Step& step, const Json::Value& arguments) override {
        const Fragments fragments(arguments);
        if (!fragments.arePlain()) {
            return false;
        }
        for (const std::string_view chain : fragments.chains) {
            const std::int32_t type = step.rule.ipType;
            if (type == FW::FW_IP_TYPE_V4 || type == FW::FW_IP_TYPE_BOTH) {
                append(fragments, chain, fragments.v4, step.rule.blLog, texts_.v4);
            }
            if (type == FW::FW_IP_TYPE_V6 || type == FW::FW_IP_TYPE_BOTH) {
                append(fragments, chain, fragments.v6, step.rule.blLog, texts_.v6);
            }
        }
        return true;
    }

    void take(const Step&, int family, const std::string&, const Json::Value& lines) override {
        std::string& text = family == 4 ? texts_.v4 : texts_.v6;
        for (const std::string_view line : textsIn(lines)) {
            const std::optional<std::string_view> plain = plainFilterLine(line);
            isPlain_ = isPlain_ && plain;
            text.append(plain.value_or("")).append("\n");
        }
        texts_.lines += lines.size();
    }

    [[nodiscard]] std::optional<RestoreInputs> finish() {
        texts_.v4 += "COMMIT\n";
        texts_.v6 += "COMMIT\n";
        return isPlain_ ? std::optional(std::move(texts_)) : std::nullopt;
    }

  private:
    static void begin(std::string& text, int family, std::size_t expectedSize) {
        text.reserve(expectedSize);
        for (const std::string& line : filterHead(family)) {
            text.append(line).append("\n");
        }
    }

    static void appendPart(std::string_view part, std::string& text) {
        if (!part.empty()) {
            text.append(" ").append(part);
        }
    }

    // The lines of a rule in one chain for one family, as the translator makes them.
    void append(const Fragments& fragments,
                std::string_view chain,
                const Texts& addresses,
                bool isLogged,
                std::string& text) {
        for (const std::string_view adapter : fragments.adapters) {
            for (const std::string_view address : addresses) {
                for (const std::string_view port : fragments.ports) {
                    for (const bool isLogLine : {true, false}) {
                        if (isLogLine && !isLogged) {
                            continue;
                        }
                        text.append(chain);
                        appendPart(adapter, text);
                        appendPart(address, text);
                        appendPart(port, text);
                        appendPart(isLogLine ? "-j LOG" : fragments.policies[0], text);
                        text.append("\n");
                        ++texts_.lines;
                    }
                }
            }
        }
    }

    RestoreInputs texts_;
    bool isPlain_ = true;
};

bool addAll(Planner& planner, const std::vector<PlannedAdapter>& adapters) {
    // The lines of no adapter run first, then those of the adapters in ascending order.
    std::vector<const PlannedAdapter*> ordered;
    ordered.reserve(adapters.size());
    for (const PlannedAdapter& adapter : adapters) {
        ordered.push_back(&adapter);
    }
    std::sort(ordered.begin(), ordered.end(), [](const auto* one, const auto* other) {
        const bool isGlobal = one->name == FW::kGlobalAdapter;
        const bool isOtherGlobal = other->name == FW::kGlobalAdapter;
        return isGlobal != isOtherGlobal ? isGlobal : one->name < other->name;
    });
    return std::all_of(ordered.begin(), ordered.end(), [&planner](const auto* adapter) {
        return planner.addAdapter(*adapter);
    });
}

}  // namespace

std::optional<RestoreInputs> plainInputs(const std::vector<PlannedAdapter>& adapters,
                                         std::size_t expectedSize) try {
    // The lines of a tunnel would have to be put in between.
    if (mayHaveTunnel()) {
        return std::nullopt;
    }
    TextTaker texts(expectedSize);
    Planner planner(/*mayHaveTunnel=*/false, Planner::Adapters::kPresent, texts);
    planner.addBuiltInLines();
    return addAll(planner, adapters) ? texts.finish() : std::nullopt;
} catch (const Failure&) {
    // The plan says what is wrong.
    return std::nullopt;
}

}  // namespace zamofw
