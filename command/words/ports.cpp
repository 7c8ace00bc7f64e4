#include "command/words/ports.h"

#include <optional>

#include "command/words/quoting.h"
#include "command/words/values.h"

namespace zamofw {
namespace {

unsigned long portFromText(const std::string& word,
                           const std::string& text,
                           const std::string& port) {
    const std::optional<unsigned long> number = numberFromText(port, kHighestPort);
    if (number) {
        return *number;
    }
    const std::string problem = shown(port) + " is no port: a port is a number from 0 to 65535";
    if (port.find(':') != std::string::npos) {
        wrongValue(word, text, problem, "a range is written with a dash: 6000-6010");
    }
    if (port.find_first_of("0123456789") == std::string::npos) {
        wrongValue(word, text, problem, "services are named with --service");
    }
    wrongValue(word, text, problem, "write ports as 22 or 6000-6010, several with commas");
}

void checkPorts(const std::string& word, const std::string& text, const std::string& entry) {
    const std::size_t dash = entry.find('-');
    if (dash == std::string::npos) {
        (void)portFromText(word, text, entry);
        return;
    }
    const std::string lowText = entry.substr(0, dash);
    const std::string highText = entry.substr(dash + 1);
    const unsigned long low = portFromText(word, text, lowText);
    const unsigned long high = portFromText(word, text, highText);
    if (low > high) {
        wrongValue(word,
                   text,
                   "the range " + shown(entry) + " is reversed",
                   "write " + highText + "-" + lowText);
    }
}

}  // namespace

std::vector<std::string> portsFromText(const std::string& word, const std::string& text) {
    std::vector<std::string> entries = listFromText(word, text);
    for (const std::string& entry : entries) {
        checkPorts(word, text, entry);
    }
    return entries;
}

}  // namespace zamofw
