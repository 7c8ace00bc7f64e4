#include "command/report/sections.h"
#include "command/report/table.h"

namespace zamofw::report {

Html changesSection(const Report& report) {
    const char* const title = "Last changes";
    if (!report.changes.value) {
        return section("changes", title, paragraph("Not known: " + report.changes.reason, "note"));
    }
    if (report.changes.value->empty()) {
        return section("changes", title, paragraph("None is logged."));
    }
    Listing listing = {
        "The last one first",
        "changes",
        {{"Time", "time"}, {"Who", "user"}, {"Result", "verdict"}, {"Command", "message code"}},
        {},
        report.changes.value->size()};
    for (const Change& change : *report.changes.value) {
        listing.rows.push_back(
            {timeOf(change.time),
             foreign(change.user + (change.from.empty() ? "" : " from " + change.from)),
             mark(change.result == "done" ? Mark::kAllowed : Mark::kDenied) + " " + change.result,
             foreign(change.command)});
    }
    return section("changes", title, table(listing));
}

}  // namespace zamofw::report
