// The parts of the page, each a <section> with a heading.
#ifndef COMMAND_REPORT_SECTIONS_H
#define COMMAND_REPORT_SECTIONS_H

#include "command/report/html.h"
#include "command/report/report.h"

namespace zamofw::report {

[[nodiscard]] Html summary(const Report& report);
[[nodiscard]] Html matrixSection(const Report& report);
[[nodiscard]] Html findingsSection(const Report& report);
[[nodiscard]] Html kernelSection(const Report& report);
[[nodiscard]] Html changesSection(const Report& report);
[[nodiscard]] Html rulesSection(const Report& report);

[[nodiscard]] Html section(const char* id, const Html& title, const Html& content);

// <p class="look">text</p>
[[nodiscard]] Html paragraph(const Html& text, const char* look = "");

// "2026-11-21 20:39 UTC"
[[nodiscard]] Html timeOf(const std::string& rfc3339);

// A sign for a verdict or a severity. It says nothing to those who listen: a word stands beside it.
enum class Mark { kAllowed, kPartly, kDenied, kNone };
[[nodiscard]] Html mark(Mark sign);
// The drawings that marks use; once in a page, before the first mark.
[[nodiscard]] Html markDrawings();

[[nodiscard]] std::size_t ruleCount(const FW::FWPROFILE& profile);

}  // namespace zamofw::report

#endif
