#include "command/document/textCheck.h"

#include <algorithm>

#include "command/document/bytes.h"

namespace zamofw {
namespace {

std::optional<Fault> blankFault(const std::string& what, std::string_view text) {
    if (text.find(' ') != std::string_view::npos) {
        return Fault{"blank-in-text",
                     what + ' ' + quoted(text) + " has a blank in it, which splits it into words",
                     "Take the blank out: a command line to iptables has no quotes."};
    }
    if (hasControl(text)) {
        return Fault{"blank-in-text",
                     what + ' ' + quoted(text) + " has a control character in it",
                     "Take the tab, line break or other control character out."};
    }
    return std::nullopt;
}

Fault optionFault(const std::string& what, std::string_view text) {
    return {"option-in-text",
            what + ' ' + quoted(text) + " begins with a dash, as an option of iptables does",
            "Take the dash out."};
}

}  // namespace

bool isDigits(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool hasControl(std::string_view text) {
    return std::any_of(text.begin(), text.end(), isControl);
}

bool isWord(std::string_view text) {
    return !text.empty() && text[0] != '-' &&
           std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 0x7F; });
}

std::optional<Fault> wordFault(const std::string& what, std::string_view text) {
    if (std::optional<Fault> fault = blankFault(what, text)) {
        return fault;
    }
    if (!text.empty() && text[0] == '-') {
        return optionFault(what, text);
    }
    return std::nullopt;
}

std::optional<Fault> entryFault(const std::string& what, std::string_view text) {
    if (std::optional<Fault> fault = blankFault(what, text)) {
        return fault;
    }
    if (!text.empty() && text[0] == '-' && !isDigits(std::string_view(text).substr(1))) {
        return optionFault(what, text);
    }
    return std::nullopt;
}

}  // namespace zamofw
