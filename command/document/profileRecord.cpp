#include "command/document/profileRecord.h"

#include <json/reader.h>
#include <json/value.h>

#include <array>
#include <cstdint>
#include <limits>
#include <utility>

#include "command/console.h"
#include "command/document/memberCheck.h"
#include "zamofirewall/profileDatabase.h"

namespace zamofw {
namespace {

using Kind = Node::Kind;
using RuleMap = std::map<std::string, std::vector<FW::FWRULE>>;
using PolicyMap = std::map<std::string, FW::FW_POLICY>;

bool parseLikeLibrary(const std::string& text, Json::Value& value) {
    try {
        return Json::Reader().parse(text, value, /*collectComments=*/false);
    } catch (const Json::Exception&) {
        return false;
    }
}

// Reads documents whose members have the types that the library writes, from the tree that is there
// anyhow: parsing a large profile once more costs more than translating it. Whatever else a text
// may hold, a number for a flag for example, is left to the library.
class PlainReader {
  public:
    // None when something is not plain.
    std::optional<FW::FWPROFILE> read(const Node& root) {
        FW::FWPROFILE profile;
        if (root.kind != Kind::kObject) {
            return std::nullopt;
        }
        const Rows rows = rowsOf(root, profileTable());
        profile.name = text(rows[profileField::kName]);
        if (const Node* const rules = checked(rows[profileField::kRules], Kind::kObject)) {
            readRules(*rules, profile.rules);
        }
        if (const Node* const policies = checked(rows[profileField::kPolicies], Kind::kObject)) {
            for (const Member& member : policies->members()) {
                profile.adapterPolicyMap[std::string(member.name)] =
                    static_cast<FW::FW_POLICY>(code(unlessNull(member.value)));
            }
        }
        return isPlain_ ? std::optional(std::move(profile)) : std::nullopt;
    }

  private:
    // The values by the rows of a table; null for those that are missing.
    using Rows = std::array<const Node*, Members::kMaxRows>;

    // A null is as good as a member that is missing.
    static const Node* unlessNull(const Node& value) {
        return value.kind == Kind::kNull ? nullptr : &value;
    }
    static Rows rowsOf(const Node& object, const MemberTable& table) {
        Rows rows = {};
        std::size_t row = table.size();
        for (const Member& member : object.members()) {
            row = rowOf(table, member.name, row + 1);
            if (row < table.size()) {
                rows[row] = unlessNull(member.value);
            }
        }
        return rows;
    }

    // The value when it is of this kind, else null.
    const Node* checked(const Node* value, Kind kind) {
        if (value == nullptr || value->kind == kind) {
            return value;
        }
        isPlain_ = false;
        return nullptr;
    }
    std::string text(const Node* value) {
        const Node* const node = checked(value, Kind::kText);
        return node == nullptr ? std::string() : std::string(node->text());
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
    std::vector<std::string> texts(const Node* value) {
        std::vector<std::string> result;
        if (const Node* const list = checked(value, Kind::kList)) {
            result.reserve(list->items().size());
            for (const Node& item : list->items()) {
                isPlain_ = isPlain_ && item.kind == Kind::kText;
                result.emplace_back(item.text());
            }
        }
        return result;
    }

    void readRules(const Node& rules, RuleMap& read) {
        for (const Member& member : rules.members()) {
            const std::string adapter(member.name);
            const Node* const list = checked(unlessNull(member.value), Kind::kList);
            // Of equal members the last one counts.
            if (list == nullptr || list->items().empty()) {
                read.erase(adapter);
                continue;
            }
            std::vector<FW::FWRULE>& target = read[adapter];
            target.clear();
            target.reserve(list->items().size());
            for (const Node& item : list->items()) {
                isPlain_ = isPlain_ && item.kind == Kind::kObject;
                readRule(rowsOf(item, ruleTable()), target.emplace_back());
            }
        }
    }

    void readRule(const Rows& rows, FW::FWRULE& rule) {
        rule.ruleIndex = code(rows[field::kRuleId]);
        rule.enable = flag(rows[field::kEnable]);
        rule.adapterDirect = code(rows[field::kAdapterDirect]);
        rule.policy = static_cast<FW::FW_POLICY>(code(rows[field::kPolicy]));
        rule.blLog = flag(rows[field::kBlLog]);
        rule.labelList = texts(rows[field::kLabelList]);
        rule.name = text(rows[field::kName]);
        rule.table = text(rows[field::kTable]);
        for (std::string& chain : texts(rows[field::kChainList])) {
            rule.chainList.insert(std::move(chain));
        }
        rule.ipType = code(rows[field::kIpType]);
        rule.ipDirect = code(rows[field::kIpDirect]);
        rule.ipGroup = code(rows[field::kIpGroup]);
        rule.ipList = texts(rows[field::kIpList]);
        rule.portDirect = code(rows[field::kPortDirect]);
        rule.portGroup = code(rows[field::kPortGroup]);
        rule.protocol = code(rows[field::kProtocol]);
        rule.portList = texts(rows[field::kPortList]);
    }

    bool isPlain_ = true;
};

bool isRuleTaken(const Json::Value& rule) {
    Json::Value rules;
    rules["adapter"].append(rule);
    RuleMap read;
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

FW::FWPROFILE profileRecord(const Document& document) {
    if (!document.fault) {
        if (std::optional<FW::FWPROFILE> profile = PlainReader().read(document.root)) {
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
