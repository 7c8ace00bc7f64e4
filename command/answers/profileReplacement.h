// A whole document in the place of a stored one.
#ifndef COMMAND_ANSWERS_PROFILEREPLACEMENT_H
#define COMMAND_ANSWERS_PROFILEREPLACEMENT_H

#include <string>
#include <vector>

#include "command/console.h"

namespace zamofw {

// Whether to ask before rules are lost.
enum class Loss { kAsk, kAccepted };

enum class Replacement {
    kSame,     // it is stored like this already
    kNew,      // no profile has the name
    kOther,    // another document has it
    kRefused,  // another one has it that shall not be lost
};

// What storing the document under this name would do. Asks when it would throw rules away.
[[nodiscard]] Replacement replacementBy(const Console& console,
                                        const std::string& name,
                                        const std::string& document,
                                        Loss loss);

// Stores the document, records the change and answers it. Nothing is done when it is stored
// already.
[[nodiscard]] Status replaceProfile(const Console& console,
                                    const std::vector<std::string>& call,
                                    const std::string& name,
                                    const std::string& document,
                                    Loss loss);

}  // namespace zamofw

#endif
