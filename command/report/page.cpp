#include "command/report/report.h"
#include "command/report/sections.h"
#include "command/report/style.h"

namespace zamofw::report {
namespace {

struct Link {
    const char* id;
    const char* text;
};
constexpr Link kLinks[] = {{"#reach", "Who reaches what"},
                           {"#findings", "Findings"},
                           {"#kernel", "Kernel"},
                           {"#changes", "Changes"},
                           {"#rules", "Rules"}};

Html links() {
    Html items;
    for (const Link& link : kLinks) {
        items += element("a", {{"href", link.id}}, link.text) + " ";
    }
    return element("nav", {{"aria-label", "Parts of the report"}}, items);
}

// The policy keeps a browser from loading or running anything, should a text ever become markup.
Html head(const Report& report) {
    return Html::markup(
               "<head>\n<meta charset=\"utf-8\">\n"
               "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
               "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
               "style-src 'unsafe-inline'\">\n"
               "<meta name=\"color-scheme\" content=\"light dark\">\n") +
           element("title", "Firewall of " + report.host + ", " + report.time) +
           Html::markup("\n<style>\n") + Html::markup(styleSheet()) +
           Html::markup("</style>\n</head>\n");
}

}  // namespace

Html section(const char* id, const Html& title, const Html& content) {
    const std::string heading = std::string(id) + "-heading";
    return element("section",
                   {{"id", id}, {"aria-labelledby", heading}},
                   element("h2", {{"id", heading}}, title) + Html::markup("\n") + content) +
           Html::markup("\n");
}

Html paragraph(const Html& text, const char* look) {
    return element("p", {{"class", look}}, text) + Html::markup("\n");
}

Html timeOf(const std::string& rfc3339) {
    // "2026-11-21T20:39:29Z"
    constexpr std::size_t kDate = 10;
    constexpr std::size_t kMinutes = 16;
    const bool isUsual = rfc3339.size() == 20 && rfc3339[kDate] == 'T' && rfc3339.back() == 'Z';
    return element("time",
                   {{"datetime", rfc3339}},
                   isUsual ? rfc3339.substr(0, kDate) + " " +
                                 rfc3339.substr(kDate + 1, kMinutes - kDate - 1) + " UTC"
                           : rfc3339);
}

std::string page(const Report& report) {
    const Html content = summary(report) + links() + matrixSection(report) +
                         findingsSection(report) + kernelSection(report) + changesSection(report) +
                         rulesSection(report);
    return (Html::markup("<!DOCTYPE html>\n<html lang=\"en\">\n") + head(report) +
            Html::markup("<body>\n") + markDrawings() + element("main", content) +
            Html::markup("\n</body>\n</html>\n"))
        .str();
}

}  // namespace zamofw::report
