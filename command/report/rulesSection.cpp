// The rules of the profile, adapter by adapter.

#include <set>

#include "command/report/rulePhrase.h"
#include "command/report/sections.h"
#include "command/report/table.h"
#include "command/words/policyWord.h"
#include "library/model/names.h"

namespace zamofw::report {
namespace {

// Of an adapter; the others are folded away.
constexpr std::size_t kOpenRules = 40;

Html verdictOf(const FW::FWRULE& rule) {
    if (!rule.enable) {
        return mark(Mark::kNone) + " off";
    }
    const Mark sign = rule.policy == FW::FW_POLICY_ALLOW  ? Mark::kAllowed
                      : rule.policy == FW::FW_POLICY_DENY ? Mark::kDenied
                                                          : Mark::kNone;
    return mark(sign) + (" " + policyText(rule.policy));
}

std::string bytesText(std::uint64_t bytes) {
    constexpr std::uint64_t kStep = 1000;
    const char* const units[] = {" B", " kB", " MB", " GB", " TB", " PB", " EB"};
    std::size_t unit = 0;
    std::uint64_t tenths = 0;
    while (bytes >= kStep) {
        tenths = bytes % kStep / 100;
        bytes /= kStep;
        ++unit;
    }
    const bool isExact = unit == 0 || bytes >= 100;
    return std::to_string(bytes) + (isExact ? "" : "." + std::to_string(tenths)) + units[unit];
}

std::string defaultText(const FW::FWPROFILE& profile, const std::string& adapter) {
    const auto policy = profile.adapterPolicyMap.find(adapter);
    if (policy != profile.adapterPolicyMap.end() && policy->second == FW::FW_POLICY_ALLOW) {
        return "everything else is allowed";
    }
    if (policy != profile.adapterPolicyMap.end() && policy->second == FW::FW_POLICY_DENY) {
        return "everything else is denied";
    }
    return adapter == FW::kGlobalAdapter
               ? "they come before those of the adapters, which decide about the rest"
               : "everything else is let in, for want of a default";
}

std::vector<Column> columnsOf(bool isCounted) {
    std::vector<Column> columns = {{"#", "number"},
                                   {"Verdict", "verdict"},
                                   {"Packets to", "what"},
                                   {"Who", "who code"},
                                   {"Name and notes", "notes"}};
    if (isCounted) {
        columns.push_back({"Packets", "count", true});
        columns.push_back({"Bytes", "count", true});
    }
    return columns;
}

Html namesOf(const FW::FWRULE& rule) {
    const std::string notes = notePhrase(rule);
    Html text = rule.name.empty() ? Html() : foreign(rule.name);
    if (!notes.empty()) {
        text += Html(rule.name.empty() ? "" : " ") +
                element("span", {{"class", "soft"}}, foreign(notes));
    }
    return text;
}

Cells cellsOf(const FW::FWRULE& rule, std::size_t position, const Counter* counter) {
    Cells cells = {std::to_string(position),
                   verdictOf(rule),
                   foreign(servicePhrase(rule)),
                   foreign(addressPhrase(rule)),
                   namesOf(rule)};
    if (counter != nullptr) {
        cells.emplace_back(grouped(counter->packets));
        cells.emplace_back(bytesText(counter->bytes));
    }
    return cells;
}

Html rulesOf(const Report& report,
             const FW::FWPROFILE& profile,
             const std::string& adapter,
             const std::vector<FW::FWRULE>& rules) {
    const Html heading = element("h3", foreign(adapter));
    const std::string about = (rules.empty() ? "No rules" : amount(rules.size(), "rule")) + "; " +
                              defaultText(profile, adapter);
    if (rules.empty()) {
        return heading + paragraph(about, "soft");
    }
    const bool isCounted = report.counters.value.has_value();
    Listing listing = {about, "rules", columnsOf(isCounted), {}, kOpenRules};
    for (std::size_t i = 0; i < rules.size(); ++i) {
        Counter counter;
        if (isCounted) {
            const auto counted = report.counters.value->find({adapter, i + 1});
            counter = counted == report.counters.value->end() ? Counter() : counted->second;
        }
        listing.rows.push_back(cellsOf(rules[i], i + 1, isCounted ? &counter : nullptr));
    }
    return heading + table(listing);
}

}  // namespace

std::size_t ruleCount(const FW::FWPROFILE& profile) {
    std::size_t count = 0;
    for (const auto& [adapter, rules] : profile.rules) {
        count += rules.size();
    }
    return count;
}

Html rulesSection(const Report& report) {
    const Html title = Html("Rules of ") + foreign(report.profile);
    if (!report.rules.value) {
        return section("rules", title, paragraph("Not known: " + report.rules.reason, "note"));
    }
    const FW::FWPROFILE& profile = *report.rules.value;
    std::set<std::string> adapters;
    for (const auto& [adapter, rules] : profile.rules) {
        adapters.insert(adapter);
    }
    for (const auto& [adapter, policy] : profile.adapterPolicyMap) {
        adapters.insert(adapter);
    }
    Html content = paragraph(
        report.counters.value
            ? "Of the rules that match a packet, the first one decides. Packets and bytes are "
              "those that a rule has decided about since the last reload; of a connection only "
              "the first packet gets that far."
            : "Of the rules that match a packet, the first one decides. Packets are not counted "
              "here: " +
                  report.counters.reason + ".",
        "note");
    // As they are asked: those of `global` come first.
    if (adapters.erase(FW::kGlobalAdapter) != 0) {
        const auto rules = profile.rules.find(FW::kGlobalAdapter);
        if (rules != profile.rules.end() && !rules->second.empty()) {
            content += rulesOf(report, profile, FW::kGlobalAdapter, rules->second);
        }
    }
    for (const std::string& adapter : adapters) {
        const auto rules = profile.rules.find(adapter);
        content +=
            rulesOf(report,
                    profile,
                    adapter,
                    rules == profile.rules.end() ? std::vector<FW::FWRULE>() : rules->second);
    }
    if (ruleCount(profile) == 0 && adapters.empty()) {
        content += paragraph("It has no rules: everything is let in.");
    }
    return section("rules", title, content);
}

}  // namespace zamofw::report
