#include "command/answers/kernelComparison.h"

#include <unistd.h>

#include "command/answers/kernelMatch.h"
#include "command/answers/meaning.h"
#include "command/console.h"

namespace zamofw {

report::Part<std::vector<report::Deviation>> kernelComparison() try {
    if (geteuid() != 0) {
        return {std::nullopt, "only root may ask the kernel"};
    }
    const KernelMatch match = kernelMatch(0);
    std::vector<report::Deviation> deviations;
    for (const Difference& difference : match.differences) {
        deviations.push_back({difference.family,
                              kindName(difference.kind),
                              difference.chain,
                              difference.line,
                              difference.origin ? originText(*difference.origin) : ""});
    }
    return {std::move(deviations), ""};
} catch (const Failure& failure) {
    return {std::nullopt, failure.what()};
}

}  // namespace zamofw
