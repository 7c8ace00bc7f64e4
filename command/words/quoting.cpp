#include "command/words/quoting.h"

#include <boost/algorithm/string/replace.hpp>
#include <cstdio>

#include "command/words/plainText.h"

namespace zamofw {
namespace {

constexpr std::size_t kLongestShown = 200;

// Characters that no shell treats in a special way, wherever they stand in a word.
bool isBare(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= '0' && byte <= '9') ||
           std::string("-_./:,@%+=").find(byte) != std::string::npos;
}

bool needsQuotes(const std::string& word) {
    // zsh takes a leading '=' as the path of a command.
    if (word.empty() || word.front() == '=') {
        return true;
    }
    for (const char byte : word) {
        if (!isBare(byte)) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::string shellQuoted(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        line += line.empty() ? "" : " ";
        line += needsQuotes(word) ? "'" + boost::replace_all_copy(word, "'", "'\\''") + "'" : word;
    }
    return line;
}

std::string shown(const std::string& text) {
    std::string cut = text;
    if (text.size() > kLongestShown) {
        // Not in the middle of a character.
        std::size_t end = kLongestShown;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
            --end;
        }
        cut = text.substr(0, end);
    }
    std::string result;
    const bool isPlain = isPlainText(cut);
    for (const char byte : cut) {
        const auto code = static_cast<unsigned char>(byte);
        if (isPlain || (code >= 0x20 && code < 0x7F)) {
            result += byte;
            continue;
        }
        char escaped[sizeof "\\xNN"];
        (void)std::snprintf(escaped, sizeof escaped, "\\x%02x", code);
        result += escaped;
    }
    return "`" + result + (cut.size() < text.size() ? "..." : "") + "`";
}

}  // namespace zamofw
