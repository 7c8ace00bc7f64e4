// The first thing to read: is all well?

#include <algorithm>

#include "command/report/sections.h"
#include "command/report/table.h"

namespace zamofw::report {
namespace {

Html strong(const std::string& text) {
    return element("strong", text);
}

Html strongName(const std::string& text) {
    return element("strong", foreign(text));
}

Html aboutProfile(const Report& report) {
    Html state = mark(report.isEnabled ? Mark::kAllowed : Mark::kDenied) + "The firewall is " +
                 strong(report.isEnabled ? "enabled" : "disabled");
    if (!report.rules.value) {
        return state + ". Its profile " + strongName(report.profile) + " cannot be read.";
    }
    const FW::FWPROFILE& profile = *report.rules.value;
    const auto adapters = static_cast<std::size_t>(
        std::count_if(profile.rules.begin(), profile.rules.end(), [](const auto& entry) {
            return !entry.second.empty();
        }));
    const std::size_t rules = ruleCount(profile);
    const Html name = Html(" the profile ") + strongName(report.profile);
    const std::string count =
        amount(rules, "rule") + (rules == 0 ? "" : " for " + amount(adapters, "adapter"));
    return report.isEnabled ? state + ", with" + name + ": " + count + "."
                            : state + ":" + name + " (" + count + ") is stored, and not in force.";
}

Html aboutKernel(const Report& report) {
    if (!report.kernel.value) {
        return mark(Mark::kNone) + "The kernel was " + strong("not compared") + " with it.";
    }
    const std::size_t count = report.kernel.value->size();
    return count == 0 ? mark(Mark::kAllowed) + "The kernel is " + strong("the same") + "."
                      : mark(Mark::kDenied) + "The kernel " + strong("differs") + " in " +
                            amount(count, "place") + ".";
}

Html aboutFindings(const Report& report) {
    const auto errors = static_cast<std::size_t>(
        std::count_if(report.findings.begin(), report.findings.end(), [](const Finding& finding) {
            return finding.severity == Severity::kError;
        }));
    const std::size_t warnings = report.findings.size() - errors;
    if (report.findings.empty()) {
        return mark(Mark::kAllowed) + "The check finds " + strong("nothing") + ".";
    }
    std::string text = errors == 0 ? "" : amount(errors, "error");
    if (warnings != 0) {
        text += (text.empty() ? "" : " and ") + amount(warnings, "warning");
    }
    return mark(errors == 0 ? Mark::kPartly : Mark::kDenied) + "The check finds " + strong(text) +
           ".";
}

}  // namespace

Html summary(const Report& report) {
    const Html sentences = element("span", aboutProfile(report)) + " " +
                           element("span", aboutKernel(report)) + " " +
                           element("span", aboutFindings(report));
    return element("header",
                   element("h1", Html("Firewall of ") + foreign(report.host)) +
                       paragraph(timeOf(report.time), "soft") + paragraph(sentences, "summary"));
}

}  // namespace zamofw::report
