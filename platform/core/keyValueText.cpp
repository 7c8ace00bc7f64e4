#include "platform/core/keyValueText.h"

namespace zamo {
namespace {

constexpr std::string_view kBlanks = " \t\r\v\f";

// Removes the first line from `text` and returns it.
std::string_view takeLine(std::string_view& text) {
    const std::size_t feed = text.find('\n');
    const std::size_t length = feed == std::string_view::npos ? text.size() : feed + 1;
    const std::string_view line = text.substr(0, length);
    text.remove_prefix(length);
    return line;
}

std::string_view withoutLineFeed(std::string_view line) {
    if (!line.empty() && line.back() == '\n') {
        line.remove_suffix(1);
    }
    return line;
}

struct Pair {
    std::string_view key;
    std::string_view value;
};

std::optional<Pair> parseLine(std::string_view line) {
    line = trimBlanks(withoutLineFeed(line));
    const std::size_t equals = line.find('=');
    if (line.empty() || line.front() == '#' || equals == std::string_view::npos) {
        return {};
    }

    std::string_view value = trimBlanks(line.substr(equals + 1));
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        value = value.substr(1, value.size() - 2);
    }
    return Pair{trimBlanks(line.substr(0, equals)), value};
}

}  // namespace

std::string_view trimBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::optional<std::string> findValue(std::string_view text, std::string_view key) {
    std::optional<std::string> found;
    while (!text.empty()) {
        const auto pair = parseLine(takeLine(text));
        if (pair && pair->key == key) {
            found = pair->value;
        }
    }
    return found;
}

bool isStorable(std::string_view key, std::string_view value) {
    return !key.empty() && key.front() != '#' &&
           key.find_first_of("=\n") == std::string_view::npos &&
           value.find_first_of("\"\n") == std::string_view::npos;
}

std::string withValue(std::string_view text, std::string_view key, std::string_view value) {
    const std::string replacement = std::string(key).append("=\"").append(value).append("\"\n");
    std::string result;
    bool written = false;
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        const auto pair = parseLine(line);
        if (!pair || pair->key != key) {
            result += line;
        } else if (!written) {
            result += replacement;
            written = true;
        }
    }
    if (written) {
        return result;
    }
    if (!result.empty() && result.back() != '\n') {
        result += '\n';
    }
    return result + replacement;
}

}  // namespace zamo
