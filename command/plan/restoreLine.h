// Lines of the input for the restore programs.
#ifndef COMMAND_PLAN_RESTORELINE_H
#define COMMAND_PLAN_RESTORELINE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zamofw {

// What comes before the lines of the table "filter": the firewall's chains are flushed.
[[nodiscard]] std::vector<std::string> filterHead(int family);

// Whether there is a byte in it that the input's own parser would not take as it is.
[[nodiscard]] bool hasSpecial(std::string_view text);

// What cmdExec() takes: words with the program's path, and their bytes, each with its NUL.
constexpr std::size_t kMaxWords = 255;
constexpr std::size_t kMaxBytes = 1024;
// No line of this length can be over the limits: a word takes two bytes, with its blank.
constexpr std::size_t kSurelyShort = 2 * (kMaxWords - 1);

// A line of the plan as it stands in the table "filter"; none when it belongs to another one or
// needs a closer look.
[[nodiscard]] std::optional<std::string_view> plainFilterLine(std::string_view line);

}  // namespace zamofw

#endif
