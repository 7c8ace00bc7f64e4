#include "command/analysis/dimension.h"

#include <algorithm>
#include <functional>
#include <map>
#include <numeric>
#include <random>
#include <unordered_map>
#include <utility>

#include "command/console.h"

namespace zamofw::analysis {
namespace {

// Of the parts of patterns. Countries have fewer, and so has every list that a person can use.
constexpr std::size_t kMostListed = 1'000'000;

std::optional<Number> firstPart(const Intervals& intervals, const std::vector<PatternTerm>& terms) {
    if (terms.empty()) {
        return intervals.empty() ? std::nullopt : std::optional(intervals.front().first);
    }
    std::optional<Number> found;
    for (const Interval& interval : intervals) {
        (void)forEachPart(interval, terms, [&found](const Interval& part) {
            found = part.first;
            return false;
        });
        if (found) {
            break;
        }
    }
    return found;
}

void addRow(const Word* row, BoxMask& boxes) {
    for (std::size_t word = 0; word < boxes.size(); ++word) {
        boxes[word] |= row[word];
    }
}

}  // namespace

// Goes over the number line from one end of an interval to the next, and collects the stretches
// that lie in the same sets.
class Dimension::Sweep {
  public:
    explicit Sweep(Dimension& to) : to_(to), active_(to.words_) {
        std::mt19937_64 random(1);
        keys_.resize(to.sets_.size());
        std::generate(keys_.begin(), keys_.end(), std::ref(random));
        turn({0, 0, true});
        for (std::uint32_t set = 1; set < to.sets_.size(); ++set) {
            for (const Interval& interval : to.sets_[set]->intervals) {
                ends_.push_back({interval.first, set, true});
                if (interval.last != to.last_) {
                    ends_.push_back({interval.last + 1, set, false});
                }
            }
        }
        std::sort(ends_.begin(), ends_.end(), [](const End& one, const End& other) {
            return one.number < other.number;
        });
    }

    void run() {
        Number begin = 0;
        for (const End& end : ends_) {
            if (end.number != begin) {
                add({begin, end.number - 1});
                begin = end.number;
            }
            turn(end);
            if (end.isBegin) {
                to_.beginning_.push_back(end.set);
            }
        }
        add({begin, to_.last_});
    }

  private:
    struct End {
        Number number;
        std::uint32_t set;
        bool isBegin;
    };

    void turn(const End& end) {
        hash_ ^= keys_[end.set];
        const std::size_t count = to_.boxesBegin_[end.set + 1] - to_.boxesBegin_[end.set];
        weight_ = end.isBegin ? weight_ + count : weight_ - count;
        to_.forEachBoxOf(end.set,
                         [this](std::size_t box) { active_[box / kWordBits] ^= bitOf(box); });
    }

    void add(const Interval& interval) {
        const std::size_t index = classHere();
        to_.classes_[index].intervals.push_back(interval);
        to_.stretches_.push_back({interval.first, index, to_.beginning_.size()});
    }

    // The hash only finds the class; the boxes themselves are compared.
    std::size_t classHere() {
        const auto [first, last] = known_.equal_range(hash_);
        for (auto entry = first; entry != last; ++entry) {
            if (std::equal(active_.begin(), active_.end(), to_.boxesAt(entry->second))) {
                return entry->second;
            }
        }
        const std::size_t index = to_.classes_.size();
        known_.emplace(hash_, index);
        to_.classes_.push_back({{}, {}, index, weight_, index});
        to_.rows_.insert(to_.rows_.end(), active_.begin(), active_.end());
        return index;
    }

    Dimension& to_;
    std::vector<End> ends_;
    std::vector<std::uint64_t> keys_;
    std::uint64_t hash_ = 0;
    BoxMask active_;
    std::size_t weight_ = 0;
    std::unordered_multimap<std::uint64_t, std::size_t> known_;
};

Dimension::Dimension(Number last,
                     std::vector<SetPointer> sets,
                     const std::vector<std::uint32_t>& setOfBox,
                     Intervals preferred)
    : last_(last),
      sets_(std::move(sets)),
      preferred_(std::move(preferred)),
      words_((setOfBox.size() + kWordBits - 1) / kWordBits) {
    listBoxes(setOfBox);
    Sweep(*this).run();
    splitByPatterns();
    sortByWeight();
    listClasses(setOfBox);
    touching_.resize(sets_.size());
}

void Dimension::listBoxes(const std::vector<std::uint32_t>& setOfBox) {
    boxesBegin_.assign(sets_.size() + 1, 0);
    for (const std::uint32_t set : setOfBox) {
        ++boxesBegin_[set + 1];
    }
    std::partial_sum(boxesBegin_.begin(), boxesBegin_.end(), boxesBegin_.begin());
    boxesOfSets_.resize(setOfBox.size());
    std::vector<std::size_t> next = boxesBegin_;
    for (std::size_t box = 0; box < setOfBox.size(); ++box) {
        boxesOfSets_[next[setOfBox[box]]++] = box;
    }
}

template <typename Visit>
void Dimension::forEachBoxOf(std::uint32_t set, Visit visit) const {
    for (std::size_t i = boxesBegin_[set]; i < boxesBegin_[set + 1]; ++i) {
        visit(boxesOfSets_[i]);
    }
}

void Dimension::splitByPatterns() {
    for (std::uint32_t set = 1; set < sets_.size(); ++set) {
        if (sets_[set]->pattern) {
            hasPatterns_ = true;
            splitBy(set);
        }
    }
}

void Dimension::splitBy(std::uint32_t set) {
    const std::size_t count = classes_.size();
    for (std::size_t i = 0; i < count; ++i) {
        std::vector<PatternTerm> inside = classes_[i].terms;
        std::vector<PatternTerm> outside = inside;
        inside.push_back({*sets_[set]->pattern, true});
        outside.push_back({*sets_[set]->pattern, false});
        if (!firstPart(classes_[i].intervals, inside)) {
            continue;
        }
        std::size_t index = i;
        if (firstPart(classes_[i].intervals, outside)) {
            index = classes_.size();
            classes_.push_back(classes_[i]);
            classes_[i].terms = std::move(outside);
            classes_[index].terms = std::move(inside);
            classes_[index].row = index;
            const BoxMask row(boxesAt(i), boxesAt(i) + words_);
            rows_.insert(rows_.end(), row.begin(), row.end());
        }
        classes_[index].weight += boxesBegin_[set + 1] - boxesBegin_[set];
        Word* const row = rows_.data() + classes_[index].row * words_;
        forEachBoxOf(set, [row](std::size_t box) { row[box / kWordBits] |= bitOf(box); });
    }
}

void Dimension::sortByWeight() {
    std::vector<std::size_t> order(classes_.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [this](std::size_t one, std::size_t other) {
        return classes_[one].weight < classes_[other].weight;
    });
    std::vector<Class> sorted;
    sorted.reserve(order.size());
    std::vector<std::size_t> moved(order.size());
    for (const std::size_t index : order) {
        moved[index] = sorted.size();
        sorted.push_back(std::move(classes_[index]));
    }
    classes_ = std::move(sorted);
    for (Stretch& stretch : stretches_) {
        stretch.index = moved[stretch.index];
    }
}

void Dimension::listClasses(const std::vector<std::uint32_t>& setOfBox) {
    classesIn_.assign(sets_.size(), Bits(classes_.size()));
    classesIn_[0].set();
    firstIn_.assign(sets_.size(), Bits::npos);
    firstIn_[0] = 0;
    std::vector<std::size_t> counts(sets_.size());
    counts[0] = classes_.size();
    BoxMask named(words_);  // the boxes that name a set
    for (std::size_t box = 0; box < setOfBox.size(); ++box) {
        named[box / kWordBits] |= setOfBox[box] != 0 ? bitOf(box) : 0;
    }
    for (std::size_t i = 0; i < classes_.size(); ++i) {
        const Word* const row = boxesAt(i);
        for (std::size_t word = 0; word < words_; ++word) {
            for (Word bits = row[word] & named[word]; bits != 0; bits &= bits - 1) {
                const std::uint32_t set = setOfBox[word * kWordBits + firstBitOf(bits)];
                if (firstIn_[set] == Bits::npos) {
                    firstIn_[set] = i;
                }
                if (!classesIn_[set].test_set(i)) {
                    ++counts[set];
                }
            }
        }
    }
    for (const std::size_t count : counts) {
        shares_.push_back(static_cast<double>(count) / static_cast<double>(classes_.size()));
    }
}

std::size_t Dimension::firstClassInBoth(std::uint32_t one, std::uint32_t other) const {
    if (one == other || other == 0) {
        return firstIn_[one];
    }
    if (one == 0) {
        return firstIn_[other];
    }
    // Goes through the smaller set.
    const auto [fewer, more] =
        shares_[one] < shares_[other] ? std::pair(one, other) : std::pair(other, one);
    const Bits& classes = classesIn_[fewer];
    const Bits& others = classesIn_[more];
    std::size_t index = std::max(firstIn_[one], firstIn_[other]);
    index = classes[index] ? index : classes.find_next(index);
    while (index != Bits::npos && !others[index]) {
        index = classes.find_next(index);
    }
    return index;
}

Number Dimension::numberIn(std::size_t index) const {
    const Class& entry = classes_[index];
    for (const Interval& wanted : preferred_) {
        Intervals common;
        for (const Interval& interval : entry.intervals) {
            if (interval.first <= wanted.last && wanted.first <= interval.last) {
                common.push_back(
                    {std::max(interval.first, wanted.first), std::min(interval.last, wanted.last)});
                break;
            }
        }
        if (const std::optional<Number> found = firstPart(common, entry.terms)) {
            return *found;
        }
    }
    return *firstPart(entry.intervals, entry.terms);
}

const Word* Dimension::boxesTouching(std::uint32_t set) const {
    const Bits& in = classesIn_[set];
    if (in.find_next(firstIn_[set]) == Bits::npos) {
        return boxesAt(firstIn_[set]);
    }
    BoxMask& touching = touching_[set];
    if (!touching.empty()) {
        return touching.data();
    }
    touching.assign(words_, 0);
    if (!hasPatterns_) {
        for (const Interval& interval : sets_[set]->intervals) {
            addStretchesOf(interval, touching);
        }
        return touching.data();
    }
    for (auto i = in.find_first(); i != Bits::npos; i = in.find_next(i)) {
        addRow(boxesAt(i), touching);
    }
    return touching.data();
}

// The boxes where the interval begins, and those of the sets that begin within it.
void Dimension::addStretchesOf(const Interval& interval, BoxMask& boxes) const {
    auto stretch =
        std::lower_bound(stretches_.begin(),
                         stretches_.end(),
                         interval.first,
                         [](const Stretch& one, Number number) { return one.first < number; });
    addRow(boxesAt(stretch->index), boxes);
    std::size_t next = stretch->endOfSets;
    while (stretch != stretches_.end() && stretch->first <= interval.last) {
        ++stretch;
    }
    for (const std::size_t end = std::prev(stretch)->endOfSets; next < end; ++next) {
        forEachBoxOf(beginning_[next],
                     [&boxes](std::size_t box) { boxes[box / kWordBits] |= bitOf(box); });
    }
}

std::size_t Dimension::classOf(Number number) const {
    const auto found = std::find_if(classes_.begin(), classes_.end(), [number](const Class& entry) {
        return contains(entry.intervals, number) &&
               std::all_of(entry.terms.begin(), entry.terms.end(), [number](const auto& term) {
                   return term.pattern.matches(number) == term.isWanted;
               });
    });
    return static_cast<std::size_t>(found - classes_.begin());
}

// The numbers of the classes that no pattern has cut. Sorting what few classes have is faster than
// going through everything.
Intervals Dimension::uncutNumbersIn(const Bits& classes) const {
    constexpr std::size_t kFew = 8;
    Intervals numbers;
    if (classes.count() < classes_.size() / kFew) {
        for (auto i = classes.find_first(); i != Bits::npos; i = classes.find_next(i)) {
            const Class& entry = classes_[i];
            if (entry.terms.empty()) {
                numbers.insert(numbers.end(), entry.intervals.begin(), entry.intervals.end());
            }
        }
        return normalized(std::move(numbers));
    }
    bool isJoined = false;
    for (std::size_t i = 0; i < stretches_.size(); ++i) {
        const std::size_t index = stretches_[i].index;
        const Number last = i + 1 == stretches_.size() ? last_ : stretches_[i + 1].first - 1;
        const bool isIn = classes[index] && classes_[index].terms.empty();
        if (isIn && isJoined) {
            numbers.back().last = last;
        } else if (isIn) {
            numbers.push_back({stretches_[i].first, last});
        }
        isJoined = isIn;
    }
    return numbers;
}

Intervals Dimension::numbersIn(const Bits& classes) const {
    Intervals numbers = uncutNumbersIn(classes);
    std::map<std::size_t, std::vector<std::size_t>> cut;  // by what they were cut out of
    if (hasPatterns_) {
        for (auto i = classes.find_first(); i != Bits::npos; i = classes.find_next(i)) {
            if (!classes_[i].terms.empty()) {
                cut[classes_[i].base].push_back(i);
            }
        }
    }
    if (cut.empty()) {
        return numbers;
    }
    for (const auto& [base, parts] : cut) {
        appendParts(parts, numbers);
    }
    return normalized(std::move(numbers));
}

void Dimension::appendParts(const std::vector<std::size_t>& parts, Intervals& numbers) const {
    std::vector<std::vector<PatternTerm>> lists;
    lists.reserve(parts.size());
    for (const std::size_t part : parts) {
        lists.push_back(classes_[part].terms);
    }
    joinTerms(lists);
    for (const std::vector<PatternTerm>& terms : lists) {
        for (const Interval& interval : classes_[parts.front()].intervals) {
            const bool isListed = forEachPart(interval, terms, [&](const Interval& part) {
                numbers.push_back(part);
                return terms.empty() || numbers.size() < kMostListed;
            });
            if (!isListed) {
                failed(
                    "the addresses cannot be listed: a mask that is no prefix leaves more than a "
                    "million ranges",
                    "write the mask as a prefix, such as 255.255.255.0; `zamofw check` and "
                    "`zamofw explain` need no list");
            }
        }
    }
}

}  // namespace zamofw::analysis
