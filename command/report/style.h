// How the page looks.
#ifndef COMMAND_REPORT_STYLE_H
#define COMMAND_REPORT_STYLE_H

namespace zamofw::report {

[[nodiscard]] const char* styleSheet();

}  // namespace zamofw::report

#endif
