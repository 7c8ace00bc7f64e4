#include <algorithm>
#include <map>

#include "command/report/sections.h"
#include "command/report/table.h"

namespace zamofw::report {
namespace {

constexpr std::size_t kOpenFindings = 15;
constexpr std::size_t kMostPlaces = 3;

// The same fault, wherever it is.
struct Fault {
    const Finding* finding = nullptr;
    std::vector<std::string> places;
};

// What lets in or locks out comes before rules that are only too many.
int rankOf(const Finding& finding) {
    if (finding.severity == Severity::kError) {
        return 0;
    }
    return finding.kind == "lockout"     ? 1
           : finding.kind == "shadowed"  ? 3
           : finding.kind == "redundant" ? 4
                                         : 2;
}

std::vector<Fault> faultsOf(Findings& findings) {
    std::stable_sort(
        findings.begin(), findings.end(), [](const Finding& one, const Finding& other) {
            return rankOf(one) < rankOf(other);
        });
    std::vector<Fault> faults;
    std::map<std::pair<std::string, std::string>, std::size_t> known;
    for (const Finding& finding : findings) {
        const auto [fault, isNew] =
            known.try_emplace({finding.message, finding.remedy}, faults.size());
        if (isNew) {
            faults.push_back({&finding, {}});
        }
        faults[fault->second].places.push_back(std::to_string(finding.line) + ":" +
                                               std::to_string(finding.column));
    }
    return faults;
}

std::string placesText(const std::vector<std::string>& places) {
    const std::size_t most = places.size() == kMostPlaces + 1 ? places.size() : kMostPlaces;
    std::string text;
    for (std::size_t i = 0; i < places.size() && i < most; ++i) {
        text += (i == 0 ? "" : ", ") + places[i];
    }
    return places.size() > most ? text + " and " + grouped(places.size() - most) + " more" : text;
}

Cells cellsOf(const Fault& fault) {
    const bool isError = fault.finding->severity == Severity::kError;
    return {mark(isError ? Mark::kDenied : Mark::kPartly) + (isError ? " error" : " warning"),
            foreign(fault.finding->message) +
                element("span", {{"class", "remedy"}}, foreign(fault.finding->remedy)),
            fault.finding->kind,
            placesText(fault.places)};
}

// "3 unknown-service, 1 redundant", for a list that nobody reads whole.
Html countsOf(const Findings& findings) {
    std::map<std::string, std::size_t> counts;
    for (const Finding& finding : findings) {
        ++counts[finding.kind];
    }
    std::string text;
    for (const auto& [kind, count] : counts) {
        text += (text.empty() ? "" : ", ") + grouped(count) + " " + kind;
    }
    return paragraph(text + ".");
}

}  // namespace

Html findingsSection(const Report& report) {
    const char* const title = "What the check finds";
    if (report.findings.empty()) {
        return section("findings", title, paragraph(mark(Mark::kAllowed) + " Nothing."));
    }
    Listing listing = {"Lines are those of " + report.file,
                       "findings",
                       {{"Severity", "verdict"},
                        {"What is wrong, and what to do", "message"},
                        {"Kind", "kind soft"},
                        {"Line", "place soft", true}},
                       {},
                       kOpenFindings};
    Findings findings = report.findings;
    for (const Fault& fault : faultsOf(findings)) {
        listing.rows.push_back(cellsOf(fault));
    }
    const bool isLong = report.findings.size() > kOpenFindings;
    return section(
        "findings", title, (isLong ? countsOf(report.findings) : Html()) + table(listing));
}

}  // namespace zamofw::report
