#include <ostream>

#include "command/answers/profileAnswers.h"
#include "command/answers/profileStore.h"

namespace zamofw {

Status profileShow(const Console& console, const TargetWords& words) {
    const Target target = readTarget(words);
    (void)jsonOfDocument(target.document);
    const std::string& text = target.document.text;
    console.out << text << (!text.empty() && text.back() == '\n' ? "" : "\n");
    return Status::kDone;
}

}  // namespace zamofw
