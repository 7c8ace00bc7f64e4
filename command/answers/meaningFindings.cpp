#include "command/answers/meaningFindings.h"

#include <algorithm>
#include <set>
#include <utility>

#include "command/analysis/boxSpace.h"
#include "command/analysis/idleRules.h"
#include "command/answers/meaning.h"
#include "command/console.h"
#include "command/document/findingList.h"
#include "command/document/memberCheck.h"
#include "command/document/profileRecord.h"

namespace zamofw {
namespace {

using analysis::Origin;

constexpr std::size_t kMostNamed = 5;

std::string enumeration(const std::vector<Origin>& origins) {
    std::string text;
    for (std::size_t i = 0; i < origins.size(); ++i) {
        if (i == kMostNamed) {
            return text + " and " + std::to_string(origins.size() - kMostNamed) + " more";
        }
        text += (i == 0 ? "" : i + 1 == origins.size() ? " and " : ", ") + originText(origins[i]);
    }
    return text;
}

// Finds rules and defaults in the document.
class Places {
  public:
    explicit Places(const Document& document)
        : rules_(document.root.find(profileTable()[profileField::kRules].name)),
          policies_(document.root.find(profileTable()[profileField::kPolicies].name)) {}

    // Hands the origin's offset and location to `report`, if it is there.
    template <typename Report>
    void at(const Origin& origin, Report report) const {
        const bool isRule = origin.kind == Origin::Kind::kRule;
        const Member* const member = isRule ? rules_ : policies_;
        const Member* const adapter =
            member == nullptr ? nullptr : member->value.find(origin.adapter);
        if (adapter == nullptr) {
            return;
        }
        const Location root;
        const Location list(root, member->name);
        const Location where(list, adapter->name);
        if (!isRule) {
            report(adapter->value.offset, where);
            return;
        }
        const std::size_t index = origin.position.value_or(0) - 1;
        if (index < adapter->value.items().size()) {
            report(adapter->value.items()[index].offset, Location(where, index));
        }
    }

  private:
    const Member* rules_;
    const Member* policies_;
};

Fault shadowFault(const analysis::ShadowedRule& shadowed) {
    if (shadowed.by.empty()) {
        return {"shadowed",
                "no packet is like this, so that " + originText(shadowed.rule) + " does nothing",
                "Delete it, or see whether its adapter, direction and chains fit together."};
    }
    return {"shadowed",
            "no packet reaches " + originText(shadowed.rule) + ": " + enumeration(shadowed.by) +
                (shadowed.by.size() == 1 ? " decides" : " decide") + " about all of its packets",
            "Delete it, or move it up with `zamofw rule move`."};
}

Fault redundantFault(const Origin& rule) {
    return {"redundant",
            originText(rule) + " could be taken away: every packet would get the same verdict",
            "Delete it, unless it is meant to log, or to be counted."};
}

void addLockouts(const analysis::Model& model,
                 const Client& client,
                 const Places& places,
                 FindingList& findings) {
    std::vector<std::string> interfaces = client.interfaces;
    if (interfaces.empty()) {
        interfaces = analysis::interfacesFor(analysis::interfacesOf(model)).in;
    }
    std::vector<Origin> reported;
    for (const std::string& interface : interfaces) {
        analysis::PacketQuestion question = client.question;
        const bool isOther = interface == analysis::Interfaces::kOther;
        if (!isOther) {
            question.packet.in = interface;
        }
        const analysis::Explanation answer = analysis::explain(model, question);
        const Origin& decider = answer.decider;
        if (answer.isAllowed ||
            std::find(reported.begin(), reported.end(), decider) != reported.end()) {
            continue;
        }
        reported.push_back(decider);
        places.at(decider, [&](std::size_t offset, const Location& where) {
            findings.warning(
                offset,
                where,
                {"lockout",
                 "after this, " + client.address + " cannot reach " +
                     std::to_string(static_cast<unsigned>(answer.packet.port)) + "/tcp on " +
                     (isOther ? "other interfaces" : interface) + ": " + originText(decider),
                 "Allow it in a rule before that one, unless nobody is to come in from there."});
        });
    }
}

void addIdleRules(const analysis::Model& model, const Places& places, FindingList& findings) {
    const analysis::IdleRules idle = analysis::idleRules(model);
    for (const analysis::ShadowedRule& shadowed : idle.shadowed) {
        places.at(shadowed.rule, [&](std::size_t offset, const Location& where) {
            std::vector<FindingPlace> by;
            for (const Origin& origin : shadowed.by) {
                by.push_back({origin.adapter, origin.position});
            }
            findings.shadowed(offset, where, shadowFault(shadowed), std::move(by));
        });
    }
    for (const Origin& rule : idle.redundant) {
        places.at(rule, [&](std::size_t offset, const Location& where) {
            findings.warning(offset, where, redundantFault(rule));
        });
    }
}

// Null for what the check of the document speaks about.
std::unique_ptr<const Meaning> readableMeaning(const Document& document,
                                               analysis::ModelReader& reader) {
    try {
        return meaningOf(profileRecord(document), "", reader);
    } catch (const Failure&) {
        return nullptr;
    }
}

}  // namespace

Findings meaningFindings(const Document& document,
                         analysis::ModelReader& reader,
                         const std::optional<Client>& client) {
    const auto meaning = readableMeaning(document, reader);
    FindingList findings(document);
    if (meaning != nullptr) {
        const Places places(document);
        addIdleRules(meaning->model, places, findings);
        if (client) {
            addLockouts(meaning->model, *client, places, findings);
        }
    }
    return findings.take();
}

Findings lockoutFindings(const Document& document, const Client& client) {
    analysis::ModelReader reader(countryRanges());
    const auto meaning = readableMeaning(document, reader);
    FindingList findings(document);
    if (meaning != nullptr) {
        addLockouts(meaning->model, client, Places(document), findings);
    }
    return findings.take();
}

}  // namespace zamofw
