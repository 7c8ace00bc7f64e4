#include "command/words/values.h"

#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <charconv>

#include "command/console.h"
#include "command/words/quoting.h"

namespace zamofw {

void wrongValue(const std::string& word,
                const std::string& value,
                const std::string& problem,
                const std::string& remedy) {
    wrongUse(shown(word + " " + value) + ": " + problem, remedy);
}

std::vector<std::string> listFromText(const std::string& word, const std::string& text) {
    if (text.empty()) {
        wrongValue(word, text, "the list is empty", "name at least one, several with commas");
    }
    std::vector<std::string> entries;
    boost::split(entries, text, boost::is_any_of(","));
    if (std::find(entries.begin(), entries.end(), "") != entries.end()) {
        wrongValue(word,
                   text,
                   "an entry of the list is empty",
                   "separate the entries with one comma each, without a blank");
    }
    return entries;
}

std::optional<std::uint64_t> numberFromText(const std::string& text, std::uint64_t largest) {
    const bool isDecimal =
        !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    if (!isDecimal || (text.size() > 1 && text.front() == '0')) {
        return std::nullopt;
    }
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number > largest) {
        return std::nullopt;
    }
    return number;
}

std::size_t positionFromText(const std::string& text, std::size_t count, const std::string& what) {
    constexpr const char* kRemedy =
        "positions are counted from 1, as `zamofw rule list` prints them";
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) {
        wrongUse("the position " + shown(text) + " is no number", kRemedy);
    }
    const std::optional<std::uint64_t> position = numberFromText(text, count);
    if (!position || *position == 0) {
        const std::string there =
            count == 0 ? "there are none" : "their positions are 1 to " + std::to_string(count);
        wrongUse("there is no position " + shown(text) + " among " + what + ": " + there, kRemedy);
    }
    return *position;
}

}  // namespace zamofw
