// Ports, as words and as entries of a document.

#include "command/words/ports.h"
#include "command/console.h"
#include "fuzz/harness.h"

namespace {

unsigned long checkedPort(const std::string& text) {
    fuzz::require(!text.empty() && text.size() <= 5, "a port has at most five digits");
    fuzz::require(text.find_first_not_of("0123456789") == std::string::npos, "a port is digits");
    fuzz::require(text == "0" || text[0] != '0', "a port does not begin with 0");
    const unsigned long port = std::stoul(text);
    fuzz::require(port <= 65535, "a port has 16 bits");
    return port;
}

}  // namespace

void fuzz::run(const std::string& text) {
    try {
        std::string joined;
        for (const std::string& entry : zamofw::portsFromText("--port", text)) {
            const std::size_t dash = entry.find('-');
            const unsigned long low = checkedPort(entry.substr(0, dash));
            require(dash == std::string::npos || low <= checkedPort(entry.substr(dash + 1)),
                    "a range does not end before it begins");
            joined += (joined.empty() ? "" : ",") + entry;
        }
        require(joined == text, "every port is kept as it was said");
    } catch (const zamofw::Failure& failure) {
        require(failure.status() == zamofw::Status::kWrongUse, "a wrong word is wrong use");
    }
}
