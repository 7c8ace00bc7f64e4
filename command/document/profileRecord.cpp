#include "command/document/profileRecord.h"

#include <json/reader.h>
#include <json/value.h>

#include <cstdint>
#include <limits>
#include <utility>

#include "command/console.h"
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
        profile.name = text(root, "name");
        if (const Node* const rules = object(root, "rules"); rules != nullptr) {
            readRules(*rules, profile.rules);
        }
        if (const Node* const policies = object(root, "adapterPolicyMap"); policies != nullptr) {
            for (const Member& member : policies->members) {
                profile.adapterPolicyMap[member.name] = static_cast<FW::FW_POLICY>(code(&member));
            }
        }
        return isPlain_ ? std::optional(std::move(profile)) : std::nullopt;
    }

  private:
    // The value when it is of this kind, else null; a member that is missing is plain.
    const Node* checked(const Member* member, Kind kind) {
        if (member == nullptr || member->value.kind == kind) {
            return member == nullptr ? nullptr : &member->value;
        }
        isPlain_ = false;
        return nullptr;
    }
    const Node* object(const Node& parent, const char* name) {
        return checked(parent.find(name), Kind::kObject);
    }
    std::string text(const Node& parent, const char* name) {
        const Node* const node = checked(parent.find(name), Kind::kText);
        return node == nullptr ? std::string() : node->text;
    }
    bool flag(const Node& parent, const char* name) {
        const Node* const node = checked(parent.find(name), Kind::kBool);
        return node != nullptr && node->flag;
    }
    std::int32_t code(const Member* member) {
        using Limits = std::numeric_limits<std::int32_t>;
        const Node* const node = checked(member, Kind::kInteger);
        if (node == nullptr || node->integer < Limits::min() || node->integer > Limits::max()) {
            isPlain_ = isPlain_ && node == nullptr;
            return 0;
        }
        return static_cast<std::int32_t>(node->integer);
    }
    std::int32_t code(const Node& parent, const char* name) { return code(parent.find(name)); }
    std::vector<std::string> texts(const Node& parent, const char* name) {
        std::vector<std::string> result;
        if (const Node* const list = checked(parent.find(name), Kind::kList); list != nullptr) {
            for (const Node& item : list->items) {
                isPlain_ = isPlain_ && item.kind == Kind::kText;
                result.push_back(item.text);
            }
        }
        return result;
    }

    void readRules(const Node& rules, RuleMap& read) {
        for (const Member& member : rules.members) {
            const Node* const list = checked(&member, Kind::kList);
            // Of equal members the last one counts.
            if (list == nullptr || list->items.empty()) {
                read.erase(member.name);
                continue;
            }
            std::vector<FW::FWRULE>& target = read[member.name];
            target.clear();
            target.reserve(list->items.size());
            for (const Node& item : list->items) {
                isPlain_ = isPlain_ && item.kind == Kind::kObject;
                readRule(item, target.emplace_back());
            }
        }
    }

    void readRule(const Node& node, FW::FWRULE& rule) {
        rule.ruleIndex = code(node, "ruleID");
        rule.enable = flag(node, "enable");
        rule.adapterDirect = code(node, "adapterDirect");
        rule.policy = static_cast<FW::FW_POLICY>(code(node, "policy"));
        rule.blLog = flag(node, "blLog");
        rule.labelList = texts(node, "labelList");
        rule.name = text(node, "name");
        rule.table = text(node, "table");
        for (std::string& chain : texts(node, "chainList")) {
            rule.chainList.insert(std::move(chain));
        }
        rule.ipType = code(node, "ipType");
        rule.ipDirect = code(node, "ipDirect");
        rule.ipGroup = code(node, "ipGroup");
        rule.ipList = texts(node, "ipList");
        rule.portDirect = code(node, "portDirect");
        rule.portGroup = code(node, "portGroup");
        rule.protocol = code(node, "protocol");
        rule.portList = texts(node, "portList");
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
    for (const Member& member : rules->value.members) {
        const Json::Value& list = value["rules"][member.name];
        for (std::size_t i = 0; list.isArray() && i < member.value.items.size(); ++i) {
            const auto index = static_cast<Json::ArrayIndex>(i);
            if (index < list.size() && !isRuleTaken(list[index])) {
                return &member.value.items[i];
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
        return name->value.text;
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
