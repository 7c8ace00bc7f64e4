#include "command/document/profileRecord.h"

#include <json/reader.h>
#include <json/value.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "command/console.h"
#include "command/document/memberCheck.h"
#include "zamofirewall/profileDatabase.h"

namespace zamofw {
namespace {

using Kind = Node::Kind;

bool parseLikeLibrary(const std::string& text, Json::Value& value) {
    try {
        return Json::Reader().parse(text, value, /*collectComments=*/false);
    } catch (const Json::Exception&) {
        return false;
    }
}

// The values by the rows of a table; null for those that are missing.
using Rows = std::array<const Node*, Members::kMaxRows>;

// A null is as good as a member that is missing.
const Node* unlessNull(const Node& value) {
    return value.kind == Kind::kNull ? nullptr : &value;
}

Rows rowsOf(const Node& object, const MemberTable& table) {
    Rows rows = {};
    std::size_t guess = 0;
    for (const Member& member : object.members()) {
        const std::size_t row = rowOf(table, member.name, guess);
        guess = row + 1;
        if (row < table.size()) {
            rows[row] = unlessNull(member.value);
        }
    }
    return rows;
}

// Reads documents whose members have the types that the library writes, from the tree that is there
// anyhow: parsing a large profile once more costs more than translating it. Whatever else a text
// may hold, a number for a flag for example, is left to the library.
class PlainReader {
  public:
    // False when something was not plain.
    [[nodiscard]] bool isPlain() const { return isPlain_; }

    // By name. Of equal members the last one counts.
    std::map<std::string, PlainAdapter> adapters(const Rows& rows) {
        std::map<std::string, PlainAdapter> adapters;
        if (const Node* const rules = checked(rows[profileField::kRules], Kind::kObject)) {
            for (const Member& member : rules->members()) {
                const Node* const list = checked(unlessNull(member.value), Kind::kList);
                adapters[std::string(member.name)].rules =
                    list == nullptr ? Span<Node>() : list->items();
            }
        }
        if (const Node* const policies = checked(rows[profileField::kPolicies], Kind::kObject)) {
            for (const Member& member : policies->members()) {
                adapters[std::string(member.name)].policy =
                    static_cast<FW::FW_POLICY>(code(unlessNull(member.value)));
            }
        }
        return adapters;
    }

    std::string text(const Node* value) {
        std::string text;
        assign(text, value);
        return text;
    }

    // The rule may be another one that was read before, whose memory then serves for this one.
    void readRule(const Node& node, FW::FWRULE& rule) {
        isPlain_ = isPlain_ && node.kind == Kind::kObject;
        const Rows rows = rowsOf(node, ruleTable());
        rule.ruleIndex = code(rows[field::kRuleId]);
        rule.enable = flag(rows[field::kEnable]);
        rule.adapterDirect = code(rows[field::kAdapterDirect]);
        rule.policy = static_cast<FW::FW_POLICY>(code(rows[field::kPolicy]));
        rule.blLog = flag(rows[field::kBlLog]);
        assign(rule.labelList, rows[field::kLabelList]);
        assign(rule.name, rows[field::kName]);
        assign(rule.table, rows[field::kTable]);
        assignChains(rule.chainList, rows[field::kChainList]);
        rule.ipType = code(rows[field::kIpType]);
        rule.ipDirect = code(rows[field::kIpDirect]);
        rule.ipGroup = code(rows[field::kIpGroup]);
        assign(rule.ipList, rows[field::kIpList]);
        rule.portDirect = code(rows[field::kPortDirect]);
        rule.portGroup = code(rows[field::kPortGroup]);
        rule.protocol = code(rows[field::kProtocol]);
        assign(rule.portList, rows[field::kPortList]);
    }

  private:
    // The value when it is of this kind, else null.
    const Node* checked(const Node* value, Kind kind) {
        if (value == nullptr || value->kind == kind) {
            return value;
        }
        isPlain_ = false;
        return nullptr;
    }
    bool flag(const Node* value) {
        const Node* const node = checked(value, Kind::kBool);
        return node != nullptr && node->flag();
    }
    std::int32_t code(const Node* value) {
        using Limits = std::numeric_limits<std::int32_t>;
        const Node* const node = checked(value, Kind::kInteger);
        const std::int64_t number = node == nullptr ? 0 : node->integer();
        isPlain_ = isPlain_ && number >= Limits::min() && number <= Limits::max();
        return static_cast<std::int32_t>(number);
    }
    void assign(std::string& text, const Node* value) {
        const Node* const node = checked(value, Kind::kText);
        text.assign(node == nullptr ? std::string_view() : node->text());
    }
    Span<Node> textsIn(const Node* value) {
        const Node* const list = checked(value, Kind::kList);
        if (list == nullptr) {
            return {};
        }
        for (const Node& item : list->items()) {
            isPlain_ = isPlain_ && item.kind == Kind::kText;
        }
        return list->items();
    }
    void assign(std::vector<std::string>& texts, const Node* value) {
        const Span<Node> items = textsIn(value);
        texts.resize(items.size());
        std::transform(items.begin(), items.end(), texts.begin(), [](const Node& item) {
            return std::string(item.text());
        });
    }
    // The library adds the chains of a document to those that a new rule has. Nearly all rules name
    // these, in this order.
    void assignChains(std::set<std::string>& chains, const Node* value) {
        static const std::set<std::string> kOfNewRule = FW::FWRULE().chainList;
        if (chains != kOfNewRule) {
            chains = kOfNewRule;
        }
        const Span<Node> items = textsIn(value);
        const auto isSame = [](const std::string& chain, const Node& item) {
            return chain == item.text();
        };
        if (!std::equal(chains.begin(), chains.end(), items.begin(), items.end(), isSame)) {
            for (const Node& item : items) {
                chains.emplace(item.text());
            }
        }
    }

    bool isPlain_ = true;
};

// None when something is not plain.
std::optional<FW::FWPROFILE> plainRecord(const Node& root) {
    if (root.kind != Kind::kObject) {
        return std::nullopt;
    }
    PlainReader reader;
    FW::FWPROFILE profile;
    const Rows rows = rowsOf(root, profileTable());
    profile.name = reader.text(rows[profileField::kName]);
    for (const auto& [name, adapter] : reader.adapters(rows)) {
        if (adapter.policy) {
            profile.adapterPolicyMap[name] = *adapter.policy;
        }
        if (!adapter.rules.empty()) {
            std::vector<FW::FWRULE>& rules = profile.rules[name];
            rules.reserve(adapter.rules.size());
            for (const Node& rule : adapter.rules) {
                reader.readRule(rule, rules.emplace_back());
            }
        }
    }
    return reader.isPlain() ? std::optional(std::move(profile)) : std::nullopt;
}

bool isRuleTaken(const Json::Value& rule) {
    Json::Value rules;
    rules["adapter"].append(rule);
    std::map<std::string, std::vector<FW::FWRULE>> read;
    return FW::ZAMOFW_JSON_DB().jsonToRuleList(rules, read);
}

// The first rule that the library does not take; null when the fault is elsewhere.
const Node* refusedRule(const Document& document, const Json::Value& value) {
    const Member* const rules = document.root.find("rules");
    if (rules == nullptr || rules->value.kind != Kind::kObject) {
        return nullptr;
    }
    for (const Member& member : rules->value.members()) {
        const Json::Value& list = value["rules"][std::string(member.name)];
        for (std::size_t i = 0; list.isArray() && i < member.value.items().size(); ++i) {
            const auto index = static_cast<Json::ArrayIndex>(i);
            if (index < list.size() && !isRuleTaken(list[index])) {
                return &member.value.items()[i];
            }
        }
    }
    return nullptr;
}

[[noreturn]] void wrongType(const Document& document, const Json::Value& value) {
    const std::string remedy = "run `zamofw check` on it: it names the member";
    if (document.root.kind != Kind::kObject) {
        failed(placeText(document, document.root.offset) + ": a profile is a JSON object", remedy);
    }
    if (const Node* const rule = refusedRule(document, value); rule != nullptr) {
        failed(placeText(document, rule->offset) + ": a member of this rule has a wrong type",
               remedy);
    }
    failed(placeText(document, document.root.offset) +
               ": \"name\", \"rules\" or \"adapterPolicyMap\" has a wrong type",
           remedy);
}

[[noreturn]] void wrongSyntax(const Document& document) {
    // The library's reader is the stricter one only about a few numbers.
    const SyntaxFault fault = document.fault.value_or(SyntaxFault{0, "it is no JSON"});
    failed(placeText(document, fault.offset) + ": " + fault.message,
           "mend the document there; JSON is read up to this place");
}

}  // namespace

std::optional<std::string> nameIn(const Document& document) {
    const Member* const name =
        document.root.kind == Kind::kObject ? document.root.find("name") : nullptr;
    if (name != nullptr && name->value.kind == Kind::kText) {
        return std::string(name->value.text());
    }
    Json::Value value;
    if (document.fault && parseLikeLibrary(document.text, value) && value.isObject() &&
        value["name"].isString()) {
        return value["name"].asString();
    }
    return std::nullopt;
}

bool isReadByLibrary(const Document& document) {
    Json::Value value;
    return !document.fault || parseLikeLibrary(document.text, value);
}

std::optional<std::map<std::string, PlainAdapter>> plainAdapters(const Document& document) {
    if (document.fault || document.root.kind != Kind::kObject) {
        return std::nullopt;
    }
    PlainReader reader;
    std::map<std::string, PlainAdapter> adapters =
        reader.adapters(rowsOf(document.root, profileTable()));
    return reader.isPlain() ? std::optional(std::move(adapters)) : std::nullopt;
}

bool visitRules(const PlainAdapter& adapter,
                const std::function<void(const FW::FWRULE& rule)>& visit) {
    PlainReader reader;
    FW::FWRULE rule;
    for (const Node& node : adapter.rules) {
        reader.readRule(node, rule);
        if (!reader.isPlain()) {
            return false;
        }
        visit(rule);
    }
    return true;
}

FW::FWPROFILE profileRecord(const Document& document) {
    if (!document.fault) {
        if (std::optional<FW::FWPROFILE> profile = plainRecord(document.root)) {
            return *std::move(profile);
        }
    }
    Json::Value value;
    if (!parseLikeLibrary(document.text, value)) {
        wrongSyntax(document);
    }
    FW::FWPROFILE profile;
    if (!FW::ZAMOFW_JSON_DB().jsonToProfile(value, profile)) {
        wrongType(document, value);
    }
    return profile;
}

}  // namespace zamofw
