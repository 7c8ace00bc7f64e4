#include "command/console.h"

#include <unistd.h>

#include <iostream>
#include <utility>

namespace zamofw {

Failure::Failure(Status status, const std::string& message, std::string remedy)
    : std::runtime_error(message), status_(status), remedy_(std::move(remedy)) {}

void wrongUse(const std::string& message, const std::string& remedy) {
    throw Failure(Status::kWrongUse, message, remedy);
}

void failed(const std::string& message, const std::string& remedy) {
    throw Failure(Status::kFailed, message, remedy);
}

void requireRoot(const std::string& what) {
    if (geteuid() != 0) {
        throw Failure(
            Status::kNotPermitted, what + " needs root", "run it as root, for instance with sudo");
    }
}

bool Console::confirm(const std::string& question) const {
    if (yes) {
        return true;
    }
    if (!canAsk) {
        err << question << "\nnobody can be asked here: say --yes to go on\n";
        return false;
    }
    err << question << " [y/N] " << std::flush;
    std::string answer;
    return std::getline(std::cin, answer) && (answer == "y" || answer == "Y" || answer == "yes");
}

}  // namespace zamofw
