#include "command/plan/lineDiff.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <unordered_map>

namespace zamofw {
namespace {

constexpr std::size_t kContext = 3;
// Equal texts that are tried as partners of one text. It bounds the work for lists that repeat one
// text thousands of times.
constexpr std::size_t kMaxPartners = 256;
constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

// A pair of equal texts at the end of a chain of such pairs.
struct Link {
    std::size_t oldIndex;
    std::size_t newIndex;
    std::size_t previous;  // in the list of links, or kNone
};

// The longest chain of equal texts, by Hunt and Szymanski: ends[n] is the chain of n + 1 pairs that
// ends earliest in the new list.
class LongestChain {
  public:
    void add(std::size_t oldIndex, std::size_t newIndex) {
        const auto end = std::lower_bound(
            ends_.begin(), ends_.end(), newIndex, [this](std::size_t link, std::size_t index) {
                return links_[link].newIndex < index;
            });
        links_.push_back({oldIndex, newIndex, end == ends_.begin() ? kNone : *(end - 1)});
        if (end == ends_.end()) {
            ends_.push_back(links_.size() - 1);
        } else {
            *end = links_.size() - 1;
        }
    }

    [[nodiscard]] std::vector<Link> pairs() const {
        std::vector<Link> pairs;
        for (std::size_t link = ends_.empty() ? kNone : ends_.back(); link != kNone;
             link = links_[link].previous) {
            pairs.push_back(links_[link]);
        }
        std::reverse(pairs.begin(), pairs.end());
        return pairs;
    }

  private:
    std::vector<Link> links_;
    std::vector<std::size_t> ends_;
};

// The pairs of texts that stay the same, between the equal begin and the equal end of the lists.
std::vector<Link> samePairs(const std::vector<std::string>& oldTexts,
                            const std::vector<std::string>& newTexts,
                            std::size_t begin,
                            std::size_t endLength) {
    std::unordered_map<std::string_view, std::vector<std::size_t>> places;
    for (std::size_t i = newTexts.size() - endLength; i > begin; --i) {
        std::vector<std::size_t>& of = places[newTexts[i - 1]];
        if (of.size() < kMaxPartners) {
            of.push_back(i - 1);
        }
    }
    LongestChain chain;
    for (std::size_t i = begin; i < oldTexts.size() - endLength; ++i) {
        const auto found = places.find(oldTexts[i]);
        if (found != places.end()) {
            // From the last to the first, so that a chain takes only one of them.
            for (const std::size_t place : found->second) {
                chain.add(i, place);
            }
        }
    }
    return chain.pairs();
}

// Appends the steps that lead up to the pair, and the pair itself.
void appendUpTo(std::size_t oldIndex, std::size_t newIndex, Edit& at, std::vector<Edit>& edits) {
    for (at.kind = Edit::Kind::kRemoved; at.oldIndex < oldIndex; ++at.oldIndex) {
        edits.push_back(at);
    }
    for (at.kind = Edit::Kind::kAdded; at.newIndex < newIndex; ++at.newIndex) {
        edits.push_back(at);
    }
}

void appendSame(Edit& at, std::vector<Edit>& edits) {
    at.kind = Edit::Kind::kSame;
    edits.push_back(at);
    ++at.oldIndex;
    ++at.newIndex;
}

bool isChange(const Edit& edit) {
    return edit.kind != Edit::Kind::kSame;
}

// "12,3", or "12" for one text; before an empty range stands the number of the text before it.
std::string rangeText(std::size_t first, std::size_t count) {
    const std::string begin = std::to_string(count == 0 ? first : first + 1);
    return count == 1 ? begin : begin + "," + std::to_string(count);
}

}  // namespace

std::vector<Edit> lineDiff(const std::vector<std::string>& oldTexts,
                           const std::vector<std::string>& newTexts) {
    const std::size_t shorter = std::min(oldTexts.size(), newTexts.size());
    std::size_t begin = 0;
    while (begin < shorter && oldTexts[begin] == newTexts[begin]) {
        ++begin;
    }
    std::size_t endLength = 0;
    while (endLength < shorter - begin &&
           *(oldTexts.rbegin() + static_cast<std::ptrdiff_t>(endLength)) ==
               *(newTexts.rbegin() + static_cast<std::ptrdiff_t>(endLength))) {
        ++endLength;
    }
    std::vector<Edit> edits;
    Edit at;
    while (at.oldIndex < begin) {
        appendSame(at, edits);
    }
    for (const Link& pair : samePairs(oldTexts, newTexts, begin, endLength)) {
        appendUpTo(pair.oldIndex, pair.newIndex, at, edits);
        appendSame(at, edits);
    }
    appendUpTo(oldTexts.size() - endLength, newTexts.size() - endLength, at, edits);
    while (at.oldIndex < oldTexts.size()) {
        appendSame(at, edits);
    }
    return edits;
}

bool isSame(const std::vector<Edit>& edits) {
    return std::none_of(edits.begin(), edits.end(), isChange);
}

std::string unifiedHunks(const std::vector<std::string>& oldTexts,
                         const std::vector<std::string>& newTexts,
                         const std::vector<Edit>& edits,
                         const std::string& title) {
    std::string hunks;
    auto next = std::find_if(edits.begin(), edits.end(), isChange);
    while (next != edits.end()) {
        const auto begin =
            next - std::min(static_cast<std::ptrdiff_t>(kContext), next - edits.begin());
        // A hunk ends where so much stays the same that the next one does not touch it.
        auto end = next;
        while (next != edits.end() && next - end <= static_cast<std::ptrdiff_t>(2 * kContext)) {
            end = std::find_if_not(next, edits.end(), isChange);
            next = std::find_if(end, edits.end(), isChange);
        }
        end += std::min(static_cast<std::ptrdiff_t>(kContext), edits.end() - end);
        std::size_t oldCount = 0;
        std::size_t newCount = 0;
        std::string body;
        for (auto edit = begin; edit != end; ++edit) {
            const bool isAdded = edit->kind == Edit::Kind::kAdded;
            const bool isRemoved = edit->kind == Edit::Kind::kRemoved;
            oldCount += isAdded ? 0U : 1U;
            newCount += isRemoved ? 0U : 1U;
            body += isAdded ? "+" : isRemoved ? "-" : " ";
            body += (isAdded ? newTexts[edit->newIndex] : oldTexts[edit->oldIndex]) + "\n";
        }
        hunks += "@@ -" + rangeText(begin->oldIndex, oldCount) + " +" +
                 rangeText(begin->newIndex, newCount) + " @@ " + title + "\n" + body;
    }
    return hunks;
}

}  // namespace zamofw
