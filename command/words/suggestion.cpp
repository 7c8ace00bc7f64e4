#include "command/words/suggestion.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>

#include "command/startsWith.h"

namespace zamofw {
namespace {

// Nobody mistypes a word of this length into another; comparing two of them would take long.
constexpr std::size_t kLongestWord = 64;

// Case and leading dashes are not what a reader sees as different: `From` and `from` are `--from`.
std::string folded(const std::string& word) {
    std::string text = word.substr(std::min(word.find_first_not_of('-'), word.size()));
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char byte) {
        return static_cast<char>(std::tolower(byte));
    });
    return text;
}

// The number of letters to add, take away, change or swap with their neighbour.
std::size_t distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> beforeLast(to.size() + 1);
    std::vector<std::size_t> last(to.size() + 1);
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::swap(beforeLast, last);
        std::swap(last, row);
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t change = from[i - 1] == to[j - 1] ? 0 : 1;
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + change});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
    }
    return row[to.size()];
}

// How far off a word may be: one letter in three, but in a short word as well one.
std::size_t tolerance(const std::string& word) {
    return word.size() < 2 ? 0 : std::max<std::size_t>(1, word.size() / 3);
}

std::string question(const std::string& word) {
    return "did you mean `" + word + "`?";
}

}  // namespace

std::string suggestion(const std::string& word, const std::vector<std::string>& candidates) {
    const std::string wanted = folded(word);
    if (wanted.empty() || wanted.size() > kLongestWord) {
        return "";
    }
    const std::string* nearest = nullptr;
    std::size_t least = tolerance(wanted) + 1;
    std::vector<const std::string*> begun;
    for (const std::string& candidate : candidates) {
        const std::string other = folded(candidate);
        if (other.size() > kLongestWord) {
            continue;
        }
        const std::size_t letters = distance(wanted, other);
        if (letters < least && letters < other.size()) {
            least = letters;
            nearest = &candidate;
        }
        if (wanted.size() >= 3 && startsWith(other, wanted)) {
            begun.push_back(&candidate);
        }
    }
    if (nearest == nullptr && begun.size() == 1) {
        nearest = begun.front();
    }
    return nearest == nullptr ? "" : question(*nearest);
}

}  // namespace zamofw
