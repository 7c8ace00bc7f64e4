#include "command/report/sections.h"
#include "command/report/table.h"

namespace zamofw::report {
namespace {

constexpr std::size_t kOpenDeviations = 15;

Cells cellsOf(const Deviation& deviation) {
    return {deviation.kind,
            "IPv" + std::to_string(deviation.family) + ", " + deviation.chain,
            element("span", {{"class", "code"}}, foreign(deviation.line)) +
                element("span", {{"class", "remedy"}}, foreign(deviation.origin))};
}

}  // namespace

Html kernelSection(const Report& report) {
    const char* const title = "The kernel";
    if (!report.kernel.value) {
        return section(
            "kernel",
            title,
            paragraph(mark(Mark::kNone) + " Not compared: " + report.kernel.reason + ".", "note"));
    }
    const std::vector<Deviation>& deviations = *report.kernel.value;
    if (deviations.empty()) {
        return section(
            "kernel",
            title,
            paragraph(mark(Mark::kAllowed) +
                      (report.isEnabled ? " The same: it holds exactly the rules of the profile."
                                        : " The same: the firewall is disabled, and it holds none "
                                          "of its rules.")));
    }
    Listing listing = {"Where the kernel differs",
                       "differences",
                       {{"Difference", "verdict"}, {"Chain", "who"}, {"Line", "message"}},
                       {},
                       kOpenDeviations};
    for (const Deviation& deviation : deviations) {
        listing.rows.push_back(cellsOf(deviation));
    }
    return section("kernel", title, table(listing));
}

}  // namespace zamofw::report
