// The difference between two lists of texts.
#ifndef COMMAND_PLAN_LINEDIFF_H
#define COMMAND_PLAN_LINEDIFF_H

#include <cstddef>
#include <string>
#include <vector>

namespace zamofw {

// One step of the way from the old list to the new one.
struct Edit {
    enum class Kind { kSame, kRemoved, kAdded };
    Kind kind = Kind::kSame;
    std::size_t oldIndex = 0;  // where the step begins in each list
    std::size_t newIndex = 0;
};

// All steps in order, what is removed before what is added. As many texts as possible stay the
// same, except where one text stands in the new list hundreds of times.
[[nodiscard]] std::vector<Edit> lineDiff(const std::vector<std::string>& oldTexts,
                                         const std::vector<std::string>& newTexts);

[[nodiscard]] bool isSame(const std::vector<Edit>& edits);

// The changes as hunks of a unified diff, with three texts around them. Each head ends with
// `title`. Empty when nothing changes.
[[nodiscard]] std::string unifiedHunks(const std::vector<std::string>& oldTexts,
                                       const std::vector<std::string>& newTexts,
                                       const std::vector<Edit>& edits,
                                       const std::string& title);

}  // namespace zamofw

#endif
