#include "command/document/memberCheck.h"

#include <algorithm>
#include <limits>
#include <unordered_map>

namespace zamofw {
namespace {

const char* nameOf(Node::Kind kind) {
    switch (kind) {
        case Node::Kind::kNull:
            return "null";
        case Node::Kind::kBool:
            return "true or false";
        case Node::Kind::kInteger:
            return "an integer";
        case Node::Kind::kReal:
            return "a number that is no 32-bit integer";
        case Node::Kind::kText:
            return "a text";
        case Node::Kind::kList:
            return "a list";
        case Node::Kind::kObject:
            return "an object";
    }
    return "";
}

struct TypeWords {
    const char* name;
    const char* remedy;
};

TypeWords wordsOf(MemberType type) {
    switch (type) {
        case MemberType::kFlag:
            return {"true or false", "Write true or false, without quotes."};
        case MemberType::kInteger:
            return {"a 32-bit integer", "Write an integer without quotes, point and exponent."};
        case MemberType::kText:
            return {"a text", "Write a text in quotes."};
        case MemberType::kTexts:
            return {"a list of texts", "Write a list of texts: [ \"...\", \"...\" ]."};
        case MemberType::kObject:
            return {"an object", "Write an object: { \"NAME\": VALUE, ... }."};
    }
    return {"", ""};
}

Node::Kind kindOf(MemberType type) {
    switch (type) {
        case MemberType::kFlag:
            return Node::Kind::kBool;
        case MemberType::kInteger:
            return Node::Kind::kInteger;
        case MemberType::kText:
            return Node::Kind::kText;
        case MemberType::kTexts:
            return Node::Kind::kList;
        case MemberType::kObject:
            return Node::Kind::kObject;
    }
    return Node::Kind::kNull;
}

bool is32Bit(std::int64_t value) {
    return value >= std::numeric_limits<std::int32_t>::min() &&
           value <= std::numeric_limits<std::int32_t>::max();
}

std::vector<std::string> namesOf(const MemberTable& table) {
    std::vector<std::string> names;
    for (const MemberRow& entry : table) {
        names.push_back(entry.name);
    }
    return names;
}

void reportUnknown(const Member& member,
                   const Location& where,
                   const MemberTable& table,
                   const char* owner,
                   FindingList& findings) {
    const auto names = [&table] { return namesOf(table); };
    const std::string near = findings.suggestionFor(owner, member.name, names);
    std::string remedy = "Correct the name: " + near;
    if (near.empty()) {
        remedy = "Take it out, or use one of";
        for (const MemberRow& entry : table) {
            remedy += (&entry == &table.front() ? " " : ", ") + entry.name;
        }
        remedy += '.';
    }
    findings.warning(
        member.nameOffset,
        {where, member.name},
        {"unknown-member",
         quoted(member.name) + " is no member of " + owner + ", so that nobody reads it",
         std::move(remedy)});
}

void reportDuplicate(const Member& member, const Location& where, FindingList& findings) {
    findings.error(member.nameOffset,
                   {where, member.name},
                   {"duplicate-member",
                    quoted(member.name) + " was there before; a reader sees only the last one",
                    "Take one of them out, or make one of both."});
}

void checkCode(const Node& value,
               const Location& where,
               const MemberRow& entry,
               FindingList& findings) {
    if (!entry.codes.empty() && !isCode(value.integer(), entry.codes)) {
        findings.error(
            value.offset, where, codeFault(quoted(entry.name), value.integer(), entry.codes));
    }
}

}  // namespace

bool Members::areSound() const {
    return std::find(sound_.begin(), sound_.end(), false) == sound_.end();
}

std::optional<std::int64_t> Members::integer(std::size_t row) const {
    if (!sound_[row]) {
        return std::nullopt;
    }
    return values_[row] == nullptr ? 0 : values_[row]->integer();
}

bool Members::flag(std::size_t row) const {
    return values_[row] != nullptr && values_[row]->flag();
}

std::string_view Members::text(std::size_t row) const {
    return values_[row] == nullptr ? std::string_view() : values_[row]->text();
}

Span<Node> Members::items(std::size_t row) const {
    return values_[row] == nullptr ? Span<Node>() : values_[row]->items();
}

bool isCode(std::int64_t value, const std::vector<Code>& codes) {
    return std::any_of(
        codes.begin(), codes.end(), [value](const Code& code) { return code.value == value; });
}

Fault codeFault(const std::string& what, std::int64_t value, const std::vector<Code>& codes) {
    std::string remedy = "Use";
    for (const Code& code : codes) {
        remedy += (&code == &codes.front() ? " " : ", ") + std::to_string(code.value) + " (" +
                  code.meaning + ")";
    }
    return {"unknown-code", std::to_string(value) + " is no code of " + what, remedy + '.'};
}

bool hasType(const Node& value, MemberType type) {
    if (value.kind != kindOf(type)) {
        return false;
    }
    if (type == MemberType::kInteger) {
        return is32Bit(value.integer());
    }
    const Span<Node> items = value.items();
    return type != MemberType::kTexts ||
           std::all_of(items.begin(), items.end(), [](const Node& item) {
               return item.kind == Node::Kind::kText;
           });
}

bool checkType(const Node& value,
               const Location& where,
               const std::string& what,
               MemberType type,
               FindingList& findings) {
    if (hasType(value, type)) {
        return true;
    }
    if (type == MemberType::kTexts && value.kind == Node::Kind::kList) {
        for (std::size_t i = 0; i < value.items().size(); ++i) {
            (void)checkType(
                value.items()[i], {where, i}, "an entry of " + what, MemberType::kText, findings);
        }
        return false;
    }
    const bool isTooLarge = value.kind == Node::Kind::kInteger && type == MemberType::kInteger;
    const TypeWords words = wordsOf(type);
    findings.error(value.offset,
                   where,
                   {"wrong-type",
                    what + " must be " + words.name + ", not " +
                        nameOf(isTooLarge ? Node::Kind::kReal : value.kind),
                    words.remedy});
    return false;
}

Members checkMembers(const Node& object,
                     const Location& where,
                     const MemberTable& table,
                     const char* owner,
                     bool closed,
                     FindingList& findings) {
    Members members;
    members.sound_.fill(true);
    std::array<bool, Members::kMaxRows> seen = {};
    std::size_t row = 0;
    std::size_t guess = 0;
    for (const Member& member : object.members()) {
        row = rowOf(table, member.name, guess);
        guess = row + 1;
        if (row == table.size()) {
            if (closed) {
                reportUnknown(member, where, table, owner, findings);
            }
            continue;
        }
        if (seen[row]) {
            reportDuplicate(member, where, findings);
        }
        seen[row] = true;
        members.values_[row] = member.value.kind == Node::Kind::kNull ? nullptr : &member.value;
    }
    for (row = 0; row < table.size(); ++row) {
        const Node*& value = members.values_[row];
        if (value == nullptr) {
            continue;
        }
        const MemberRow& entry = table[row];
        const Location place(where, entry.name);
        if (hasType(*value, entry.type)) {
            checkCode(*value, place, entry, findings);
        } else {
            (void)checkType(*value, place, quoted(entry.name), entry.type, findings);
            value = nullptr;
            members.sound_[row] = false;
        }
    }
    return members;
}

std::vector<const Member*> checkFreeMembers(const Node& object,
                                            const Location& where,
                                            FindingList& findings) {
    std::unordered_map<std::string_view, std::size_t> positions;
    std::vector<const Member*> seen;
    for (const Member& member : object.members()) {
        const auto [position, isNew] = positions.emplace(member.name, seen.size());
        if (isNew) {
            seen.push_back(&member);
        } else {
            reportDuplicate(member, where, findings);
            seen[position->second] = &member;
        }
    }
    return seen;
}

}  // namespace zamofw
