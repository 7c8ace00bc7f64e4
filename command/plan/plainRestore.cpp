// Input for the restore programs without a plan.

#include <algorithm>
#include <array>
#include <boost/container/small_vector.hpp>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

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

// A line has five parts.
bool areAllPlain(const Texts& texts) {
    return std::all_of(texts.begin(), texts.end(), [](std::string_view text) {
        return text.size() <= kSurelyShort / 5 - 1 && !hasSpecial(text);
    });
}

void appendPart(std::string_view part, std::string& line) {
    if (!part.empty()) {
        line.append(" ").append(part);
    }
}

// The begins and ends of the lines of a rule, which most rules have in common with the rule before.
class Frame {
  public:
    void make(const Arguments& arguments) {
        if (fill_ == arguments.commonFill) {
            return;
        }
        fill_ = arguments.commonFill;
        const Texts tables = textsIn(arguments.tables);
        const Texts policies = textsIn(arguments.policies);
        const Texts chains = textsIn(arguments.chains);
        const Texts adapters = textsIn(arguments.adapters);
        isPlain_ = tables.size() == 1 && tables[0] == "-t filter" && policies.size() == 1 &&
                   areAllPlain(chains) && areAllPlain(adapters) && areAllPlain(policies);
        if (isPlain_) {
            makeBegins(chains, adapters);
            ends_ = {"", ""};
            appendPart("-j LOG", ends_[0]);
            appendPart(policies[0], ends_[1]);
        }
    }

    // Whether nothing in it can need a closer look.
    [[nodiscard]] bool isPlain() const { return isPlain_; }
    // Of the lines in a chain, one for each adapter.
    [[nodiscard]] const std::vector<std::vector<std::string>>& begins() const { return begins_; }
    // Of the line that logs, and of the one that decides.
    [[nodiscard]] const std::array<std::string, 2>& ends() const { return ends_; }

  private:
    void makeBegins(const Texts& chains, const Texts& adapters) {
        begins_.clear();
        for (const std::string_view chain : chains) {
            std::vector<std::string>& ofChain = begins_.emplace_back();
            for (const std::string_view adapter : adapters) {
                appendPart(adapter, ofChain.emplace_back(chain));
            }
        }
    }

    std::size_t fill_ = 0;
    bool isPlain_ = false;
    std::vector<std::vector<std::string>> begins_;
    std::array<std::string, 2> ends_;
};

class TextTaker : public LineTaker {
  public:
    explicit TextTaker(std::size_t expectedSize) {
        begin(texts_.v4, 4, expectedSize);
        begin(texts_.v6, 6, expectedSize);
    }

    bool takeArguments(const Step& step, const Arguments& arguments) override {
        frame_.make(arguments);
        const Texts v4 = textsIn(arguments.v4);
        const Texts v6 = textsIn(arguments.v6);
        const Texts ports = textsIn(arguments.ports);
        // Such a match is of one family alone.
        const bool hasIcmp = std::any_of(ports.begin(), ports.end(), [](std::string_view port) {
            return port.find("icmp") != std::string_view::npos;
        });
        if (hasIcmp || !frame_.isPlain() || !areAllPlain(v4) || !areAllPlain(v6) ||
            !areAllPlain(ports)) {
            return false;
        }
        const std::int32_t type = step.rule.ipType;
        for (const std::vector<std::string>& begins : frame_.begins()) {
            if (type == FW::FW_IP_TYPE_V4 || type == FW::FW_IP_TYPE_BOTH) {
                append(begins, v4, ports, step.rule.blLog, texts_.v4);
            }
            if (type == FW::FW_IP_TYPE_V6 || type == FW::FW_IP_TYPE_BOTH) {
                append(begins, v6, ports, step.rule.blLog, texts_.v6);
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

    // The lines of a rule in one chain for one family, as the translator makes them.
    void append(const std::vector<std::string>& begins,
                const Texts& addresses,
                const Texts& ports,
                bool isLogged,
                std::string& text) {
        for (const std::string& begin : begins) {
            for (const std::string_view address : addresses) {
                for (const std::string_view port : ports) {
                    for (std::size_t i = isLogged ? 0 : 1; i < frame_.ends().size(); ++i) {
                        text.append(begin);
                        appendPart(address, text);
                        appendPart(port, text);
                        text.append(frame_.ends()[i]).append("\n");
                        ++texts_.lines;
                    }
                }
            }
        }
    }

    Frame frame_;
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
