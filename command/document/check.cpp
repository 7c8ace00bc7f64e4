#include "command/document/check.h"

#include <algorithm>
#include <map>

#include "command/document/adapterCheck.h"
#include "command/document/findingList.h"
#include "command/document/memberCheck.h"
#include "command/document/profileCheck.h"

namespace zamofw {
namespace {

void checkName(const Node& profile,
               const Members& members,
               const Location& where,
               FindingList& findings) {
    if (!members.isSound(profileField::kName) || !members.text(profileField::kName).empty()) {
        return;
    }
    const Fault fault = {"missing-name",
                         "the profile has no name",
                         "Give it one: \"name\": \"home\". The file's own name does not count."};
    const Node* const name = members.find(profileField::kName);
    if (name == nullptr) {
        findings.error(profile.offset, where, fault);
    } else {
        findings.error(name->offset, {where, profileTable()[profileField::kName].name}, fault);
    }
}

}  // namespace

void checkProfileValue(const Node& profile,
                       const Location& where,
                       const CheckContext& context,
                       FindingList& findings) {
    if (!checkType(profile, where, "a profile", MemberType::kObject, findings)) {
        return;
    }
    const Members members =
        checkMembers(profile, where, profileTable(), "a profile", true, findings);
    checkName(profile, members, where, findings);
    checkAdapters({members.find(profileField::kRules),
                   members.find(profileField::kPolicies),
                   members.isSound(profileField::kPolicies)},
                  where,
                  context,
                  findings);
}

const Node* profileNameIn(const Node& profile) {
    const Member* const name = profile.find(profileTable()[profileField::kName].name);
    return name == nullptr || name->value.kind != Node::Kind::kText ? nullptr : &name->value;
}

Fault syntaxFault(const SyntaxFault& fault) {
    return {
        "syntax",
        "this is no JSON: " + fault.message,
        "Correct the text here or just before; a comma too many or too few is the usual cause."};
}

Fault duplicateName(std::string_view name, std::string_view otherFile) {
    return {"duplicate-name",
            "the name " + quoted(name) + " is taken by " + quoted(otherFile) +
                ", so that this profile is never found",
            "Give one of them another name, or delete it."};
}

Findings checkProfile(const Document& document, const CheckContext& context) {
    FindingList findings(document);
    if (document.fault) {
        findings.error(document.fault->offset, {}, syntaxFault(*document.fault));
    } else {
        checkProfileValue(document.root, {}, context, findings);
    }
    return findings.take();
}

Findings checkStoredNames(const std::vector<const Document*>& stored) {
    std::vector<const Document*> sorted = stored;
    std::sort(sorted.begin(), sorted.end(), [](const Document* one, const Document* other) {
        return one->file < other->file;
    });
    std::map<std::string_view, const Document*> seen;
    Findings all;
    for (const Document* document : sorted) {
        const Node* const name = profileNameIn(document->root);
        if (document->fault || name == nullptr) {
            continue;
        }
        const auto [first, isNew] = seen.emplace(name->text(), document);
        if (!isNew) {
            FindingList findings(*document);
            const Location root;
            findings.warning(name->offset,
                             {root, profileTable()[profileField::kName].name},
                             duplicateName(name->text(), first->second->file));
            for (Finding& finding : findings.take()) {
                all.push_back(std::move(finding));
            }
        }
    }
    return all;
}

bool hasError(const Findings& findings) {
    return std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.severity == Severity::kError;
    });
}

}  // namespace zamofw
