#include "command/analysis/dimension.h"

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <unordered_map>
#include <utility>

#include "command/console.h"

namespace zamofw::analysis {
namespace {

// Of the parts of patterns. Countries have fewer, and so has every list that a person can use.
constexpr std::size_t kMostListed = 1'000'000;

std::optional<Number> firstPart(const Intervals& intervals, const std::vector<PatternTerm>& terms) {
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

// Whether the lists differ in one term alone, which one of them wants and the other does not.
// Then the term can be left out of their union.
bool leaveOutOpposite(std::vector<PatternTerm>& one, const std::vector<PatternTerm>& other) {
    if (one.size() != other.size()) {
        return false;
    }
    std::size_t opposite = one.size();
    for (std::size_t i = 0; i < one.size(); ++i) {
        if (one[i].pattern.value != other[i].pattern.value ||
            one[i].pattern.mask != other[i].pattern.mask) {
            return false;
        }
        if (one[i].isWanted != other[i].isWanted) {
            if (opposite != one.size()) {
                return false;
            }
            opposite = i;
        }
    }
    if (opposite == one.size()) {
        return false;
    }
    one.erase(one.begin() + static_cast<std::ptrdiff_t>(opposite));
    return true;
}

// Joins lists of which the union can be said with fewer terms.
void joinTerms(std::vector<std::vector<PatternTerm>>& lists) {
    for (std::size_t i = 0; i < lists.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (leaveOutOpposite(lists[j], lists[i])) {
                lists.erase(lists.begin() + static_cast<std::ptrdiff_t>(i));
                joinTerms(lists);
                return;
            }
        }
    }
}

}  // namespace

// Goes over the number line from one end of an interval to the next, and collects the stretches
// that lie in the same sets.
class Dimension::Sweep {
  public:
    Sweep(Number last, const std::vector<SetPointer>& sets) : last_(last), active_(sets.size()) {
        std::mt19937_64 random(1);
        keys_.resize(sets.size());
        std::generate(keys_.begin(), keys_.end(), std::ref(random));
        active_.set(0);
        for (std::uint32_t set = 1; set < sets.size(); ++set) {
            for (const Interval& interval : sets[set]->intervals) {
                ends_.push_back({interval.first, set});
                if (interval.last != last) {
                    ends_.push_back({interval.last + 1, set});
                }
            }
        }
        std::sort(ends_.begin(), ends_.end(), [](const End& one, const End& other) {
            return one.number < other.number;
        });
    }

    std::vector<Class> run() {
        Number begin = 0;
        for (const End& end : ends_) {
            if (end.number != begin) {
                add({begin, end.number - 1});
                begin = end.number;
            }
            active_.flip(end.set);
            hash_ ^= keys_[end.set];
        }
        add({begin, last_});
        return std::move(classes_);
    }

  private:
    struct End {
        Number number;
        std::uint32_t set;
    };

    // The hash only finds the class; the sets themselves are compared.
    void add(const Interval& interval) {
        const auto [first, last] = known_.equal_range(hash_);
        for (auto entry = first; entry != last; ++entry) {
            if (classes_[entry->second].sets == active_) {
                classes_[entry->second].intervals.push_back(interval);
                return;
            }
        }
        known_.emplace(hash_, classes_.size());
        classes_.push_back({{interval}, {}, interval.first, active_});
    }

    Number last_;
    std::vector<End> ends_;
    std::vector<std::uint64_t> keys_;
    std::uint64_t hash_ = 0;
    Bits active_;
    std::unordered_multimap<std::uint64_t, std::size_t> known_;
    std::vector<Class> classes_;
};

Dimension::Dimension(Number last,
                     const std::vector<SetPointer>& sets,
                     const std::vector<std::uint32_t>& setOfBox,
                     const Intervals& preferred)
    : words_((setOfBox.size() + kWordBits - 1) / kWordBits), classes_(Sweep(last, sets).run()) {
    splitByPatterns(sets);
    sortByWeight(setOfBox, sets.size());
    fillRows(setOfBox, sets.size());
    chooseExamples(preferred);
    listStretches();
    touching_.resize(sets.size());
}

void Dimension::splitByPatterns(const std::vector<SetPointer>& sets) {
    for (std::size_t i = 0; i < classes_.size(); ++i) {
        classes_[i].base = i;
    }
    for (std::uint32_t set = 1; set < sets.size(); ++set) {
        if (!sets[set]->pattern) {
            continue;
        }
        const std::size_t count = classes_.size();
        for (std::size_t i = 0; i < count; ++i) {
            std::vector<PatternTerm> inside = classes_[i].terms;
            std::vector<PatternTerm> outside = inside;
            inside.push_back({*sets[set]->pattern, true});
            outside.push_back({*sets[set]->pattern, false});
            const std::optional<Number> in = firstPart(classes_[i].intervals, inside);
            const std::optional<Number> out =
                in ? firstPart(classes_[i].intervals, outside) : std::nullopt;
            if (in && out) {
                classes_.push_back(classes_[i]);
                classes_[i].terms = std::move(outside);
                classes_[i].example = *out;
                classes_.back().terms = std::move(inside);
                classes_.back().example = *in;
            }
            if (in) {
                classes_[out ? classes_.size() - 1 : i].sets.set(set);
            }
        }
    }
}

void Dimension::sortByWeight(const std::vector<std::uint32_t>& setOfBox, std::size_t setCount) {
    std::vector<std::size_t> uses(setCount);
    for (const std::uint32_t set : setOfBox) {
        ++uses[set];
    }
    std::vector<std::pair<std::size_t, std::size_t>> order;
    for (std::size_t i = 0; i < classes_.size(); ++i) {
        const Bits& sets = classes_[i].sets;
        std::size_t weight = 0;
        for (auto set = sets.find_first(); set != Bits::npos; set = sets.find_next(set)) {
            weight += uses[set];
        }
        order.emplace_back(weight, i);
    }
    std::sort(order.begin(), order.end());
    std::vector<Class> sorted;
    sorted.reserve(order.size());
    for (const auto& entry : order) {
        sorted.push_back(std::move(classes_[entry.second]));
    }
    classes_ = std::move(sorted);
}

void Dimension::fillRows(const std::vector<std::uint32_t>& setOfBox, std::size_t setCount) {
    classesIn_.assign(setCount, Bits(classes_.size()));
    for (std::size_t i = 0; i < classes_.size(); ++i) {
        const Bits& sets = classes_[i].sets;
        for (auto set = sets.find_first(); set != Bits::npos; set = sets.find_next(set)) {
            classesIn_[set].set(i);
        }
    }
    for (const Bits& in : classesIn_) {
        shares_.push_back(static_cast<double>(in.count()) / static_cast<double>(in.size()));
    }
    boxesAt_.assign(classes_.size() * words_, 0);
    for (std::size_t box = 0; box < setOfBox.size(); ++box) {
        const Bits& in = classesIn_[setOfBox[box]];
        for (auto i = in.find_first(); i != Bits::npos; i = in.find_next(i)) {
            boxesAt_[i * words_ + box / kWordBits] |= Word{1} << box % kWordBits;
        }
    }
}

void Dimension::listStretches() {
    for (std::size_t i = 0; i < classes_.size(); ++i) {
        isAnyCut_ = isAnyCut_ || !classes_[i].terms.empty();
        if (classes_[i].terms.empty()) {
            for (const Interval& interval : classes_[i].intervals) {
                stretches_.emplace_back(interval, i);
            }
        }
    }
    std::sort(stretches_.begin(), stretches_.end(), [](const auto& one, const auto& other) {
        return one.first.first < other.first.first;
    });
}

void Dimension::chooseExamples(const Intervals& preferred) {
    for (Class& entry : classes_) {
        for (const Interval& wanted : preferred) {
            Intervals common;
            for (const Interval& interval : entry.intervals) {
                if (interval.first <= wanted.last && wanted.first <= interval.last) {
                    common.push_back({std::max(interval.first, wanted.first),
                                      std::min(interval.last, wanted.last)});
                    break;
                }
            }
            if (const std::optional<Number> found = firstPart(common, entry.terms)) {
                entry.example = *found;
                break;
            }
        }
    }
}

const BoxMask& Dimension::boxesTouching(std::uint32_t set) const {
    BoxMask& touching = touching_[set];
    if (touching.empty()) {
        touching.assign(words_, 0);
        const Bits& in = classesIn_[set];
        for (auto i = in.find_first(); i != Bits::npos; i = in.find_next(i)) {
            const Word* const boxes = boxesAt(i);
            for (std::size_t word = 0; word < words_; ++word) {
                touching[word] |= boxes[word];
            }
        }
    }
    return touching;
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
    for (const auto& [interval, index] : stretches_) {
        const bool isIn = classes[index];
        if (isIn && isJoined && numbers.back().last + 1 == interval.first) {
            numbers.back().last = interval.last;
        } else if (isIn) {
            numbers.push_back(interval);
        }
        isJoined = isIn;
    }
    return numbers;
}

Intervals Dimension::numbersIn(const Bits& classes) const {
    Intervals numbers = uncutNumbersIn(classes);
    std::map<std::size_t, std::vector<std::size_t>> cut;  // by what they were cut out of
    if (isAnyCut_) {
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
