#include "command/apply/keptRules.h"

#include <string>

#include "command/history/privateDirectory.h"
#include "command/startsWith.h"

namespace zamofw {
namespace {

constexpr const char* kHead4 = "# IPv4\n";
constexpr const char* kHead6 = "# IPv6\n";
constexpr const char* kEnd = "\nCOMMIT\n";

bool isWhole(const std::string& input, const std::string& head) {
    const std::string end = kEnd;
    return startsWith(input, head) && input.size() > end.size() &&
           input.compare(input.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

bool writeRules(const char* file, const RestoreInputs& inputs) {
    const posix::Descriptor directory = openStateDirectory();
    return directory && replacePrivateFile(directory, file, inputs.v4 + inputs.v6);
}

void keepRules(std::string_view v4, std::string_view v6) {
    const posix::Descriptor directory = openStateDirectory();
    // A reload that changes nothing does not wear the disk.
    if (directory && !privateFileHolds(directory, kKeptRulesFile, {v4, v6})) {
        (void)replacePrivateFile(directory, kKeptRulesFile, std::string(v4).append(v6));
    }
}

void keepRules(const Plan& plan) {
    keepRules(restoreInput(plan, 4), restoreInput(plan, 6));
}

std::optional<RestoreInputs> readRules(const char* file) {
    const posix::Descriptor directory = openStateDirectory();
    const std::optional<std::string> text =
        directory ? readPrivateFile(directory, file) : std::nullopt;
    // No line of a rule begins like this.
    const std::size_t border = text ? text->find(std::string("\n") + kHead6) : std::string::npos;
    if (border == std::string::npos) {
        return std::nullopt;
    }
    RestoreInputs inputs = {text->substr(0, border + 1), text->substr(border + 1), 0};
    return isWhole(inputs.v4, kHead4) && isWhole(inputs.v6, kHead6) ? std::optional(inputs)
                                                                    : std::nullopt;
}

void dropKeptRules() {
    const posix::Descriptor directory = openStateDirectory();
    if (directory) {
        (void)removePrivateFile(directory, kKeptRulesFile);
    }
}

}  // namespace zamofw
