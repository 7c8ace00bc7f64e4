#include "command/apply/programs.h"

#include <boost/algorithm/string/predicate.hpp>
#include <filesystem>
#include <sstream>

namespace zamofw {

std::string tool(int family) {
    return (family == 4 ? FW::kIpv4 : FW::kIpv6).program;
}

std::string restoreProgram(int family) {
    return tool(family) + "-restore";
}

std::string saveProgram(int family) {
    return tool(family) + "-save";
}

Variant variantOf(int family) {
    std::error_code error;
    const std::filesystem::path program =
        std::filesystem::canonical(restoreProgram(family), error).filename();
    if (program == "xtables-legacy-multi" || program == "xtables-multi") {
        return Variant::kLegacy;
    }
    return program == "xtables-nft-multi" ? Variant::kNft : Variant::kUnknown;
}

std::string causeIn(const std::string& error) {
    using boost::algorithm::starts_with;
    std::string cause;
    std::istringstream lines(error);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && !starts_with(line, "Try `") &&
            !starts_with(line, "Error occurred at line:") &&
            !starts_with(line, "# Warning: iptables-legacy tables present")) {
            cause += (cause.empty() ? "" : "\n") + line;
        }
    }
    return cause;
}

}  // namespace zamofw
